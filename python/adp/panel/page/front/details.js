// The port that one has chosen: its state and settings in words, its cable, its traffic and its counters.
import { html, useState } from "../vendor/preact.js";
import { addressOf, useAnswer } from "../use.js";
import { Command } from "../parts/command.js";
import { portList } from "../parts/ports.js";
import { cableRows } from "../parts/cable_form.js";
import { Cable } from "./cable.js";
import { Counts } from "./counts.js";
import { MarkBadge } from "./marks.js";
import { Plots } from "./plots.js";
import { treeStates } from "./state.js";
import { beginningOf } from "./traffic.js";
import { downWords, isolationWords, learningWords, linkWords, loopbackWords, titleOf } from "./words.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {import("./state.js").Face} Face */
/** @typedef {import("./state.js").Answers} Answers */

const EVERY_SECONDS = 2;
const MOST_ADDRESSES = 1000;
const EXAMPLE = { loss: "5%", delay: "20ms" };

/** @param {{device: Device, port: number, macs: any}} props `macs` is the answer to `macs` */
function Addresses({ device, port, macs }) {
    if (!macs) {
        return "...";
    }
    const count = macs.macs.length;
    const number = count > MOST_ADDRESSES ? `more than ${MOST_ADDRESSES}` : count;
    const words = `${number} ${count === 1 ? "address" : "addresses"}`;
    const name = `${words} behind ${titleOf(port)}: to the table of addresses`;
    return html`<a href=${addressOf("tables", device.name, "addresses")} aria-label=${name}>${words}</a>`;
}

/**
 * @param {number} port
 * @param {any} groups the answer to `groups`
 */
function treeWords(port, groups) {
    const states = treeStates(port, groups);
    const held = states.filter((each) => each.state !== "forwarding");
    const words = held.map((each) => `${each.state} in group ${each.group}`).join(", ");
    return held.length === 0 ? "forwards" : held.length < states.length ? `${words}; forwards in the others` : words;
}

/**
 * @param {number} port
 * @param {any} vlans the answer to `vlans`
 */
function vlanWords(port, vlans) {
    const parts = [true, false].map((isUntagged) => {
        const found = vlans.vlans.filter((/** @type {any} */ vlan) => (
            vlan.members.includes(port) && vlan.untagged.includes(port) === isUntagged
        ));
        return `${isUntagged ? "untagged" : "tagged"} ${portList(found.map((/** @type {any} */ vlan) => vlan.vid))}`;
    });
    return parts.join("; ");
}

/** @param {{term: string, place?: string, children?: any}} props `place` is the address of a table that has more */
function Setting({ term, place, children }) {
    return html`<div><dt>${place ? html`<a href=${place}>${term}</a>` : term}</dt><dd>${children}</dd></div>`;
}

/** @param {{device: Device, row: any, answers: Answers, vlans: any, macs: any}} props */
function Settings({ device, row, answers, vlans, macs }) {
    const { port } = row;
    const table = (/** @type {string} */ name) => addressOf("tables", device.name, name);
    return html`
        <h3>State and settings</h3>
        <dl class="front-settings">
            <${Setting} term="Link">${linkWords(row)}${row.up ? "" : `. ${downWords(row)}`}<//>
            <${Setting} term="Negotiation">${row.autoneg ? "on" : "off"}<//>
            <${Setting} term="Medium">${row.medium}<//>
            <${Setting} term="Interface"><code>${row.interface}</code>, chip port ${row.chip_port}<//>
            <${Setting} term="PVID">${row.pvid}<//>
            <${Setting} term="VLANs" place=${table("vlans")}>${vlans ? vlanWords(port, vlans) : "..."}<//>
            <${Setting} term="Behind it"><${Addresses} device=${device} port=${port} macs=${macs} /><//>
            <${Setting} term="Learning">${learningWords(row.learning)}<//>
            <${Setting} term="Spanning tree" place=${table("spanning-tree")}>${treeWords(port, answers.groups)}<//>
            <${Setting} term="Leave by">${isolationWords(row, answers.ports.ports)}<//>
            <${Setting} term="Loopback">${loopbackWords(row.loopback)}<//>
            <${Setting} term="Jumbo frames">${row.jumbo ? "taken" : "not taken"}<//>
        </dl>
    `;
}

/** @param {{face: Face}} props */
function MarkList({ face }) {
    return html`
        <ul class="front-marks" aria-label="Marks">
            ${face.marks.map((mark) => html`<li key=${mark.kind}><${MarkBadge} mark=${mark} /> ${mark.text}</li>`)}
        </ul>
    `;
}

/**
 * The commands that change a port's cable.
 * @param {any} row of `ports`
 * @param {any} cables
 */
function cableSubjects(row, cables) {
    const conditions = cableRows(cables, row.port)[0]?.conditions;
    const options = Object.entries(conditions ?? EXAMPLE).map(([name, value]) => ` --${name} ${value}`);
    const good = conditions ? [`cable ${row.port} --clear`] : [];
    return [`${row.pulled ? "plug" : "pull"} ${row.port}`, `cable ${row.port}${options.join("")}`, ...good];
}

/**
 * The commands that show and do the same.
 * @param {{device: Device, row: any, cables: any}} props
 */
function Commands({ device, row, cables }) {
    const { port } = row;
    const looks = ["ports", "counters --rate 1s --port", "queues", "vlans --port", "macs --port"];
    const subjects = [...looks.map((each) => `${each} ${port}`), ...(port === 0 ? [] : cableSubjects(row, cables))];
    const texts = subjects.map((subject) => `${device.vdevctl} ${subject}`);
    if (port !== 0) {
        const state = row.enabled ? 0 : 1;
        texts.push(`${device.adpsh} --map 'adp_set_phy_port_attr ${port} ADP_ATTR_ADMIN_STATE ${state} 0'`);
    }
    return html`
        <details class="front-commands">
            <summary>Commands for ${titleOf(port)}</summary>
            <ul>${texts.map((text) => html`<li key=${text}><${Command} text=${text} /></li>`)}</ul>
        </details>
    `;
}

/** @param {{device: Device, port: number, counters: any}} props */
function PortCounts({ device, port, counters }) {
    const queues = useAnswer(device.name, { command: "queues", port }, EVERY_SECONDS).answer;
    const [, setCount] = useState(0);
    const ofPort = (/** @type {any} */ each) => each.port === port;
    const beginning = beginningOf(device.name, counters);
    const onNow = () => {
        beginningOf(device.name, counters, true);
        setCount((count) => count + 1);
    };
    return html`
        <${Counts} row=${counters.counters.find(ofPort)} before=${beginning?.answer.counters.find(ofPort)}
            queues=${queues?.ports.find(ofPort)} at=${beginning?.at ?? null} onNow=${onNow} />
    `;
}

/**
 * @param {{device: Device, face: Face, answers: Answers, counters: any, traffic: import("./traffic.js").Traffic,
 *     onClose: () => void}} props
 */
export function Details({ device, face, answers, counters, traffic, onClose }) {
    const { port } = face;
    const vlans = useAnswer(device.name, { command: "vlans", port }, EVERY_SECONDS).answer;
    const macs = useAnswer(device.name, { command: "macs", port, last: MOST_ADDRESSES + 1 }, EVERY_SECONDS).answer;
    const row = answers.ports.ports.find((/** @type {any} */ each) => each.port === port);
    return html`
        <section class="front-details card" aria-label=${`Details of ${titleOf(port)}`}>
            <header>
                <h2>${titleOf(port)}</h2>
                <button type="button" class="front-close" onClick=${onClose}>Close</button>
            </header>
            <${MarkList} face=${face} />
            <div class="front-columns">
                <div><${Settings} device=${device} row=${row} answers=${answers} vlans=${vlans} macs=${macs} /></div>
                <div>
                    <${Plots} traffic=${traffic} port=${port} />
                    ${port !== 0 && html`<${Cable} key=${port} device=${device} row=${row} />`}
                </div>
                <div>${counters && html`<${PortCounts} device=${device} port=${port} counters=${counters} />`}</div>
            </div>
            <${Commands} device=${device} row=${row} cables=${answers.cables} />
        </section>
    `;
}
