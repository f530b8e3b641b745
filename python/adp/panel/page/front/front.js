// The view "Front".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Front({ device }) {
    return html`<h2>Front of ${device.name}</h2>`;
}
