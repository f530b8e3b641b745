// Limits on learning, and the addresses that they refused.
import { html, useMemo } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { portName } from "../parts/ports.js";
import { useAnswer } from "../use.js";
import { Bar, grouped } from "./bar.js";
import { PORT, WATCHED, count, member, number } from "./columns.js";
import { Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */

/** @param {any} row */
function scopeOf(row) {
    switch (row.scope) {
        case "system":
            return "the whole chip";
        case "vlan":
            return `VLAN ${row.vid}`;
        case "port":
            return `port ${portName(row.port)}`;
        default:
            return `trunk ${row.trunk}`;
    }
}

/** @param {any} row */
function Learned(row) {
    const text = `${grouped(row.learned)} of ${grouped(row.limit)}`;
    return html`<${Bar} part=${row.learned / (row.limit || 1)} text=${text} />`;
}

const LIMITS = [
    member("scope", "Addresses of", { value: scopeOf, isHead: true }),
    count("limit", "Limit", WATCHED),
    member("learned", "Learned", { ...WATCHED, show: Learned }),
    member("state", "State", { ...WATCHED, value: (row) => (row.learned >= row.limit ? "full" : "") }),
];

const REFUSED = [PORT, number("vid", "VLAN"), member("mac", "Address", { isHead: true })];

/** @param {any} answer */
function refusedRows(answer) {
    return answer.violations.flatMap((/** @type {any} */ refused) =>
        refused.addresses.map((/** @type {any} */ row) => ({ ...row, port: refused.port })));
}

/** @param {any} answer */
function refusalsText(answer) {
    const text = (/** @type {any} */ each) => `port ${portName(each.port)} refused ${grouped(each.count)}`;
    return answer.violations.map(text).join(", ");
}

/** @param {{device: Device}} props */
export function Limits({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "limits" });
    const refused = useMemo(() => (answer ? refusedRows(answer) : []), [answer]);
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    return html`
        <${Problem} text=${error} />
        <${Part} title="Limits" note=${html`<p>${grouped(answer.learned)} addresses are learned.</p>`}
            rows=${answer.limits} columns=${LIMITS} keyOf=${scopeOf} commands=${[`${device.vdevctl} limits`]}
            empty="Nothing limits learning. This lets port 3 learn 100 addresses:"
            make=${adpsh(device, "adp_set_mac_limit 100 3 ADP_MAC_SCOPE_INTF")} />
        <${Part} title="Refused addresses" rows=${refused} columns=${REFUSED} search="Search"
            note=${refused.length > 0 && html`<p>In all, ${refusalsText(answer)}.</p>`}
            keyOf=${(/** @type {any} */ row) => `${row.port} ${row.vid} ${row.mac}`} empty="No address was refused." />
    `;
}
