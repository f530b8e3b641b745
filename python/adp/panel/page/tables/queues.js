// The egress queues: what waits in them, what they send and drop, how each port schedules and shapes them.
import { html, useMemo, useState } from "../vendor/preact.js";
import { useRates } from "../parts/fresh_rates.js";
import { Problem } from "../parts/problem.js";
import { portName } from "../parts/ports.js";
import { short } from "../rates.js";
import { useAnswer } from "../use.js";
import { Bar, bitRate, grouped, mostOf } from "./bar.js";
import { WATCHED, by, command, count, member, number, perSecond, withRates } from "./columns.js";
import { Choice, Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {import("../parts/table").Column} Column */
/** @typedef {import("../parts/fresh_rates").Rates} Rates */

const COUNTS = ["frames", "octets", "dropped", "flushed"];

/** @param {any} queue */
const isUsed = (queue) => queue.frames + queue.waiting_frames + queue.dropped + queue.flushed > 0;

/** @param {any} port */
function isShown(port) {
    const isWeighted = port.queues.some((/** @type {any} */ queue) => queue.weight !== 1);
    return port.mode !== "strict" || port.shaper !== 0 || isWeighted || port.queues.some(isUsed);
}

/**
 * All queues as one table, with keys.
 * @param {any} answer
 */
function queuesOf(answer) {
    const queues = answer.ports.flatMap((/** @type {any} */ port) =>
        port.queues.map((/** @type {any} */ queue) => ({ ...queue, key: `${port.port} ${queue.queue}` })));
    return { time: answer.time, queues };
}

/**
 * The ports with their queues.
 * @param {any} answer
 * @param {any[]} queues with their rates
 */
function portsOf(answer, queues) {
    return answer.ports.map((/** @type {any} */ port, /** @type {number} */ index) => {
        const own = queues.slice(8 * index, 8 * index + 8);
        const sum = (/** @type {string} */ name) => own.reduce((all, queue) => all + queue[name], 0);
        return { ...port, queues: own, shaper: port.rate, waiting: sum("waiting_octets"), dropped: sum("dropped") };
    });
}

/** @param {any} port */
function shaperText(port) {
    if (port.shaper === 0) {
        return port.line_rate ? "line rate" : "none";
    }
    return port.burst === 0 ? bitRate(port.shaper) : `${bitRate(port.shaper)}, burst ${short(1000 * port.burst)}bit`;
}

/** @param {{queue: any, capacity: number}} props */
function Queue({ queue, capacity }) {
    if (!isUsed(queue)) {
        return html`<span class="faint">-</span>`;
    }
    const rate = queue.rates ? `${short(queue.rates.frames)}/s` : "...";
    const name = `${grouped(queue.waiting_octets)} octets wait in queue ${queue.queue}`;
    return html`
        <span class="queue">
            <${Bar} part=${queue.waiting_octets / capacity} text=${rate} name=${name} />
            ${queue.dropped > 0 && html`
                <span class=${queue.rates?.dropped > 0 ? "drops now" : "drops"}>${short(queue.dropped)} lost</span>
            `}
        </span>
    `;
}

/**
 * @param {number} index of the queue
 * @param {number} capacity
 */
function queueColumn(index, capacity) {
    return member(`queue ${index}`, `Q${index}`, {
        about: `Q${index}, queue ${index}: what it sends per second and what is lost, by what waits`,
        value: (row) => row.queues[index].waiting_octets,
        text: () => "",
        show: (row) => html`<${Queue} queue=${row.queues[index]} capacity=${capacity} />`,
    });
}

/**
 * @param {Device} device
 * @param {number} capacity of a queue
 * @param {{chosen: number | null, onChoose: (port: number) => void}} choice
 * @returns {Column[]}
 */
function portColumns(device, capacity, { chosen, onChoose }) {
    const button = (/** @type {any} */ row) => html`
        <button type="button" aria-pressed=${row.port === chosen} aria-label=${`Queues of port ${portName(row.port)}`}
            onClick=${() => onChoose(row.port)}>${portName(row.port)}</button>
    `;
    const waiting = (/** @type {any} */ row) => html`
        <${Bar} part=${row.waiting / (8 * capacity)} text=${`${short(row.waiting)} octets`} name="Of what 8 queues hold" />
    `;
    return [
        number("port", "Port", { show: button, isHead: true }),
        member("waiting", "Waits", { show: waiting }),
        ...[0, 1, 2, 3, 4, 5, 6, 7].map((index) => queueColumn(index, capacity)),
        count("dropped", "Dropped", WATCHED),
        member("mode", "Scheduling", WATCHED),
        member("weights", "Weights", { ...WATCHED, value: (row) => row.queues.map(by("weight")).join(" ") }),
        member("shaper", "Shaper", { ...WATCHED, show: shaperText, text: shaperText }),
        command((row) => `${device.vdevctl} queues ${portName(row.port)}`),
    ];
}

/** @param {{port: any, capacity: number, rates: Rates}} props */
function QueuesOfPort({ port, capacity, rates }) {
    const waiting = (/** @type {{waiting_octets: number}} */ { waiting_octets: octets }) => html`
        <${Bar} part=${octets / capacity} text=${`${grouped(octets)} of ${grouped(capacity)}`} />
    `;
    const columns = [
        number("queue", "Queue", { isHead: true }),
        count("waiting_frames", "Frames that wait"),
        member("waiting_octets", "Octets that wait", { show: waiting }),
        perSecond("frames", "Frames sent per second", mostOf(rates, "frames")),
        perSecond("octets", "Octets sent per second", mostOf(rates, "octets")),
        count("frames", "Frames sent"),
        count("dropped", "Dropped", WATCHED),
        count("flushed", "Flushed", WATCHED),
        number("weight", "Weight", WATCHED),
    ];
    return html`
        <${Part} title=${`Queues of port ${portName(port.port)}`} rows=${port.queues} columns=${columns}
            keyOf=${by("key")} />
    `;
}

/** @param {{answer: any, isAll: boolean, onAll: (isAll: boolean) => void}} props */
function Note({ answer, isAll, onAll }) {
    const text = `${grouped(answer.waiting_octets)} of ${grouped(answer.capacity)} octets wait in all queues`;
    return html`
        <p><${Bar} part=${answer.waiting_octets / answer.capacity} text=${text} name="Buffer of the chip" /></p>
        <p>The bar of a queue is how much waits of ${grouped(answer.queue_capacity)} octets; the number is the frames that it
            sends per second. Frames have ${answer.count} queues. A port's button shows its queues one by one.</p>
        <${Choice} text="Also ports without frames and settings" isOn=${isAll} onChange=${onAll} />
    `;
}

/** @param {{device: Device}} props */
export function Queues({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "queues" });
    const table = useMemo(() => answer && queuesOf(answer), [answer]);
    const rates = useRates(table, "queues", "key", COUNTS);
    const ports = useMemo(() => answer && portsOf(answer, withRates(table.queues, rates, "key")), [answer, rates]);
    const [isAll, setAll] = useState(false);
    const [chosen, setChosen] = useState(/** @type {number | null} */ (null));
    const shown = useMemo(() => (isAll ? ports : ports?.filter(isShown)), [ports, isAll]);
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const onChoose = (/** @type {number} */ number) => setChosen(number === chosen ? null : number);
    const port = ports.find((/** @type {any} */ each) => each.port === chosen);
    return html`
        <${Problem} text=${error} />
        <${Part} title="Queues of ports" isOnly note=${html`<${Note} answer=${answer} isAll=${isAll} onAll=${setAll} />`}
            rows=${shown} columns=${portColumns(device, answer.queue_capacity, { chosen, onChoose })} keyOf=${by("port")}
            commands=${[`${device.vdevctl} queues --nonzero`]}
            empty="No queue has had a frame. Frames wait only on a port that is shaped, as port 3 is by this:"
            make=${adpsh(device, "adp_set_port_egress_shaper 3 10000 0")} />
        ${port && html`<${QueuesOfPort} port=${port} capacity=${answer.queue_capacity} rates=${rates} />`}
    `;
}
