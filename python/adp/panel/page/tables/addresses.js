// The table "Addresses".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Addresses({ device }) {
    return html`<p>${device.name}</p>`;
}
