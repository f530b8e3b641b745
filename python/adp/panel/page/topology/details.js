// What is selected in the picture of a lab, in full: a cable, a device or a host.
import { html, useEffect, useRef } from "../vendor/preact.js";
import { addressOf, useAction, useAnswer, usePanel, useTwoAnswers } from "../use.js";
import { CableForm } from "../parts/cable_form.js";
import { Command } from "../parts/command.js";
import { Problem } from "../parts/problem.js";
import { ratesOf, short } from "../rates.js";
import { STATES, endName, rateText } from "./cables.js";

/** @typedef {import("./cables.js").CableNow} CableNow */
/** @typedef {import("../types").LabNode} LabNode */

/** @param {{texts: string[]}} props */
const Commands = ({ texts }) => html`
    <h3>Commands</h3>
    <ul class="topology-commands">${texts.map((text) => html`<li key=${text}><${Command} text=${text} /></li>`)}</ul>
`;

/**
 * A heading that gets the focus when something else is selected, and a button to leave.
 * @param {{title: string, onClose: () => void}} props
 */
function Heading({ title, onClose }) {
    const heading = useRef(/** @type {any} */ (null));
    useEffect(() => heading.current?.focus(), [title]);
    return html`
        <div class="topology-heading">
            <h2 ref=${heading} tabindex="-1">${title}</h2>
            <button type="button" onClick=${onClose}>Close</button>
        </div>
    `;
}

/**
 * Bits per second in words.
 * @param {number} rate
 */
const bitsText = (rate) => `${short(rate)}bit/s`.replace(/([0-9])bit/, "$1 bit");

/**
 * Octets and frames per second in each direction, from the counters of the cable's port.
 * @param {{cable: CableNow}} props
 */
function Load({ cable: { held, ends, names } }) {
    const request = held && { command: "counters", port: [held.port] };
    const { answer, error } = useAnswer(held?.device ?? "", request);
    const two = useTwoAnswers(answer);
    const counts = ["rx_frames", "rx_octets", "tx_frames", "tx_octets"];
    const rates = answer && !error ? ratesOf(two, "counters", "port", counts).get(held?.port) : undefined;
    const isFirst = held?.device === ends[0].node && held?.port === ends[0].port;
    const words = (/** @type {string} */ way) =>
        rates ? `${rateText(rates[`${way}_frames`])}, ${bitsText(rates[`${way}_octets`] * 8)}` : "not known";
    const row = (/** @type {string[]} */ [from, to], /** @type {string} */ way) => html`
        <dt>${from} to ${to}</dt><dd>${words(way)}</dd>
    `;
    return html`
        ${row(names, isFirst ? "tx" : "rx")}
        ${row([names[1], names[0]], isFirst ? "rx" : "tx")}
    `;
}

/**
 * Pulls a cable, or plugs it in where it is pulled.
 * @param {{cable: CableNow}} props
 */
function Pull({ cable }) {
    const { read_only } = usePanel();
    const [end] = cable.isPulled ? cable.pulled : [cable.held];
    const { act, problem, isBusy } = useAction(end?.device ?? "");
    const isDisabled = read_only || isBusy || !end || cable.state === "gone";
    const verb = cable.isPulled ? "plug" : "pull";
    return html`
        <p><button type="button" disabled=${isDisabled} onClick=${() => act({ command: verb, port: end?.port })}>
            ${cable.isPulled ? "Plug the cable in" : "Pull the cable"}
        </button></p>
        <${Problem} text=${problem} />
    `;
}

/** @param {{cable: CableNow, command: string, onClose: () => void}} props */
export function CableDetails({ cable, command, onClose }) {
    const { held, names, state } = cable;
    const end = held ? endName({ node: held.device, port: held.port, interface: "" }) : names[0];
    return html`
        <${Heading} title=${`Cable ${names[0]} to ${names[1]}`} onClose=${onClose} />
        <dl class="topology-facts">
            <dt>State</dt><dd>${STATES[state].text}</dd>
            ${held && html`<${Load} key=${end} cable=${cable} />`}
        </dl>
        ${!held && html`<p>No device is at either end, and only devices pull or disturb cables.</p>`}
        ${held && html`
            <${Pull} cable=${cable} />
            <h3>Conditions</h3>
            <${CableForm} key=${end} device=${held.device} port=${held.port} />
        `}
        <${Commands} texts=${[
            ...(held ? [`${command} ${cable.isPulled ? "plug" : "pull"} ${end}`] : []),
            ...names.map((name) => `${command} capture ${name} -w - | wireshark -k -i -`),
        ]} />
    `;
}

/**
 * How many there are of what a device has learned and been set to.
 * @param {{device: import("../types").Device}} props
 */
function Summary({ device }) {
    const request = (/** @type {string} */ command) => (device.running ? { command } : null);
    const ports = useAnswer(device.name, request("ports")).answer?.ports ?? [];
    const version = useAnswer(device.name, request("version"), 3600).answer;
    const vlans = useAnswer(device.name, request("vlans"), 2).answer?.vlans;
    const trunks = useAnswer(device.name, request("trunks"), 2).answer?.trunks;
    const users = ports.filter((/** @type {any} */ row) => row.port > 0);
    const up = users.filter((/** @type {any} */ row) => row.up).length;
    return html`
        <dl class="topology-facts">
            <dt>State</dt><dd>${device.running ? "running" : "not running"}</dd>
            <dt>Ports up</dt><dd>${up} of ${users.length}</dd>
            <dt>VLANs</dt><dd>${vlans?.length ?? "not known"}</dd>
            <dt>Trunks</dt><dd>${trunks?.length ?? "not known"}</dd>
            ${version?.version && html`<dt>Version</dt><dd>${version.version}</dd>`}
        </dl>
    `;
}

/** @param {{texts: string[]}} props */
const Remarks = ({ texts }) => texts.map((text) => html`<p class="problem" key=${text}>${text}</p>`);

/** @param {{node: LabNode, command: string, onClose: () => void}} props */
export function DeviceDetails({ node, command, onClose }) {
    const device = usePanel().devices.find((each) => each.name === node.name);
    const links = ["front", "tables", "frames"].map((view) => html`
        <a key=${view} href=${addressOf(view, node.name)}>${view[0].toUpperCase()}${view.slice(1)} of ${node.name}</a>
    `);
    return html`
        <${Heading} title=${`Device ${node.name}`} onClose=${onClose} />
        <${Remarks} texts=${node.remarks} />
        ${device && html`<${Summary} key=${device.name} device=${device} />`}
        <p class="topology-links">${links}</p>
        <${Commands} texts=${[
            `${command} vdevctl ${node.name} ports`, `${command} adpsh ${node.name}`, `${command} shell ${node.name}`,
            `${command} restart ${node.name}`,
        ]} />
    `;
}

/** @param {{node: LabNode, others: LabNode[], command: string, onClose: () => void}} props */
export function HostDetails({ node, others, command, onClose }) {
    const other = others.find((each) => each.name !== node.name && each.kind === "linux" && each.addresses.length > 0);
    return html`
        <${Heading} title=${`Host ${node.name}`} onClose=${onClose} />
        <${Remarks} texts=${node.remarks} />
        <dl class="topology-facts">
            <dt>State</dt><dd>${node.running ? "running" : "not running"}</dd>
            <dt>Addresses</dt><dd>${node.addresses.join(", ") || "none"}</dd>
        </dl>
        <${Commands} texts=${[
            `${command} shell ${node.name}`, `${command} exec ${node.name} -- ip address`,
            ...(other ? [`${command} exec ${node.name} -- ping ${other.name}`] : []),
        ]} />
    `;
}
