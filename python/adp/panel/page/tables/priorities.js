// How frames get their priorities and queues: what each port trusts and remaps, and the DSCP map.
import { html, useMemo, useState } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { useAnswer } from "../use.js";
import { PORT, PORT_HEAD, WATCHED, by, member, number } from "./columns.js";
import { DscpMap } from "./dscp_map.js";
import { Choice, Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */

const TRUSTS = { port: "its own priority", "802.1p": "the tag", dscp: "the DSCP", both: "the DSCP, else the tag" };

/** @param {any} row */
const trustOf = (row) => TRUSTS[/** @type {keyof typeof TRUSTS} */ (row.trust)] ?? row.trust;

/** @param {number[]} map what each number becomes */
function changesOf(map) {
    return map.map((to, from) => (to === from ? "" : `${from}→${to}`)).filter((text) => text).join(" ");
}

/** @param {any} row */
function differs(row) {
    const isMapped = row.dscps.length > 0 || changesOf(row.remap) !== "" || changesOf(row.queues) !== "";
    return row.trust !== "802.1p" || row.priority !== 0 || isMapped;
}

const PORT_COLUMNS = [
    PORT_HEAD,
    member("trust", "Trusts", { ...WATCHED, value: trustOf }),
    number("priority", "Own priority", WATCHED),
    member("remap", "Remaps in tags", { ...WATCHED, value: (row) => changesOf(row.remap) || "none" }),
    member("queues", "Priority to queue", { ...WATCHED, value: (row) => changesOf(row.queues) || "the same" }),
    number("dscps", "Own DSCP rows", { ...WATCHED, value: (row) => row.dscps.length }),
];

const OWN_COLUMNS = [
    PORT,
    number("dscp", "DSCP", { isHead: true }),
    number("priority", "Priority", WATCHED),
    number("mapped", "Leaves with DSCP", WATCHED),
];

/** @param {any} answer */
function ownRows(answer) {
    return answer.ports.flatMap((/** @type {any} */ port) =>
        port.dscps.map((/** @type {any} */ row) => ({ ...row, port: port.port })));
}

/** @param {{answer: any}} props */
function OwnDscps({ answer }) {
    const rows = useMemo(() => ownRows(answer), [answer]);
    return rows.length > 0 && html`
        <${Part} title="DSCP rows of ports" rows=${rows} columns=${OWN_COLUMNS} search="Search"
            keyOf=${(/** @type {any} */ row) => `${row.port} ${row.dscp}`} />
    `;
}

/** @param {{device: Device}} props */
export function Priorities({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "priorities" });
    const [isAll, setAll] = useState(false);
    const rows = useMemo(() => (isAll ? answer?.ports : answer?.ports.filter(differs)), [answer, isAll]);
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const otherwise = answer.default === "port" ? "the port's own priority" : "that of the tag";
    const note = html`
        <p>Where the DSCP is trusted, frames without one get ${otherwise}. The chip's queues of the priorities 0 to 7 are
            ${" "}${answer.queues.join(", ")}.</p>
        <${Choice} text="Also ports as at power-on" isOn=${isAll} onChange=${setAll} />
    `;
    return html`
        <${Problem} text=${error} />
        <${Part} title="Ports" note=${note} rows=${rows} columns=${PORT_COLUMNS} keyOf=${by("port")}
            commands=${[`${device.vdevctl} priorities`]}
            empty="All ports are as at power-on: they trust the tag. This makes port 1 trust the DSCP:"
            make=${adpsh(device, "adp_set_port_pri_trust_mode 1 ADP_TRUST_DSCP")} />
        <${DscpMap} rows=${answer.dscps} />
        <${OwnDscps} answer=${answer} />
    `;
}
