// The view "Calls".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Calls({ device }) {
    return html`<h2>Calls of ${device.name}</h2>`;
}
