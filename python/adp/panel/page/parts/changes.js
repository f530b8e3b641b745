// Which rows of a table are new or gone, and which of their values have changed, in the last seconds.
import { visit } from "./slices.js";

/** @typedef {import("./table").Column} Column */
/**
 * What is known of a row. `at` says when each watched value has changed, if one has; `gone` when the row has gone.
 * @typedef {{row: any, values: any[], at: number[] | null, since: number, gone: number | null}} Known
 */

export const MARKED_MILLISECONDS = 4000;

/** @param {number | null | undefined} at @param {number} now */
function isRecent(at, now) {
    return at !== null && at !== undefined && now - at < MARKED_MILLISECONDS;
}

/**
 * @param {any[]} values
 * @param {Known} old
 * @param {number} now
 */
function changesOf(values, old, now) {
    let at = old.at;
    for (let index = 0; index < values.length; index++) {
        if (values[index] !== old.values[index]) {
            at = at === old.at ? [...(at ?? values.map(() => -Infinity))] : at;
            /** @type {number[]} */ (at)[index] = now;
        }
    }
    return at;
}

export class Changes {
    /** @type {Map<any, Known> | null} */
    #known = null;
    /** @type {Known[]} */
    #gone = [];
    #newest = -Infinity;

    /**
     * Takes the rows of a new answer. Those of the first answer are not marked.
     * @param {any[]} rows
     * @param {(row: any) => any} keyOf
     * @param {Column[]} watched
     * @param {number} now
     * @returns {Generator<void, void>}
     */
    *take(rows, keyOf, watched, now) {
        const before = this.#known;
        /** @type {Map<any, Known>} */
        const known = new Map();
        yield* visit(rows, (row) => {
            const key = keyOf(row);
            const old = before?.get(key);
            const values = watched.map((column) => column.value(row));
            const at = old ? changesOf(values, old, now) : null;
            this.#newest = (old ? at !== old.at : before) ? now : this.#newest;
            known.set(key, { row, values, at, since: old ? old.since : before ? now : -Infinity, gone: null });
        });
        const gone = this.#gone.filter((old) => isRecent(old.gone, now) && !known.has(keyOf(old.row)));
        yield* visit(before ?? [], ([key, old]) => {
            if (!known.has(key)) {
                gone.push({ ...old, gone: now });
                this.#newest = now;
            }
        });
        this.#known = known;
        this.#gone = gone;
    }

    /** @param {number} now */
    hasOldGone(now) {
        return this.#gone.some((old) => !isRecent(old.gone, now));
    }

    /**
     * The rows that have just gone. Older ones are forgotten.
     * @param {number} now
     * @returns {any[]}
     */
    takeGone(now) {
        this.#gone = this.#gone.filter((old) => isRecent(old.gone, now));
        return this.#gone.map((old) => old.row);
    }

    /** When the last mark goes away. */
    get end() {
        return this.#newest + MARKED_MILLISECONDS;
    }

    /**
     * The marks of a row; `changed` has the numbers of its values among the watched columns.
     * @param {any} key
     * @param {number} now
     */
    marksOf(key, now) {
        const known = this.#known?.get(key);
        const changed = (known?.at ?? []).flatMap((at, index) => (isRecent(at, now) ? [index] : []));
        return { isNew: isRecent(known?.since, now), isGone: !known, changed };
    }
}
