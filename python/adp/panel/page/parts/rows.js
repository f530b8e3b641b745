// The rows that a table shows: searched and sorted, with what has changed in them. Many rows are worked on in slices.
import { useEffect, useRef, useState } from "../vendor/preact.js";
import { Changes } from "./changes.js";
import { atOnce, inSlices, visit } from "./slices.js";

/** @typedef {import("./table").Column} Column */
/** @typedef {{name: string, isUp: boolean}} Sort */
/**
 * What a table is to show, and what it has made of it: `shown` are the rows in their order, with those that have just
 * gone, `longest` the longest text of each column.
 * @typedef {{rows: any[], columns: Column[], keyOf: (row: any) => any, keep: ((row: any) => boolean) | null,
 *     words: string, sort: Sort}} Wanted
 * @typedef {Wanted & {shown: any[], count: number, longest: string[]}} Prepared
 */

/** Up to so many rows are worked on at once. */
const FEW = 400;
const TICK_MILLISECONDS = 500;

/**
 * What is searched and seen of a value.
 * @param {Column} column
 * @param {any} row
 */
export function textOf(column, row) {
    return column.text ? column.text(row) : String(column.value(row) ?? "");
}

/**
 * A value by which text with numbers sorts as people expect: 2 before 10.
 * @param {any} value
 */
function sortKey(value) {
    return typeof value === "string"
        ? value.toLowerCase().replace(/\d+/g, (digits) => digits.padStart(12, "0"))
        : value;
}

/**
 * Numbers, then texts, then what has no value.
 * @param {any} key
 */
function rank(key) {
    return key === null || key === undefined ? 2 : typeof key === "string" ? 1 : 0;
}

/** @param {any} a @param {any} b */
function compare(a, b) {
    return rank(a) - rank(b) || (a < b ? -1 : a > b ? 1 : 0);
}

/**
 * @param {Wanted} wanted
 * @returns {(row: any) => boolean}
 */
function filterOf({ columns, keep, words }) {
    const searched = words.toLowerCase().split(/\s+/).filter((word) => word);
    return (row) => {
        if (keep && !keep(row)) {
            return false;
        }
        if (searched.length === 0) {
            return true;
        }
        const text = columns.map((column) => textOf(column, row)).join(" ").toLowerCase();
        return searched.every((word) => text.includes(word));
    };
}

/**
 * @param {Changes} changes
 * @param {Wanted} wanted
 * @param {any[] | null} before the rows of the last time
 * @returns {Generator<void, Prepared>}
 */
function* prepare(changes, wanted, before) {
    const { rows, columns, keyOf, sort } = wanted;
    const now = performance.now();
    if (rows !== before) {
        yield* changes.take(rows, keyOf, columns.filter((column) => column.isWatched), now);
    }
    const isShown = filterOf(wanted);
    const column = columns.find((each) => each.name === sort.name) ?? columns[0];
    /** @type {{row: any, key: any}[]} */
    const found = [];
    const longest = columns.map(() => "");
    yield* visit(rows, (row) => {
        if (isShown(row)) {
            found.push({ row, key: sortKey(column.value(row)) });
            columns.forEach((each, index) => {
                const text = textOf(each, row);
                longest[index] = text.length > longest[index].length ? text : longest[index];
            });
        }
    });
    const count = found.length;
    const gone = changes.takeGone(now).filter(isShown);
    found.push(...gone.map((row) => ({ row, key: sortKey(column.value(row)) })));
    yield;
    found.sort(sort.isUp ? (a, b) => compare(a.key, b.key) : (a, b) => compare(b.key, a.key));
    yield;
    return { ...wanted, shown: found.map(({ row }) => row), count, longest };
}

/**
 * @param {Wanted} wanted
 * @param {Prepared | null} prepared
 */
function isSame(wanted, prepared) {
    return prepared && wanted.rows === prepared.rows && wanted.keep === prepared.keep &&
        wanted.words === prepared.words && wanted.sort === prepared.sort &&
        wanted.columns.length === prepared.columns.length;
}

/**
 * The rows, prepared; many new ones come some moments later, with the columns that belong to them.
 * @param {Wanted} wanted
 * @returns {{prepared: Prepared | null, changes: Changes}}
 */
export function useRows(wanted) {
    const held = useRef({ changes: new Changes(), prepared: /** @type {Prepared | null} */ (null), isBusy: false });
    const [, setTurn] = useState(0);
    const state = held.current;
    const { changes } = state;
    const isDue = !isSame(wanted, state.prepared) || changes.hasOldGone(performance.now());
    const again = () => setTurn((turn) => turn + 1);
    if (isDue && !state.isBusy && wanted.rows.length <= FEW) {
        state.prepared = atOnce(prepare(changes, wanted, state.prepared?.rows ?? null));
    }
    useEffect(() => {
        if (isDue && !state.isBusy && wanted.rows.length > FEW) {
            state.isBusy = true;
            inSlices(prepare(changes, wanted, state.prepared?.rows ?? null), (prepared) => {
                state.prepared = prepared;
                state.isBusy = false;
                again();
            });
        }
    });
    useEffect(() => {
        if (performance.now() < changes.end) {
            const timer = setTimeout(again, TICK_MILLISECONDS);
            return () => clearTimeout(timer);
        }
    });
    return { prepared: state.prepared, changes };
}
