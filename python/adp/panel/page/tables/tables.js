// The view "Tables": a list of the tables, and the one that the address names.
import { html } from "../vendor/preact.js";
import { addressOf } from "../use.js";
import { TABLES } from "./list.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Tables({ device, rest }) {
    const table = TABLES.find((each) => each.name === rest[0]) ?? TABLES[0];
    return html`
        <nav class="tables" aria-label="Tables">
            ${TABLES.map((each) => html`
                <a href=${addressOf("tables", device.name, each.name)}
                    aria-current=${each === table ? "page" : null}>${each.title}</a>
            `)}
        </nav>
        <h2>${table.title}</h2>
        <${table.show} key=${table.name} device=${device} rest=${rest.slice(1)} />
    `;
}
