// How frames get their priorities and queues: what each port trusts, remaps, the DSCP map.
import { html, useMemo, useState } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { portName } from "../parts/ports.js";
import { useAnswer } from "../use.js";
import { Choice, Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {import("../parts/table").Column} Column */

const EIGHT = [0, 1, 2, 3, 4, 5, 6, 7];
const TRUSTS = { port: "its own priority", "802.1p": "the tag", dscp: "the DSCP", both: "the DSCP, else the tag" };

/** @param {number[]} map where a number is mapped to another */
function changesText(map) {
    return map.map((to, from) => (to === from ? "" : `${from}→${to}`)).filter((text) => text).join(" ") || "none";
}

/** @param {any} row of the DSCP map */
const isMapped = (row) => row.mapped !== row.dscp || row.priority !== row.dscp >> 3;

/** @param {Device} device @returns {Column[]} */
function portColumns(device) {
    return [
        { name: "port", title: "Port", value: (row) => row.port, show: (row) => portName(row.port), isHead: true },
        { name: "trust", title: "Trusts", value: (row) => row.trust, show: (row) => TRUSTS[/** @type {keyof typeof TRUSTS} */ (row.trust)] ?? row.trust, isWatched: true },
        { name: "priority", title: "Own priority", value: (row) => row.priority, isNumber: true, isWatched: true },
        { name: "remap", title: "Priorities in tags", about: "Priorities in tags that become others", value: (row) => changesText(row.remap), isWatched: true },
        { name: "queues", title: "Priority to queue", about: "Priorities with the queue of another number", value: (row) => changesText(row.queues), isWatched: true },
        { name: "dscps", title: "Own DSCP rows", value: (row) => row.dscps.length, isNumber: true, isWatched: true },
    ];
}

/** @param {any} row */
const differs = (row) => row.trust !== "802.1p" || row.priority !== 0 || row.dscps.length > 0 || changesText(row.remap) !== "none" || changesText(row.queues) !== "none";

/** @param {{rows: any[]}} props the 64 rows of the map */
function DscpMap({ rows }) {
    const cell = (/** @type {any} */ row) => html`
        <td class=${isMapped(row) ? "mapped" : null} title=${`DSCP ${row.dscp}: priority ${row.priority}, leaves with DSCP ${row.mapped}`}>
            ${row.priority}${row.mapped !== row.dscp && html`<span class="becomes"> →${row.mapped}</span>`}
        </td>
    `;
    return html`
        <section class="part" aria-label="DSCP map">
            <h3>DSCP map</h3>
            <div class="note"><p>The priority of each DSCP on ports that trust it; behind an arrow the DSCP that the packet leaves with, if it is
                another. Framed: not as at power-on. A DSCP is the number of its row and that of its column together.</p></div>
            <div class="scroll matrix" tabindex="0" role="region" aria-label="DSCP map">
                <table>
                    <caption class="unseen">Priority of each DSCP</caption>
                    <thead><tr><th scope="col">DSCP</th>${EIGHT.map((low) => html`<th scope="col">+${low}</th>`)}</tr></thead>
                    <tbody>${EIGHT.map((high) => html`
                        <tr><th scope="row">${8 * high}</th>${EIGHT.map((low) => cell(rows[8 * high + low]))}</tr>
                    `)}</tbody>
                </table>
            </div>
        </section>
    `;
}

/** @type {Column[]} */
const OWN_COLUMNS = [
    { name: "port", title: "Port", value: (row) => row.port, show: (row) => portName(row.port) },
    { name: "dscp", title: "DSCP", value: (row) => row.dscp, isNumber: true, isHead: true },
    { name: "priority", title: "Priority", value: (row) => row.priority, isNumber: true, isWatched: true },
    { name: "mapped", title: "Leaves with DSCP", value: (row) => row.mapped, isNumber: true, isWatched: true },
];

/** @param {any} answer */
function ownRows(answer) {
    return answer.ports.flatMap((/** @type {any} */ port) => port.dscps.map((/** @type {any} */ row) => ({ ...row, port: port.port })));
}

/** @param {{device: Device}} props */
export function Priorities({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "priorities" });
    const [isAll, setAll] = useState(false);
    const rows = useMemo(() => (answer?.ports ?? []).filter((/** @type {any} */ row) => isAll || differs(row)), [answer, isAll]);
    const own = useMemo(() => (answer ? ownRows(answer) : []), [answer]);
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const note = html`
        <p>Of frames without what is trusted, the ${answer.default === "port" ? "port's own priority" : "tag's priority"} counts. Queues of the
            priorities 0 to 7 on the chip: ${answer.queues.join(" ")}.</p>
        <${Choice} text="Also ports as at power-on" isOn=${isAll} onChange=${setAll} />
    `;
    return html`
        <${Problem} text=${error} />
        <${Part} title="Ports" note=${note} rows=${rows} columns=${portColumns(device)} keyOf=${(/** @type {any} */ row) => row.port}
            commands=${[`${device.vdevctl} priorities`]}
            empty="All ports are as at power-on: they trust the tag. This makes port 1 trust the DSCP:"
            make=${adpsh(device, "adp_set_port_pri_trust_mode 1 ADP_TRUST_DSCP")} />
        <${DscpMap} rows=${answer.dscps} />
        ${own.length > 0 && html`
            <${Part} title="DSCP rows of ports" rows=${own} columns=${OWN_COLUMNS} search="Search" empty=""
                keyOf=${(/** @type {any} */ row) => `${row.port} ${row.dscp}`} />
        `}
    `;
}
