// Limits on learning, and the addresses that they refused.
import { html, useMemo } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { portName } from "../parts/ports.js";
import { useAnswer } from "../use.js";
import { Bar, grouped } from "./bar.js";
import { Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {import("../parts/table").Column} Column */

/** @param {any} row */
function scopeOf(row) {
    return row.scope === "system" ? "the whole chip" : row.scope === "vlan" ? `VLAN ${row.vid}`
        : row.scope === "port" ? `port ${portName(row.port)}` : `trunk ${row.trunk}`;
}

/** @type {Column[]} */
const LIMITS = [
    { name: "scope", title: "Addresses of", value: scopeOf, isHead: true },
    { name: "limit", title: "Limit", value: (row) => row.limit, show: (row) => grouped(row.limit), isNumber: true, isWatched: true },
    { name: "learned", title: "Learned", value: (row) => row.learned, isWatched: true,
        show: (row) => html`<${Bar} part=${row.learned / (row.limit || 1)} text=${`${grouped(row.learned)} of ${grouped(row.limit)}`} />` },
    { name: "full", title: "State", value: (row) => (row.learned >= row.limit ? "full" : ""), isWatched: true },
];

/** @type {Column[]} */
const REFUSED = [
    { name: "port", title: "Port", value: (row) => row.port, show: (row) => portName(row.port) },
    { name: "vid", title: "VLAN", value: (row) => row.vid, isNumber: true },
    { name: "mac", title: "Address", value: (row) => row.mac, isHead: true },
];

/** @param {any} answer */
function refusedRows(answer) {
    return answer.violations.flatMap((/** @type {any} */ port) => port.addresses.map((/** @type {any} */ row) => ({ ...row, port: port.port })));
}

/** @param {{device: Device}} props */
export function Limits({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "limits" });
    const refused = useMemo(() => (answer ? refusedRows(answer) : []), [answer]);
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const ports = answer.violations.map((/** @type {any} */ port) => `port ${portName(port.port)} refused ${grouped(port.count)}`).join(", ");
    return html`
        <${Problem} text=${error} />
        <${Part} title="Limits on learning" note=${html`<p>${grouped(answer.learned)} addresses are learned.</p>`} rows=${answer.limits}
            columns=${LIMITS} keyOf=${scopeOf} commands=${[`${device.vdevctl} limits`]}
            empty="Nothing limits learning. This lets port 3 learn 100 addresses:"
            make=${adpsh(device, "adp_set_mac_limit 100 3 ADP_MAC_SCOPE_INTF")} />
        <${Part} title="Refused addresses" note=${ports && html`<p>In all, ${ports}.</p>`} rows=${refused} columns=${REFUSED} search="Search"
            keyOf=${(/** @type {any} */ row) => `${row.port} ${row.vid} ${row.mac}`} sort=${{ name: "port", isUp: true }}
            empty="No address was refused." />
    `;
}
