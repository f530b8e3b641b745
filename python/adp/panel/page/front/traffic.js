// What the counters say over time: rates now and in the last minute, ports that drop, and counts since a moment.
import { useEffect, useMemo, useRef, useState } from "../vendor/preact.js";
import { useTwoAnswers } from "../use.js";
import { ratesOf } from "../rates.js";

/** How far back the plots show rates. */
export const HISTORY_SECONDS = 60;
const DROPPING_SECONDS = 3;
const TICK_MILLISECONDS = 1000;

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
 * Counts per second, by port.
 * @typedef {Map<number, Record<string, number>>} Rates
 *
 * Rates of a moment: `at` is the page's time in seconds.
 * @typedef {{at: number, rates: Rates}} Moment
 *
 * `dropping` has the ports that drop or lose frames now.
 * @typedef {{rates: Rates, moments: Moment[], dropping: Set<number>, now: number}} Traffic
 */

/** @param {number[]} counts */
const sum = (counts) => counts.reduce((all, count) => all + count, 0);

/** @param {any} answer the one to `counters` */
function flat(answer) {
    return {
        time: answer.time,
        counters: answer.counters.map((/** @type {any} */ row) => ({
            ...row,
            trouble: sum([...Object.values(row.drops), ...Object.keys(LOSSES).map((loss) => row[loss])]),
        })),
    };
}

/**
 * The server says nothing while counts stay the same. So frames that come after a still time have come since the last
 * time when it looked.
 * @param {{before: any, now: any}} answers
 * @param {boolean} wasStill
 */
export function sinceLook({ before, now }, wasStill) {
    const last = now.time - EVERY_SECONDS;
    return { before: before && wasStill && last > before.time ? { ...before, time: last } : before, now };
}

/** Draws again from time to time: what is marked or plotted passes without a new answer, too. */
function useTick() {
    const [, setCount] = useState(0);
    useEffect(() => {
        const timer = setInterval(() => setCount((count) => count + 1), TICK_MILLISECONDS);
        return () => clearInterval(timer);
    }, []);
}

/**
 * @param {any} answer the newest one to `counters`
 * @returns {Traffic}
 */
export function useTraffic(answer) {
    const answers = useTwoAnswers(useMemo(() => answer && flat(answer), [answer]));
    const held = useRef({
        answer: /** @type {any} */ (null),
        rates: /** @type {Rates} */ (new Map()),
        moments: /** @type {Moment[]} */ ([]),
        troubled: /** @type {Map<number, number>} */ (new Map()),
        isStill: false,
    }).current;
    useTick();
    const now = performance.now() / 1000;
    if (answers.now && answers.now !== held.answer) {
        held.answer = answers.now;
        held.rates = ratesOf(sinceLook(answers, held.isStill), "counters", "port", RATES);
        held.rates.forEach((rate, port) => rate.trouble > 0 && held.troubled.set(port, now));
        const all = [...held.rates.values()];
        held.isStill = all.length > 0 && all.every((rate) => RATES.every((count) => rate[count] === 0));
        held.moments = held.moments.filter((moment) => moment.at > now - HISTORY_SECONDS - 2);
        held.moments.push({ at: now, rates: held.rates });
    }
    return {
        rates: held.rates,
        moments: held.isStill ? [...held.moments, { at: now, rates: held.rates }] : held.moments,
        dropping: new Set([...held.troubled].filter(([, at]) => now - at < DROPPING_SECONDS).map(([port]) => port)),
        now,
    };
}

/** What each device's counts are taken off: its counters when the page was opened, or when one said "since now". */
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
