// What was counted at a port since a moment: frames, losses, drops by reason.
import { html } from "../vendor/preact.js";
import { Table } from "../parts/table.js";
import { LOSSES, since } from "./traffic.js";

const DASHES = /_/g;

/**
 * @param {any} row of `counters`
 * @param {any} [before] the same port's when counting began
 * @param {any} [queues] the port's of `queues`
 * @returns {{place: string, frames: number}[]}
 */
function droppedRows(row, before, queues) {
    const drops = Object.keys(row.drops).map((reason) => ({
        place: reason.replace(DASHES, " "), frames: since(row.drops[reason], before?.drops[reason]),
    }));
    const losses = Object.entries(LOSSES).map(([loss, words]) => ({ place: words, frames: since(row[loss], before?.[loss]) }));
    const inQueues = (queues?.queues ?? []).map((/** @type {any} */ queue) => ({
        place: `queue ${queue.queue} had no room (all that is counted)`, frames: queue.dropped,
    }));
    return [...drops, ...losses, ...inQueues].filter((each) => each.frames > 0);
}

const COLUMNS = [
    { name: "place", title: "Dropped or lost", value: (/** @type {any} */ row) => row.place },
    { name: "frames", title: "Frames", value: (/** @type {any} */ row) => row.frames, isNumber: true, isWatched: true },
];

/** @param {{row: any, before: any, queues: any, at: Date | null, onNow: () => void}} props */
export function Counts({ row, before, queues, at, onNow }) {
    const count = (/** @type {string} */ name) => since(row[name], before?.[name]).toLocaleString("en");
    const time = at ? at.toLocaleTimeString("en-GB") : "";
    return html`
        <section aria-label="Counters">
            <h3>Counters since ${time}</h3>
            <button type="button" class="front-since" onClick=${onNow}>Since now</button>
            <table class="front-counts">
                <caption>Frames and octets since ${time}, the page's time</caption>
                <thead><tr><td></td><th scope="col" class="number">In</th><th scope="col" class="number">Out</th></tr></thead>
                <tbody>
                    <tr><th scope="row">Frames</th><td class="number">${count("rx_frames")}</td><td class="number">${count("tx_frames")}</td></tr>
                    <tr><th scope="row">Octets</th><td class="number">${count("rx_octets")}</td><td class="number">${count("tx_octets")}</td></tr>
                </tbody>
            </table>
            <${Table} caption="Drops and losses" columns=${COLUMNS} rows=${droppedRows(row, before, queues)}
                keyOf=${(/** @type {any} */ each) => each.place} empty="Nothing was dropped" />
        </section>
    `;
}
