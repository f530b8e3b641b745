// The table "Trunks".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Trunks({ device }) {
    return html`<p>${device.name}</p>`;
}
