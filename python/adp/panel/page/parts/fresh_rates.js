// Counts per second that become 0 when nothing is counted any more.
import { useEffect, useMemo, useState } from "../vendor/preact.js";
import { ratesOf } from "../rates.js";
import { useTwoAnswers } from "../use.js";

/**
 * What is counted per second, a row each, by the row's key.
 * @typedef {Map<any, Record<string, number>>} Rates
 */

/** After so many readings without a new answer nothing has been counted. */
const QUIET_READINGS = 2.5;

/**
 * The rates of a table; nothing until there are two answers. The server sends an answer only when it has changed: what
 * one that comes late has more was counted since the reading before it.
 * @param {any} answer with the device's `time`
 * @param {string} table the member that has the rows
 * @param {string} key the member that names a row
 * @param {string[]} counts
 * @param {number} [every] seconds between readings
 * @returns {Rates}
 */
export function useRates(answer, table, key, counts, every = 1) {
    const { before, now } = useTwoAnswers(answer);
    const [quiet, setQuiet] = useState(/** @type {any} */ (null));
    useEffect(() => {
        const timer = setTimeout(() => setQuiet(answer), QUIET_READINGS * every * 1000);
        return () => clearTimeout(timer);
    }, [answer]);
    return useMemo(() => {
        if (now && now === quiet) {
            const zeros = Object.fromEntries(counts.map((count) => [count, 0]));
            return new Map(now[table].map((/** @type {any} */ row) => [row[key], zeros]));
        }
        const isLate = before && before === quiet && now.time > before.time;
        const since = isLate ? { ...before, time: Math.max(before.time, now.time - every) } : before;
        return ratesOf({ before: since, now }, table, key, counts);
    }, [now, quiet]);
}
