// The view "Tables".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Tables({ device }) {
    return html`<h2>Tables of ${device.name}</h2>`;
}
