// A table: sorted by the column that one chooses.
import { html, useMemo, useState } from "../vendor/preact.js";
import { useChanges } from "./changes.js";

/**
 * A column. `value` is what rows are sorted and searched by; `show` is what is seen, if it is another.
 * @typedef {{name: string, title: string, value: (row: any) => any, show?: (row: any) => any, isNumber?: boolean,
 *     isWatched?: boolean}} Column
 * A watched column marks a value that has changed in the last seconds; a new row is marked in any case.
 */

/** @param {{columns: Column[], sort: {name: string, isUp: boolean}, onSort: (name: string) => void}} props */
function Head({ columns, sort, onSort }) {
    return html`
        <thead><tr>
            ${columns.map((column) => html`
                <th scope="col" class=${column.isNumber ? "number" : null}
                    aria-sort=${sort.name === column.name ? (sort.isUp ? "ascending" : "descending") : null}>
                    <button type="button" onClick=${() => onSort(column.name)}>${column.title}</button>
                </th>
            `)}
        </tr></thead>
    `;
}

/** @param {any} a @param {any} b */
function compare(a, b) {
    return typeof a === "number" && typeof b === "number" ? a - b : String(a).localeCompare(String(b), "en", { numeric: true });
}

/**
 * @param {{caption: string, columns: Column[], rows: any[], keyOf: (row: any) => any, empty?: string}} props
 *     `caption` says to a screen reader what the rows are; `empty` is shown when there are none
 */
export function Table({ caption, columns, rows, keyOf, empty = "None" }) {
    const [sort, setSort] = useState({ name: "", isUp: true });
    const changes = useChanges(rows, keyOf, columns.filter((column) => column.isWatched));
    const column = columns.find((each) => each.name === sort.name);
    const sorted = useMemo(
        () => (column ? [...rows].sort((a, b) => (sort.isUp ? 1 : -1) * compare(column.value(a), column.value(b))) : rows),
        [rows, sort.name, sort.isUp],
    );
    /** @param {string} name */
    const onSort = (name) => setSort((old) => ({ name, isUp: old.name === name ? !old.isUp : true }));
    return html`
        <div class="scroll" tabindex="0" role="region" aria-label=${caption}>
            <table>
                <caption>${caption}</caption>
                <${Head} columns=${columns} sort=${sort} onSort=${onSort} />
                <tbody>
                    ${sorted.map((row) => html`
                        <tr key=${keyOf(row)} class=${changes.isNew(row) ? "new" : null}>
                            ${columns.map((each) => html`
                                <td class=${each.isNumber ? "number" : null}>
                                    ${each.show ? each.show(row) : each.value(row)}
                                    ${changes.isChanged(row, each) && html`<span class="changed" title="has just changed">•</span>`}
                                </td>
                            `)}
                        </tr>
                    `)}
                    ${sorted.length === 0 && html`<tr><td colspan=${columns.length}>${empty}</td></tr>`}
                </tbody>
            </table>
        </div>
    `;
}
