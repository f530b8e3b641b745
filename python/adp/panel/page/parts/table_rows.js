// The rows of a table, with the marks at what has changed. Rows that stay as they were are not made again.
import { html, useRef } from "../vendor/preact.js";

/** @typedef {import("./table").Column} Column */
/** @typedef {ReturnType<import("./changes").Changes["marksOf"]>} Marks */
/** @typedef {{row: any, columns: Column[], number: number, marks: string, element: any}} Made */

/** @param {Column} column */
export function classOf(column) {
    return `${column.isNumber ? " number" : ""}${column.isLetter ? " letter" : ""}`;
}

/**
 * A sign, and what it means.
 * @param {string} sign
 * @param {string} text
 */
function signOf(sign, text) {
    return html`
        <span class="sign" title=${text}>
            <span aria-hidden="true">${sign}</span><span class="unseen">${text}</span>
        </span>
    `;
}

/**
 * @param {any} row
 * @param {Column} column
 * @param {boolean} isChanged
 * @param {any} sign of the whole row
 */
function cellOf(row, column, isChanged, sign) {
    const names = `${column.mark?.(row) ?? ""}${classOf(column)}${isChanged ? " changed" : ""}`;
    const label = column.label && `${column.label(row)}${isChanged ? ", just changed" : ""}`;
    const seen = column.show ? column.show(row) : column.value(row);
    const inside = [seen, isChanged && signOf("•", "just changed"), sign];
    return column.isHead
        ? html`<th scope="row" class=${names} aria-label=${label} title=${label}>${inside}</th>`
        : html`<td class=${names} aria-label=${label} title=${label}>${inside}</td>`;
}

/**
 * @param {any} key
 * @param {any} row
 * @param {Column[]} columns
 * @param {number} number of the row in the whole table
 * @param {Marks} marks
 */
function rowOf(key, row, columns, number, marks) {
    const watched = columns.filter((column) => column.isWatched);
    const sign = marks.isGone ? signOf("−", "gone") : marks.isNew && signOf("+", "new");
    const seen = columns.filter((column) => !column.isHidden);
    const isChanged = (/** @type {Column} */ column) => marks.changed.includes(watched.indexOf(column));
    return html`
        <tr key=${key} aria-rowindex=${number} class=${marks.isGone ? "gone-row" : marks.isNew ? "new-row" : null}>
            ${seen.map((column, at) => cellOf(row, column, isChanged(column), at === 0 && sign))}
        </tr>
    `;
}

/**
 * @param {{columns: Column[], rows: any[], keyOf: (row: any) => any, changes: import("./changes").Changes,
 *     first: number}} props `first` is the number of the first row in the whole table
 */
export function Rows({ columns, rows, keyOf, changes, first }) {
    const made = useRef(/** @type {Map<any, Made>} */ (new Map()));
    const now = performance.now();
    /** @type {Map<any, Made>} */
    const fresh = new Map();
    rows.forEach((row, index) => {
        const key = keyOf(row);
        const number = first + index + 2; // the head is the first row
        const marks = changes.marksOf(key, now);
        const text = JSON.stringify(marks);
        const old = made.current.get(key);
        const isSame = old && old.row === row && old.columns === columns && old.number === number && old.marks === text;
        fresh.set(key, isSame
            ? old
            : { row, columns, number, marks: text, element: rowOf(key, row, columns, number, marks) });
    });
    made.current = fresh;
    return html`<tbody class="rows">${[...fresh.values()].map(({ element }) => element)}</tbody>`;
}
