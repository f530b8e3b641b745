// The table "Meters".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Meters({ device }) {
    return html`<p>${device.name}</p>`;
}
