// The view "Explain".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Explain({ device }) {
    return html`<h2>Explain of ${device.name}</h2>`;
}
