// The egress queues: what waits in them, what they send and drop, how each port schedules and shapes them.
import { html, useMemo, useState } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { portName } from "../parts/ports.js";
import { useRates } from "../parts/fresh_rates.js";
import { short } from "../rates.js";
import { useAnswer } from "../use.js";
import { Bar, RateBar, grouped, mostOf } from "./bar.js";
import { Choice, Part, adpsh, commandColumn } from "./part.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {import("../parts/table").Column} Column */

const COUNTS = ["frames", "octets", "dropped", "flushed"];

/** @param {any} row of a queue or a port */
const hasShown = (row) => row.frames + row.waiting_frames + row.dropped + row.flushed > 0;
/** @param {any} port */
const isSet = (port) => port.mode !== "strict" || port.rate !== 0 || port.queues.some((/** @type {any} */ queue) => queue.weight !== 1);

/**
 * All queues as rows of one table, with keys.
 * @param {any} answer
 */
function flattened(answer) {
    const queues = answer.ports.flatMap((/** @type {any} */ port) =>
        port.queues.map((/** @type {any} */ queue) => ({ ...queue, port: port.port, key: `${port.port} ${queue.queue}` })));
    return { time: answer.time, queues };
}

/**
 * The ports with their queues, each with its rates, and sums of them.
 * @param {any} answer
 * @param {Map<any, Record<string, number>>} rates
 */
function portsOf(answer, rates) {
    return answer.ports.map((/** @type {any} */ port) => {
        const queues = port.queues.map((/** @type {any} */ queue) => ({ ...queue, rates: rates.get(`${port.port} ${queue.queue}`) }));
        const sum = (/** @type {string} */ count) => queues.reduce((/** @type {number} */ all, /** @type {any} */ queue) => all + queue[count], 0);
        const rate = queues[0].rates && queues.reduce((/** @type {number} */ all, /** @type {any} */ queue) => all + (queue.rates?.frames ?? 0), 0);
        return { ...port, queues, shaper: port.rate, sent: rate, ...Object.fromEntries([...COUNTS, "waiting_frames", "waiting_octets"].map((each) => [each, sum(each)])) };
    });
}

/** @param {any} port */
const shaperOf = (port) => (port.rate === 0 ? (port.line_rate ? "line rate" : "none") : `${short(1000 * port.rate)}bit/s${port.burst ? `, burst ${short(1000 * port.burst)}bit` : ""}`);
/** @param {any} port */
const weightsOf = (port) => port.queues.map((/** @type {any} */ queue) => queue.weight).join(" ");

/** @param {{queue: any, capacity: number}} props */
function Cell({ queue, capacity }) {
    if (!hasShown(queue)) {
        return html`<span class="faint">-</span>`;
    }
    const name = `Queue ${queue.queue}: ${grouped(queue.waiting_frames)} frames wait, ${grouped(queue.dropped)} dropped`;
    return html`
        <span class="queue">
            <${Bar} part=${queue.waiting_octets / capacity} text=${queue.rates ? `${short(queue.rates.frames)}/s` : "..."} name=${name} />
            ${queue.dropped > 0 && html`<span class=${queue.rates?.dropped > 0 ? "drops now" : "drops"}>${short(queue.dropped)} lost</span>`}
        </span>
    `;
}

/**
 * @param {Device} device @param {number} capacity of a queue @param {number} chosen
 * @param {(port: number) => void} onChoose
 * @returns {Column[]}
 */
function portColumns(device, capacity, chosen, onChoose) {
    const choose = (/** @type {any} */ row) => html`
        <button type="button" aria-pressed=${row.port === chosen} aria-label=${`Queues of port ${portName(row.port)}`}
            onClick=${() => onChoose(row.port)}>${portName(row.port)}</button>
    `;
    return [
        { name: "port", title: "Port", value: (row) => row.port, show: choose, isHead: true },
        { name: "waiting", title: "Waits", about: "Octets that wait on the port", value: (row) => row.waiting_octets,
            show: (row) => html`<${Bar} part=${row.waiting_octets / (8 * capacity)} text=${`${short(row.waiting_octets)} octets`} name="Of what its eight queues hold" />` },
        ...[0, 1, 2, 3, 4, 5, 6, 7].map((number) => ({
            name: `queue${number}`, title: `Q${number}`, about: `Queue ${number}: octets that wait, frames sent per second, frames lost`,
            value: (/** @type {any} */ row) => row.queues[number].waiting_octets, text: () => "",
            show: (/** @type {any} */ row) => html`<${Cell} queue=${row.queues[number]} capacity=${capacity} />`,
        })),
        { name: "dropped", title: "Dropped", value: (row) => row.dropped, show: (row) => grouped(row.dropped), isNumber: true, isWatched: true },
        { name: "mode", title: "Scheduling", value: (row) => row.mode, isWatched: true },
        { name: "weights", title: "Weights 0-7", value: weightsOf, isWatched: true },
        { name: "shaper", title: "Shaper", value: (row) => row.shaper, show: shaperOf, text: shaperOf, isWatched: true },
        commandColumn((row) => `${device.vdevctl} queues ${portName(row.port)}`),
    ];
}

/** @param {{port: any, capacity: number, most: number}} props */
function Queues8({ port, capacity, most }) {
    /** @type {Column[]} */
    const columns = [
        { name: "queue", title: "Queue", value: (row) => row.queue, isNumber: true, isHead: true },
        { name: "waiting", title: "Frames that wait", value: (row) => row.waiting_frames, show: (row) => grouped(row.waiting_frames), isNumber: true },
        { name: "octets_waiting", title: "Octets that wait", value: (row) => row.waiting_octets,
            show: (row) => html`<${Bar} part=${row.waiting_octets / capacity} text=${`${grouped(row.waiting_octets)} of ${grouped(capacity)}`} />` },
        { name: "rate", title: "Sent per second", value: (row) => row.rates?.frames ?? 0, show: (row) => html`<${RateBar} rate=${row.rates?.frames} most=${most} unit=" frames/s" />` },
        { name: "bits", title: "Sent", value: (row) => row.rates?.octets ?? 0, show: (row) => (row.rates ? `${short(8 * row.rates.octets)}bit/s` : ""), isNumber: true },
        { name: "frames", title: "Frames sent", value: (row) => row.frames, show: (row) => grouped(row.frames), isNumber: true },
        { name: "dropped", title: "Dropped", value: (row) => row.dropped, show: (row) => grouped(row.dropped), isNumber: true, isWatched: true },
        { name: "flushed", title: "Flushed", value: (row) => row.flushed, show: (row) => grouped(row.flushed), isNumber: true, isWatched: true },
        { name: "weight", title: "Weight", value: (row) => row.weight, isNumber: true, isWatched: true },
    ];
    return html`
        <${Part} title=${`Queues of port ${portName(port.port)}`} rows=${port.queues} columns=${columns} empty=""
            keyOf=${(/** @type {any} */ row) => row.queue} />
    `;
}

/** @param {{answer: any}} props */
function Buffer({ answer }) {
    return html`<p><${Bar} part=${answer.waiting_octets / answer.capacity} name="Buffer of the chip"
        text=${`${grouped(answer.waiting_octets)} of ${grouped(answer.capacity)} octets wait in all queues`} /></p>`;
}

/** @param {{device: Device}} props */
export function Queues({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "queues" });
    const flat = useMemo(() => answer && flattened(answer), [answer]);
    const rates = useRates(flat, "queues", "key", COUNTS);
    const ports = useMemo(() => answer && portsOf(answer, rates), [answer, rates]);
    const [isAll, setAll] = useState(false);
    const [chosen, setChosen] = useState(-1);
    const keep = useMemo(() => (isAll ? null : (/** @type {any} */ port) => hasShown(port) || isSet(port)), [isAll]);
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const note = html`
        <${Buffer} answer=${answer} />
        <p>The bar of a queue is what waits in it of ${grouped(answer.queue_capacity)} octets; the number, frames that it sends per
            second. Priorities use ${answer.count} queues.</p>
        <${Choice} text="Also ports without frames and settings" isOn=${isAll} onChange=${setAll} />
    `;
    const port = ports.find((/** @type {any} */ each) => each.port === chosen);
    const shown = keep ? ports.filter(keep) : ports;
    return html`
        <${Problem} text=${error} />
        <${Part} title="Ports and their queues" note=${note} rows=${shown} keyOf=${(/** @type {any} */ row) => row.port}
            columns=${portColumns(device, answer.queue_capacity, chosen, (number) => setChosen(number === chosen ? -1 : number))}
            commands=${[`${device.vdevctl} queues --nonzero`]}
            empty="No queue has had a frame. Frames wait only on a port that is shaped, as port 3 is by this:"
            make=${adpsh(device, "adp_set_port_egress_shaper 3 10000 0")} />
        ${port && html`<${Queues8} port=${port} capacity=${answer.queue_capacity} most=${mostOf(rates, "frames")} />`}
    `;
}
