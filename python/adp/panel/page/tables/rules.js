// The table "Rules".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Rules({ device }) {
    return html`<p>${device.name}</p>`;
}
