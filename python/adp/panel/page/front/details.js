// The port that one has chosen: its state and settings in words, its cable, its traffic and its counters.
import { html, useEffect, useState } from "../vendor/preact.js";
import { addressOf, useAnswer } from "../use.js";
import { Command } from "../parts/command.js";
import { portList } from "../parts/ports.js";
import { Cable, conditionsOf } from "./cable.js";
import { Counts } from "./counts.js";
import { MarkBadge } from "./marks.js";
import { Plots } from "./plots.js";
import { treeStates } from "./state.js";
import { beginningOf } from "./traffic.js";
import { downWords, isolationWords, learningWords, linkWords, loopbackWords, titleOf } from "./words.js";

/** @typedef {import("./state.js").Face} Face */
/** @typedef {import("./state.js").Answers} Answers */

const OFTEN = 2;
const MOST_ADDRESSES = 1000;

/** @param {number[]} vids */
const list = (vids) => (vids.length > 0 ? portList(vids) : "none");

/** @param {{device: import("../types").Device, port: number, macs: any}} props */
function Addresses({ device, port, macs }) {
    if (!macs) {
        return "...";
    }
    const count = macs.macs.length > MOST_ADDRESSES ? `more than ${MOST_ADDRESSES}` : String(macs.macs.length);
    const words = count === "1" ? "1 address" : `${count} addresses`;
    return html`<a href=${addressOf("tables", device.name, "macs")} aria-label=${`${words} behind ${titleOf(port)}: to the table of addresses`}>${words}</a>`;
}

/**
 * @param {number} port
 * @param {any} groups
 */
function treeWords(port, groups) {
    const states = treeStates(port, groups);
    const held = states.filter((each) => each.state !== "forwarding");
    return held.length === 0 ? "forwards" : held.map((each) => `${each.state} in group ${each.group}`).join(", ")
        + (held.length < states.length ? "; forwards in the others" : "");
}

/** @param {{term: string, children: any}} props */
function Row({ term, children }) {
    return html`<div><dt>${term}</dt><dd>${children}</dd></div>`;
}

/** @param {{device: import("../types").Device, row: any, answers: Answers, vlans: any, macs: any}} props */
function Settings({ device, row, answers, vlans, macs }) {
    const { port } = row;
    const members = vlans?.vlans ?? [];
    const vids = (/** @type {boolean} */ isUntagged) => members
        .filter((/** @type {any} */ vlan) => vlan.members.includes(port) && vlan.untagged.includes(port) === isUntagged)
        .map((/** @type {any} */ vlan) => vlan.vid);
    return html`
        <dl class="front-settings">
            <${Row} term="Link">${linkWords(row)}${row.up ? "" : `. ${downWords(row)}`}<//>
            <${Row} term="Negotiation">${row.autoneg ? "on" : "off"}<//>
            <${Row} term="Medium">${row.medium}<//>
            <${Row} term="Interface"><code>${row.interface}</code>, chip port ${row.chip_port}<//>
            <${Row} term="PVID">${row.pvid}<//>
            <${Row} term="VLANs">${vlans ? `untagged ${list(vids(true))}; tagged ${list(vids(false))}` : "..."}<//>
            <${Row} term="Addresses"><${Addresses} device=${device} port=${port} macs=${macs} /><//>
            <${Row} term="Learning">${learningWords(row.learning)}<//>
            <${Row} term="Spanning tree">${treeWords(port, answers.groups)}<//>
            <${Row} term="May leave by">${isolationWords(row, answers.ports.ports)}<//>
            <${Row} term="Loopback">${loopbackWords(row.loopback)}<//>
            <${Row} term="Jumbo frames">${row.jumbo ? "taken" : "not taken"}<//>
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
 * The commands that show and do the same.
 * @param {{device: import("../types").Device, row: any, answers: Answers}} props
 */
function Commands({ device, row, answers }) {
    const { port } = row;
    const conditions = conditionsOf(port, answers.cables);
    const options = Object.entries(conditions ?? { loss: "5%", delay: "20ms" }).map(([name, value]) => `--${name} ${value}`);
    const forCable = [`${row.pulled ? "plug" : "pull"} ${port}`, `cable ${port} ${options.join(" ")}`, ...(conditions ? [`cable ${port} --clear`] : [])];
    const subjects = [
        `ports ${port}`, `counters ${port} --rate 1s`, `vlans --port ${port}`, `macs --port ${port}`, `queues ${port}`, ...(port === 0 ? [] : forCable),
    ];
    return html`
        <details class="front-commands">
            <summary>Commands for ${titleOf(port).toLowerCase()}</summary>
            <ul>
                ${subjects.map((subject) => html`<li key=${subject}><${Command} text=${`${device.vdevctl} ${subject}`} /></li>`)}
                ${port !== 0 && html`
                    <li><${Command} text=${`${device.adpsh} --map 'adp_set_phy_port_attr ${port} ADP_ATTR_ADMIN_STATE ${row.enabled ? 0 : 1}'`} /></li>
                `}
            </ul>
        </details>
    `;
}

/**
 * @param {{device: import("../types").Device, face: Face, answers: Answers, counters: any, moments: import("./traffic.js").Moment[],
 *     onClose: () => void}} props
 */
export function Details({ device, face, answers, counters, moments, onClose }) {
    const { port } = face;
    const [, again] = useState(0);
    const vlans = useAnswer(device.name, { command: "vlans", port }, OFTEN).answer;
    const macs = useAnswer(device.name, { command: "macs", port, last: MOST_ADDRESSES + 1 }, OFTEN).answer;
    const queues = useAnswer(device.name, { command: "queues", port }, OFTEN).answer;
    useEffect(() => void beginningOf(device.name, counters), [device.name, counters]);
    const ofPort = (/** @type {any} */ each) => each.port === port;
    const row = answers.ports.ports.find(ofPort);
    const beginning = beginningOf(device.name, null);
    const now = counters?.counters.find(ofPort);
    const onNow = () => {
        beginningOf(device.name, counters, true);
        again((count) => count + 1);
    };
    return html`
        <section class="front-details card" aria-label=${`Details of ${titleOf(port).toLowerCase()}`}>
            <header><h2>${titleOf(port)}</h2><button type="button" class="front-close" onClick=${onClose}>Close</button></header>
            ${face.marks.length > 0 && html`<${MarkList} face=${face} />`}
            <div class="front-columns">
                <div><${Settings} device=${device} row=${row} answers=${answers} vlans=${vlans} macs=${macs} />
                    <${Commands} device=${device} row=${row} answers=${answers} /></div>
                <div><${Plots} moments=${moments} port=${port} />
                    ${port !== 0 && html`<${Cable} device=${device} row=${row} cables=${answers.cables} />`}</div>
                <div>${now && html`
                    <${Counts} row=${now} before=${beginning?.answer.counters.find(ofPort)} queues=${queues?.ports.find(ofPort)}
                        at=${beginning?.at ?? null} onNow=${onNow} />
                `}</div>
            </div>
        </section>
    `;
}
