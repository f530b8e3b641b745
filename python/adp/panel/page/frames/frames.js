// The view "Frames".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Frames({ device }) {
    return html`<h2>Frames of ${device.name}</h2>`;
}
