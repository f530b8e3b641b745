// The messages that wait in the device's event queue.
import { html, useMemo } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { useAnswer } from "../use.js";
import { Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */

/** @type {import("../parts/table").Column[]} */
const COLUMNS = [
    { name: "number", title: "Place", value: (row) => row.place, isNumber: true },
    { name: "time", title: "Time", about: "Seconds since the device was started", value: (row) => row.time, show: (row) => row.time.toFixed(6), isNumber: true },
    { name: "queue", title: "Queue", value: (row) => row.queue, isNumber: true },
    { name: "words", title: "Words", value: (row) => row.words.join(" "), show: (row) => html`<code>${row.words.join(" ")}</code>` },
    { name: "record", title: "Record", value: (row) => row.record.join(" "), show: (row) => html`<code>${row.record.join(" ")}</code>`, isHead: true },
];

/** @param {{device: Device}} props */
export function Events({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "events" });
    const rows = useMemo(() => (answer?.events ?? []).map((/** @type {any} */ row, /** @type {number} */ index) => ({ ...row, place: index + 1 })), [answer]);
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    return html`
        <${Problem} text=${error} />
        <${Part} title="Event queue" rows=${rows} columns=${COLUMNS} keyOf=${(/** @type {any} */ row) => `${row.time} ${row.queue} ${row.words}`}
            note=${html`<p>Messages of management programs to each other that nobody has taken yet, the newest last.</p>`}
            search="Search" commands=${[`${device.vdevctl} events`]}
            empty="No message waits. This sends one: the link of port 3 is up." make=${adpsh(device, "adp_link_event_fast_send_unicast_msg_ex 3 1")} />
    `;
}
