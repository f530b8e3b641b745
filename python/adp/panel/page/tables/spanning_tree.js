// The table "Spanning tree".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function SpanningTree({ device }) {
    return html`<p>${device.name}</p>`;
}
