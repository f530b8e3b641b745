// The table "Multicast".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Multicast({ device }) {
    return html`<p>${device.name}</p>`;
}
