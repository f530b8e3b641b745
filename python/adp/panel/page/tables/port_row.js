// Ports as a row of cells, in which those that are meant stand out.
import { html } from "../vendor/preact.js";
import { portList, portName } from "../parts/ports.js";

/** @param {{ports: number[], all: number[]}} props both in ascending order */
export function PortRow({ ports, all }) {
    const meant = new Set(ports);
    return html`
        <span class="port-row" role="img" aria-label=${`Ports ${portList(ports)}`}>
            ${all.map((port) => (meant.has(port)
                ? html`<span key=${port} class="in">${portName(port)}</span>`
                : html`<span key=${port}>·</span>`))}
        </span>
    `;
}
