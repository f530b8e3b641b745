// The table "VLANs".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Vlans({ device }) {
    return html`<p>${device.name}</p>`;
}
