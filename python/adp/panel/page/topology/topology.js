// The view "Topology".
import { html } from "../vendor/preact.js";

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Topology({ device }) {
    return html`<h2>Topology of ${device.name}</h2>`;
}
