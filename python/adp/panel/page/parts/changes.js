// Which rows of a table are new, and which of their values have changed, in the last seconds.
import { useRef } from "../vendor/preact.js";

const MARKED_MILLISECONDS = 3000;

/**
 * @param {any[]} rows
 * @param {(row: any) => any} keyOf
 * @param {import("./table").Column[]} columns whose values are watched
 * @returns {{isNew: (row: any) => boolean, isChanged: (row: any, column: import("./table").Column) => boolean}}
 */
export function useChanges(rows, keyOf, columns) {
    const held = useRef({ rows: /** @type {any} */ (null), known: /** @type {Map<any, any>} */ (new Map()) });
    const now = performance.now();
    if (rows !== held.current.rows) {
        const isFirst = held.current.rows === null;
        const known = new Map();
        for (const row of rows) {
            const old = held.current.known.get(keyOf(row));
            const values = columns.map((column) => column.value(row));
            const at = columns.map((_, index) => (old && old.values[index] !== values[index] ? now : old?.at[index] ?? -Infinity));
            known.set(keyOf(row), { values, at, since: old?.since ?? (isFirst ? -Infinity : now) });
        }
        held.current = { rows, known };
    }
    const { known } = held.current;
    return {
        isNew: (row) => now - known.get(keyOf(row)).since < MARKED_MILLISECONDS,
        isChanged: (row, column) => now - known.get(keyOf(row)).at[columns.indexOf(column)] < MARKED_MILLISECONDS,
    };
}
