// The table "Storm limits".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Storm({ device }) {
    return html`<p>${device.name}</p>`;
}
