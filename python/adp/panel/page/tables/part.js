// A part of a view of tables: a heading, what is to be said in numbers, a table or how to make a row of it, commands.
import { html } from "../vendor/preact.js";
import { Command } from "../parts/command.js";
import { Table } from "../parts/table.js";

/** @typedef {import("../types").Device} Device */

/**
 * The command for an adpsh of the device that makes these calls.
 * @param {Device} device
 * @param {...string} lines
 */
export function adpsh(device, ...lines) {
    return `${device.adpsh} --map ${lines.map((line) => `'${line}'`).join(" ")}`;
}

/**
 * The table is there without rows, too, so that it knows which ones are new.
 * @param {{title: string, isOnly?: boolean, note?: any, commands?: string[], rows: any[], empty?: string,
 *     make?: string | null, [member: string]: any}} props
 *     the only part of a view has no heading; `empty` is said when there are no rows, and `make` is a command that
 *     makes one; the rest is for the table
 */
export function Part({ title, isOnly = false, note, commands = [], rows, empty = "None", make, ...table }) {
    return html`
        <section class="part" aria-label=${title}>
            ${!isOnly && html`<h3>${title}</h3>`}
            ${note && html`<div class="note">${note}</div>`}
            <div hidden=${rows.length === 0}><${Table} caption=${title} ...${table} rows=${rows} empty="No row is chosen." /></div>
            ${rows.length === 0 && html`<p class="none">${empty} ${make && html`<${Command} text=${make} />`}</p>`}
            ${commands.length > 0 && html`
                <p class="commands">${commands.map((text) => html`<${Command} key=${text} text=${text} />`)}</p>
            `}
        </section>
    `;
}

/**
 * A choice of what is shown.
 * @param {{text: string, isOn: boolean, onChange: (isOn: boolean) => void}} props
 */
export function Choice({ text, isOn, onChange }) {
    const changed = (/** @type {any} */ event) => onChange(event.target.checked);
    return html`
        <label>
            <input type="checkbox" checked=${isOn} onChange=${changed} />
            ${text}
        </label>
    `;
}
