// What was counted at a port since a moment: frames, losses, drops by reason.
import { html } from "../vendor/preact.js";
import { Table } from "../parts/table.js";
import { LOSSES, since } from "./traffic.js";

/**
 * @param {any} row of `counters`
 * @param {any} before the same port's when counting began
 * @param {any} queues the port's of `queues`
 * @returns {{place: string, frames: number}[]}
 */
function droppedRows(row, before, queues) {
    const drops = Object.keys(row.drops).map((reason) => ({
        place: reason, frames: since(row.drops[reason], before?.drops[reason]),
    }));
    const losses = Object.entries(LOSSES).map(([loss, words]) => ({
        place: `${loss}: ${words}`, frames: since(row[loss], before?.[loss]),
    }));
    return [...drops, ...losses, ...queueRows(queues)].filter((each) => each.frames > 0);
}

/**
 * The queues' drops. They are counted in `tx_no_room`, too, but not by queue.
 * @param {any} queues the port's of `queues`
 */
function queueRows(queues) {
    return (queues?.queues ?? []).map((/** @type {any} */ queue) => ({
        place: `of these in queue ${queue.queue}, ever`, frames: queue.dropped,
    }));
}

const COLUMNS = [
    { name: "place", title: "Reason", value: (/** @type {any} */ row) => row.place },
    { name: "frames", title: "Frames", value: (/** @type {any} */ row) => row.frames, isNumber: true, isWatched: true },
];

/** @param {{title: string, unit: string, row: any, before: any}} props */
function Passed({ title, unit, row, before }) {
    const counts = ["rx", "tx"].map((way) => since(row[`${way}_${unit}`], before?.[`${way}_${unit}`]));
    return html`
        <tr>
            <th scope="row">${title}</th>
            ${counts.map((count) => html`<td class="number">${count.toLocaleString("en")}</td>`)}
        </tr>
    `;
}

/** @param {{row: any, before: any, queues: any, at: Date | null, onNow: () => void}} props */
export function Counts({ row, before, queues, at, onNow }) {
    return html`
        <section class="front-counters" aria-label="Counters">
            <header>
                <h3>Counters since ${at ? at.toLocaleTimeString("en-GB") : "power-on"}</h3>
                <button type="button" class="front-since" onClick=${onNow}>Since now</button>
            </header>
            <div class="scroll front-counts">
                <table>
                    <thead>
                        <tr>
                            <th scope="col">Count</th>
                            <th scope="col" class="number">In</th>
                            <th scope="col" class="number">Out</th>
                        </tr>
                    </thead>
                    <tbody>
                        <${Passed} title="Frames" unit="frames" row=${row} before=${before} />
                        <${Passed} title="Octets" unit="octets" row=${row} before=${before} />
                    </tbody>
                </table>
            </div>
            <${Table} caption="Dropped and lost frames" columns=${COLUMNS} rows=${droppedRows(row, before, queues)}
                keyOf=${(/** @type {any} */ each) => each.place} empty="None" />
        </section>
    `;
}
