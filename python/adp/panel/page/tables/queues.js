// The table "Queues".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Queues({ device }) {
    return html`<p>${device.name}</p>`;
}
