// A table: sorted by the column that one chooses, searched, with marks at what has just changed. A long one is scrolled
// in its frame, and only the rows in sight are in the document.
import { html, useLayoutEffect, useRef, useState } from "../vendor/preact.js";
import { useRows } from "./rows.js";
import { Rows, classOf } from "./table_rows.js";
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
 * @typedef {{name: string, title: string, value: (row: any) => any, show?: (row: any) => any,
 *     text?: (row: any) => string, label?: (row: any) => string, mark?: (row: any) => string, isNumber?: boolean,
 *     isWatched?: boolean, isHead?: boolean, about?: string, isLetter?: boolean, isHidden?: boolean}} Column
 */
/** @typedef {import("./rows").Sort} Sort */

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

/**
 * A hidden row with the longest texts, so that columns keep their width while other rows come into sight.
 * @param {{texts: string[]}} props
 */
function Widths({ texts }) {
    const cells = texts.map((text) => html`<td><div>${text}</div></td>`);
    return html`<tbody aria-hidden="true"><tr class="widths">${cells}</tr></tbody>`;
}

/** @param {{rows: number, height: number, columns: number}} props */
function Space({ rows, height, columns }) {
    const cell = html`<td colspan=${columns} style=${{ height: `${rows * height}px` }}></td>`;
    return html`<tbody aria-hidden="true"><tr class="space">${cell}</tr></tbody>`;
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
 * If what had the focus is scrolled out of sight, the frame takes it, so that keys go on scrolling.
 * @param {{current: HTMLElement | null}} frame
 * @returns {(event: any) => void} what is to be told of the focus
 */
function useFocus(frame) {
    const held = useRef(/** @type {Element | null} */ (null));
    useLayoutEffect(() => {
        if (held.current && !held.current.isConnected && document.activeElement === document.body) {
            frame.current?.focus({ preventScroll: true });
            held.current = null;
        }
    });
    return (event) => {
        held.current = event.target;
    };
}

/**
 * @param {{caption: string, columns: Column[], rows: any[], keyOf: (row: any) => any, empty?: string, search?: string,
 *     keep?: ((row: any) => boolean) | null, sort?: Sort}} props
 *     `caption` says to a screen reader what the rows are; `keyOf` gives each row another key; `empty` is shown when
 *     there are none; `search` is the label of a field to search in; only rows that `keep` takes are shown; `sort` is
 *     the sorting at first, by the first column if it is not given
 */
export function Table({ caption, columns, rows, keyOf, empty = "None", search, keep = null, sort: firstSort }) {
    const [sort, setSort] = useState(firstSort ?? { name: columns[0].name, isUp: true });
    const [words, setWords] = useState("");
    const { prepared, changes } = useRows({ rows, columns, keyOf, keep, words, sort });
    const shown = prepared?.shown ?? [];
    const { frame, look, isWhole, first, last, height } = useWindow(shown.length);
    const onFocus = useFocus(frame);
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
            <div class=${isWhole ? "scroll" : "scroll long"} tabindex="0" role="region" aria-label=${caption}
                ref=${frame} onScroll=${look} onFocusCapture=${onFocus}>
                <table aria-rowcount=${shown.length + 1}>
                    <caption><span>
                        <span class="caption-text">${caption}: </span><span class="rows-shown">${count}</span>
                    </span></caption>
                    <${Head} columns=${seen} sort=${sort} onSort=${onSort} />
                    ${!isWhole && html`<${Widths} texts=${longest} />`}
                    ${!isWhole && html`<${Space} rows=${first} height=${height} columns=${seen.length} />`}
                    <${Rows} columns=${all} rows=${shown.slice(first, last)} keyOf=${keyOf} changes=${changes}
                        first=${first} />
                    ${!isWhole && html`
                        <${Space} rows=${shown.length - last} height=${height} columns=${seen.length} />
                    `}
                    ${shown.length === 0 && html`
                        <tbody><tr><td colspan=${seen.length}>${prepared ? empty : "Reading ..."}</td></tr></tbody>
                    `}
                </table>
            </div>
        </div>
    `;
}
