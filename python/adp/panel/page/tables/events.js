// The messages that wait in the device's event queue.
import { html, useMemo } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { useAnswer } from "../use.js";
import { member, number } from "./columns.js";
import { Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */

/**
 * Numbers as one text.
 * @param {string} name
 * @param {string} title
 */
const numbers = (name, title) => member(name, title, { value: (row) => row[name].join(" ") });

const COLUMNS = [
    number("place", "Place", { isHead: true }),
    number("time", "Time", { show: (row) => row.time.toFixed(6), about: "Time in seconds since the device was started" }),
    number("queue", "Queue"),
    numbers("words", "Words"),
    numbers("record", "Record"),
];

/** @param {any} row */
const keyOf = (row) => `${row.time} ${row.queue} ${row.words}`;

/** @param {{device: Device}} props */
export function Events({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "events" });
    const placed = (/** @type {any} */ row, /** @type {number} */ index) => ({ ...row, place: index + 1 });
    const rows = useMemo(() => answer?.events.map(placed), [answer]);
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    return html`
        <${Problem} text=${error} />
        <${Part} title="Event queue" isOnly rows=${rows} columns=${COLUMNS} keyOf=${keyOf} search="Search"
            note=${html`<p>Messages between programs on the CPU that nobody has taken yet, the newest last.</p>`}
            commands=${[`${device.vdevctl} events`]}
            empty="No message waits. This sends one, that the link of port 3 is up:"
            make=${adpsh(device, "adp_link_event_fast_send_unicast_msg_ex 3 1")} />
    `;
}
