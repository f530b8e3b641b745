// The mirror sessions.
import { html } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { portList, portName } from "../parts/ports.js";
import { useAnswer } from "../use.js";
import { WATCHED, by, member, number } from "./columns.js";
import { Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */

const MIRROR = "adp_add_port_mirror 1 24 ADP_MIRROR_INGRESS|ADP_MIRROR_EGRESS 1";

/** @param {number | null} port */
const nameOrDash = (port) => (port === null ? "-" : portName(port));

const COLUMNS = [
    number("session", "Session", { isHead: true }),
    member("ingress", "What comes in at", { ...WATCHED, value: (row) => portList(row.ingress) }),
    member("egress", "What leaves at", { ...WATCHED, value: (row) => portList(row.egress) }),
    member("destination", "Is copied to", { ...WATCHED, show: (row) => nameOrDash(row.destination) }),
    member("flow", "Rules copy to", { ...WATCHED, show: (row) => nameOrDash(row.flow) }),
    member("state", "State", { ...WATCHED, value: (row) => (row.disabled ? "disabled" : "enabled") }),
];

/** @param {{device: Device}} props */
export function Mirrors({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "mirrors" });
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const note = html`
        <p>Mirroring is ${answer.enabled ? "on" : "off: nothing is copied"}. Session 0 is session 1 of the library.</p>
    `;
    const turnOn = answer.enabled ? [] : [adpsh(device, "adp_switch_control_set ADP_CONTROL_MIRRORS 1")];
    return html`
        <${Problem} text=${error} />
        <${Part} title="Mirror sessions" isOnly note=${note} rows=${answer.mirrors} columns=${COLUMNS}
            keyOf=${by("session")} commands=${[`${device.vdevctl} mirrors`, ...turnOn]}
            empty="There are no sessions. This copies what passes port 1 to port 24:"
            make=${adpsh(device, "adp_mirror_init", MIRROR)} />
    `;
}
