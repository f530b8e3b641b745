// A table: sorted by the column that one chooses, searched, with marks at what has just changed. A long one is scrolled in
// its frame, and only the rows in sight are in the document.
import { html, useLayoutEffect, useRef, useState } from "../vendor/preact.js";
import { useRows } from "./rows.js";
import { useWindow } from "./window.js";

/**
 * A column.
 *   value      what rows are sorted by: a number, a text, or null; if the column is watched, a new value is marked
 *   show       what is seen, if it is not the value
 *   text       what a search looks at, if it is not the value
 *   label      the cell's name for a screen reader, if what is seen does not say it
 *   mark       a class of the cell
 *   isNumber   aligned to the right
 *   isWatched  a value that has changed in the last seconds is marked (a new row is in any case)
 *   isHead     the cells name their rows
 *   about      the column's name in full
 *   isLetter   the cells are letters, narrow and centred
 *   isHidden   the column is not seen now
 * The columns of a table stay the same ones, in the same order.
 * @typedef {{name: string, title: string, value: (row: any) => any, show?: (row: any) => any, text?: (row: any) => string,
 *     label?: (row: any) => string, mark?: (row: any) => string, isNumber?: boolean, isWatched?: boolean, isHead?: boolean,
 *     about?: string, isLetter?: boolean, isHidden?: boolean}} Column
 */
/** @typedef {import("./rows").Sort} Sort */

/** @param {Column} column */
function classOf(column) {
    return `${column.isNumber ? " number" : ""}${column.isLetter ? " letter" : ""}`;
}

/** @param {{columns: Column[], sort: Sort, onSort: (name: string) => void}} props */
function Head({ columns, sort, onSort }) {
    return html`
        <thead><tr aria-rowindex="1">
            ${columns.map((column) => html`
                <th scope="col" class=${classOf(column)}
                    aria-sort=${sort.name === column.name ? (sort.isUp ? "ascending" : "descending") : null}>
                    <button type="button" onClick=${() => onSort(column.name)} title=${column.about}
                        aria-label=${column.about}>${column.title}</button>
                </th>
            `)}
        </tr></thead>
    `;
}

/** @param {{text: string, sign: string}} props a sign, and what it means */
function Sign({ text, sign }) {
    return html`<span class="sign" title=${text}><span aria-hidden="true">${sign}</span><span class="unseen">${text}</span></span>`;
}

/** @param {{row: any, column: Column, marks: any, watched: Column[], isFirst: boolean}} props */
function Cell({ row, column, marks, watched, isFirst }) {
    const isChanged = column.isWatched && marks.isChanged(watched.indexOf(column));
    const names = `${column.mark?.(row) ?? ""}${classOf(column)}${isChanged ? " changed" : ""}`;
    const label = column.label && `${column.label(row)}${isChanged ? ", just changed" : ""}`;
    return html`
        <${column.isHead ? "th" : "td"} ...${column.isHead ? { scope: "row" } : {}} class=${names}
            aria-label=${label} title=${label}>
            ${column.show ? column.show(row) : column.value(row)}
            ${isChanged && html`<${Sign} text="just changed" sign="•" />`}
            ${isFirst && marks.isNew && !marks.isGone && html`<${Sign} text="new" sign="+" />`}
            ${isFirst && marks.isGone && html`<${Sign} text="gone" sign="−" />`}
        <//>
    `;
}

/**
 * A hidden row with the longest texts, so that columns keep their width while other rows come into sight.
 * @param {{texts: string[]}} props
 */
function Widths({ texts }) {
    return html`<tbody aria-hidden="true"><tr class="widths">${texts.map((text) => html`<td><div>${text}</div></td>`)}</tr></tbody>`;
}

/** @param {{rows: number, height: number, columns: number}} props */
function Space({ rows, height, columns }) {
    return html`
        <tbody aria-hidden="true"><tr class="space"><td colspan=${columns} style=${{ height: `${rows * height}px` }}></td></tr></tbody>
    `;
}

/**
 * @param {{columns: Column[], rows: any[], keyOf: (row: any) => any, changes: import("./changes").Changes, first: number}} props
 *     `first` is the number of the first row in the whole table
 */
function Rows({ columns, rows, keyOf, changes, first }) {
    const now = performance.now();
    const watched = columns.filter((column) => column.isWatched);
    const seen = columns.filter((column) => !column.isHidden);
    return html`
        <tbody class="rows">
            ${rows.map((row, index) => {
                const marks = changes.marksOf(keyOf(row), now);
                return html`
                    <tr key=${keyOf(row)} aria-rowindex=${first + index + 2}
                        class=${marks.isGone ? "gone-row" : marks.isNew ? "new-row" : null}>
                        ${seen.map((column, at) => html`
                            <${Cell} row=${row} column=${column} marks=${marks} watched=${watched} isFirst=${at === 0} />
                        `)}
                    </tr>
                `;
            })}
        </tbody>
    `;
}

/** @param {{label: string, words: string, onSearch: (words: string) => void}} props */
function Search({ label, words, onSearch }) {
    return html`
        <label>${label}
            <input type="search" value=${words} autocomplete="off" spellcheck=${false}
                onInput=${(/** @type {any} */ event) => onSearch(event.target.value)} />
        </label>
    `;
}

/**
 * If the row that had the focus is scrolled out of sight, its frame takes it, so that keys go on scrolling.
 * @param {{current: HTMLElement | null}} frame
 */
function useFocus(frame) {
    const held = useRef(/** @type {Element | null} */ (null));
    useLayoutEffect(() => {
        if (held.current && !held.current.isConnected && document.activeElement === document.body) {
            frame.current?.focus({ preventScroll: true });
        }
        held.current = frame.current?.contains(document.activeElement) ? document.activeElement : null;
    });
}

/**
 * @param {{caption: string, columns: Column[], rows: any[], keyOf: (row: any) => any, empty?: string, search?: string,
 *     keep?: ((row: any) => boolean) | null, sort?: Sort}} props
 *     `caption` says to a screen reader what the rows are; `keyOf` gives each row another key; `empty` is shown when there
 *     are none; `search` is the label of a field to search in; only rows that `keep` takes are shown; `sort` is the sorting
 *     at first, by the first column if it is not given
 */
export function Table({ caption, columns, rows, keyOf, empty = "None", search, keep = null, sort: firstSort }) {
    const [sort, setSort] = useState(firstSort ?? { name: columns[0].name, isUp: true });
    const [words, setWords] = useState("");
    const { prepared, changes } = useRows({ rows, columns, keyOf, keep, words, sort });
    const shown = prepared?.shown ?? [];
    const { frame, look, isWhole, first, last, height } = useWindow(shown.length);
    useFocus(frame);
    /** @param {string} name */
    const onSort = (name) => setSort((old) => ({ name, isUp: old.name === name ? !old.isUp : true }));
    const all = prepared && prepared.rows !== rows ? prepared.columns : columns;
    const seen = all.filter((column) => !column.isHidden);
    const longest = prepared?.longest.filter((_, index) => !all[index].isHidden);
    const count = `${prepared?.count ?? 0} of ${prepared?.rows.length ?? 0} rows`;
    return html`
        <div class="table">
            ${search && html`<${Search} label=${search} words=${words} onSearch=${setWords} />`}
            <span class="unseen" role="status">${words && count}</span>
            <div class=${isWhole ? "scroll" : "scroll long"} tabindex="0" role="region" aria-label=${caption} ref=${frame}
                onScroll=${look}>
                <table aria-rowcount=${shown.length + 1}>
                    <caption><span>${caption}: <span class="rows-shown">${count}</span></span></caption>
                    <${Head} columns=${seen} sort=${sort} onSort=${onSort} />
                    ${!isWhole && html`<${Widths} texts=${longest} /><${Space} rows=${first} height=${height} columns=${seen.length} />`}
                    <${Rows} columns=${all} rows=${shown.slice(first, last)} keyOf=${keyOf} changes=${changes} first=${first} />
                    ${!isWhole && html`<${Space} rows=${shown.length - last} height=${height} columns=${seen.length} />`}
                    ${shown.length === 0 && html`<tbody><tr><td colspan=${seen.length}>${prepared ? empty : "Reading ..."}</td></tr></tbody>`}
                </table>
            </div>
        </div>
    `;
}
