// What the counters say over time: rates now and in the last minute, ports that drop, and counts since a moment.
import { useRef } from "../vendor/preact.js";
import { useTwoAnswers } from "../use.js";
import { ratesOf } from "../rates.js";

const HISTORY_SECONDS = 60;
const DROPPING_MILLISECONDS = 3000;

/** How often counters are read. */
export const EVERY_SECONDS = 0.5;

/** Frames that were lost, by the counter's name. */
export const LOSSES = {
    rx_lost: "lost before the chip",
    tx_lost: "not taken by the interface",
    tx_too_long: "longer than the port takes",
    tx_no_room: "no room in the queues",
    tx_flushed: "waited when the port went down",
    tx_mirror_down: "copies of a mirror while the port was down",
};

const RATES = ["rx_frames", "tx_frames", "rx_octets", "tx_octets", "trouble"];

/**
 * Rates of a moment: `at` is the page's time in seconds.
 * @typedef {{at: number, rates: Map<number, Record<string, number>>}} Moment
 *
 * @typedef {{rates: Map<number, Record<string, number>>, moments: Moment[], dropping: Set<number>}} Traffic
 */

/** @param {any} answer the one to `counters` */
function flat(answer) {
    return {
        time: answer.time,
        counters: answer.counters.map((/** @type {any} */ row) => ({
            ...row,
            trouble: [...Object.values(row.drops), ...Object.keys(LOSSES).map((loss) => row[loss])].reduce((sum, count) => sum + count, 0),
        })),
    };
}

/**
 * The server says nothing while counts stay the same. So frames that come after a still time have come since the last
 * time when it looked.
 * @param {{before: any, now: any}} answers
 * @param {boolean} wasStill
 */
function sinceLook({ before, now }, wasStill) {
    const last = now.time - EVERY_SECONDS;
    return { before: before && wasStill && last > before.time ? { ...before, time: last } : before, now };
}

/**
 * @param {any} answer the newest one to `counters`
 * @returns {Traffic}
 */
export function useTraffic(answer) {
    const answers = useTwoAnswers(answer);
    const held = useRef({
        answer: /** @type {any} */ (null), before: /** @type {any} */ (null), wasStill: false,
        since: /** @type {Map<number, number>} */ (new Map()),
        traffic: /** @type {Traffic} */ ({ rates: new Map(), moments: [], dropping: new Set() }),
    }).current;
    if (answer && answer !== held.answer) {
        const flatNow = flat(answer);
        const now = performance.now();
        const rates = ratesOf(sinceLook({ before: answers.before && held.before, now: flatNow }, held.wasStill), "counters", "port", RATES);
        rates.forEach((rate, port) => rate.trouble > 0 && held.since.set(port, now));
        held.wasStill = rates.size > 0 && [...rates.values()].every((rate) => RATES.every((count) => rate[count] === 0));
        const moments = [...held.traffic.moments, { at: now / 1000, rates }];
        held.traffic = {
            rates,
            moments: moments.filter((moment) => moment.at > now / 1000 - HISTORY_SECONDS - 2),
            dropping: new Set([...held.since].filter(([, at]) => now - at < DROPPING_MILLISECONDS).map(([port]) => port)),
        };
        held.answer = answer;
        held.before = flatNow;
    }
    return held.traffic;
}

/** The counters from which each device's counts are taken off, since the page was opened or somebody said "since now". */
const beginnings = /** @type {Map<string, {answer: any, at: Date}>} */ (new Map());

/**
 * Where counting began; a device that was started anew begins anew.
 * @param {string} device
 * @param {any} answer the newest one to `counters`
 * @param {boolean} [isNow] begin now
 */
export function beginningOf(device, answer, isNow = false) {
    const old = beginnings.get(device);
    if (answer && (isNow || !old || answer.time < old.answer.time)) {
        beginnings.set(device, { answer, at: new Date() });
    }
    return beginnings.get(device) ?? null;
}

/**
 * What was counted since; a count that was cleared meanwhile counts whole.
 * @param {number} now
 * @param {number} [before]
 */
export function since(now, before = 0) {
    return now < before ? now : now - before;
}
