// A part of a view of tables: a heading, what is to be said in numbers, a table or how to make a row of it, commands.
import { html } from "../vendor/preact.js";
import { Command, CopyButton } from "../parts/command.js";
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
 * @param {{title: string, note?: any, commands?: string[], rows: any[], empty: string, make?: string | null,
 *     [member: string]: any}} props
 *     `empty` is said when there are no rows, and `make` is a command that makes one; the rest is for the table
 */
export function Part({ title, note = null, commands = [], rows, empty, make = null, ...table }) {
    return html`
        <section class="part" aria-label=${title}>
            <h3>${title}</h3>
            ${note && html`<div class="note">${note}</div>`}
            ${rows.length > 0
                ? html`<${Table} caption=${title} ...${table} rows=${rows} empty="No row is chosen." />`
                : html`<p class="none">${empty} ${make && html`<${Command} text=${make} />`}</p>`}
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
    return html`
        <label><input type="checkbox" checked=${isOn} onChange=${(/** @type {any} */ event) => onChange(event.target.checked)} />
            ${text}</label>
    `;
}

/**
 * The column with a command for each row.
 * @param {(row: any) => string} commandOf
 * @returns {import("../parts/table").Column}
 */
export function commandColumn(commandOf) {
    return {
        name: "command",
        title: "Command",
        value: () => null,
        text: () => "",
        show: (row) => html`<${CopyButton} text=${commandOf(row)} />`,
    };
}
