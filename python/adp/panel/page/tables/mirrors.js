// The mirror sessions.
import { html } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { portList, portName } from "../parts/ports.js";
import { useAnswer } from "../use.js";
import { Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */

/** @param {number | null} port */
const nameOrDash = (port) => (port === null ? "-" : portName(port));

/** @type {import("../parts/table").Column[]} */
const COLUMNS = [
    { name: "session", title: "Session", value: (row) => row.session, isNumber: true, isHead: true },
    { name: "ingress", title: "What comes in at", value: (row) => portList(row.ingress), isWatched: true },
    { name: "egress", title: "What leaves at", value: (row) => portList(row.egress), isWatched: true },
    { name: "destination", title: "Copied to", value: (row) => row.destination, show: (row) => nameOrDash(row.destination), isWatched: true },
    { name: "flow", title: "Rules copy to", value: (row) => row.flow, show: (row) => nameOrDash(row.flow), isWatched: true },
    { name: "state", title: "State", value: (row) => (row.disabled ? "disabled" : "enabled"), isWatched: true },
];

/** @param {{device: Device}} props */
export function Mirrors({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "mirrors" });
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const note = html`<p>Mirroring is ${answer.enabled ? "on." : "off: nothing is copied."} Session 0 is session 1 of adpsh.</p>`;
    const commands = [`${device.vdevctl} mirrors`, ...(answer.enabled ? [] : [adpsh(device, "adp_switch_control_set ADP_CONTROL_MIRRORS 1")])];
    return html`
        <${Problem} text=${error} />
        <${Part} title="Mirror sessions" note=${note} rows=${answer.mirrors} columns=${COLUMNS} keyOf=${(/** @type {any} */ row) => row.session}
            commands=${commands} empty="There are no sessions. This copies what passes port 1 to port 24:"
            make=${adpsh(device, "adp_mirror_init", "adp_add_port_mirror 1 24 ADP_MIRROR_INGRESS|ADP_MIRROR_EGRESS 1")} />
    `;
}
