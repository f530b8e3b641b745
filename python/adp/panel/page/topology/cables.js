// How the cables of a lab are now: state, conditions and load, from what the devices at their ends say.
import { cableRows } from "../parts/cable_form.js";
import { ratesOf, short } from "../rates.js";

/** @typedef {import("../types").CableEnd} CableEnd */
/** @typedef {import("./readings.js").Readings} Readings */
/** @typedef {{device: string, port: number}} DevicePort */
/**
 * A cable now. `forth` and `back` are frames per second from its first end and from its second, or null while nobody
 * knows. `held` is the end at which it is pulled and made bad, or null between two hosts.
 * @typedef {{id: string, ends: [CableEnd, CableEnd], names: [string, string], state: keyof typeof STATES,
 *     isPulled: boolean, conditions: Record<string, string | number> | null, forth: number | null, back: number | null,
 *     held: DevicePort | null, pulled: DevicePort[]}} CableNow
 */

/** What each state is called and drawn with: a letter or sign of its own in its mark. */
export const STATES = {
    up: { title: "up", sign: "", text: "The link is up." },
    bad: { title: "bad", sign: "!", text: "The link is up, and the cable treats frames badly." },
    pulled: { title: "pulled", sign: "×", text: "The cable is pulled." },
    down: { title: "down", sign: "–", text: "The link is down." },
    gone: { title: "gone", sign: "?", text: "A device at its end is not running." },
    unknown: { title: "not known", sign: "", text: "Nothing is known of it yet." },
};

/** A cable's end as adp-lab takes it: sw1:3, h1:eth1. */
export const endName = (/** @type {CableEnd} */ end) => `${end.node}:${end.port ?? end.interface}`;

/**
 * The ends that are ports of devices.
 * @param {CableEnd[]} ends
 * @returns {DevicePort[]}
 */
const portsOf = (ends) => ends.flatMap(({ node, port }) => (port === null ? [] : [{ device: node, port }]));

/**
 * What each device's ports say, by port.
 * @param {Readings} ports
 * @returns {Map<string, {rows: Map<number, any>, rates: Map<number, Record<string, number>>, isGone: boolean}>}
 */
function portsNow(ports) {
    return new Map([...ports].map(([name, { before, now, error }]) => [name, {
        rows: new Map(now?.ports.map((/** @type {any} */ row) => [row.port, row]) ?? []),
        rates: now && !error ? ratesOf({ before, now }, "ports", "port", ["rx_frames", "tx_frames"]) : new Map(),
        isGone: error !== null,
    }]));
}

/**
 * @param {any[]} rows of the cable's ports, or undefined where nothing is known
 * @param {boolean} isGone
 * @param {boolean} isBad
 * @returns {keyof typeof STATES}
 */
function stateOf(rows, isGone, isBad) {
    if (isGone) {
        return "gone";
    }
    if (rows.some((row) => row?.pulled)) {
        return "pulled";
    }
    if (rows.some((row) => row && !row.up)) {
        return "down";
    }
    return rows.length === 0 || rows.includes(undefined) ? "unknown" : isBad ? "bad" : "up";
}

/**
 * @param {import("../types").Lab} lab
 * @param {Readings} ports answers to "ports"
 * @param {Readings} cables answers to "cables"
 * @returns {CableNow[]} in the order of the lab
 */
export function cablesNow(lab, ports, cables) {
    const devices = portsNow(ports);
    return lab.cables.map(({ ends }) => {
        const own = portsOf(ends);
        const rows = own.map(({ device, port }) => devices.get(device)?.rows.get(port));
        const isGone = own.some(({ device }) => devices.get(device)?.isGone);
        const bad = own.map(({ device, port }) => cableRows(cables.get(device)?.now, port));
        const conditions = bad.map(([row]) => row?.conditions ?? null);
        const badAt = conditions.findIndex((each) => each !== null);
        const known = own.find(({ device, port }) => devices.get(device)?.rates.has(port));
        const rates = known && devices.get(known.device)?.rates.get(known.port);
        const [out, into] = [rates?.tx_frames ?? null, rates?.rx_frames ?? null];
        const isFirst = known?.device === ends[0].node && known.port === ends[0].port;
        return {
            id: endName(ends[0]), ends, names: [endName(ends[0]), endName(ends[1])],
            state: stateOf(rows, isGone, badAt >= 0), isPulled: rows.some((row) => row?.pulled),
            conditions: conditions[badAt] ?? null, forth: isFirst ? out : into, back: isFirst ? into : out,
            held: own[Math.max(0, badAt)] ?? null, pulled: own.filter((_, at) => rows[at]?.pulled),
        };
    });
}

/**
 * Frames per second in words.
 * @param {number | null} rate
 */
export const rateText = (rate) => (rate === null ? "not known" : `${short(rate)} frames/s`);

/**
 * A cable in words, for those who do not see the picture.
 * @param {CableNow} cable
 */
export function cableText({ names, state, forth, back }) {
    const load = state === "up" || state === "bad" ? `, ${rateText(forth)} there, ${rateText(back)} back` : "";
    return `Cable ${names[0]} to ${names[1]}, ${STATES[state].title}${load}`;
}
