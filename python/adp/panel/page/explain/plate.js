// The device's ports as a small face plate: odd ports above even ones, the CPU port and fibre ports apart.
import { html } from "../vendor/preact.js";
import { portName } from "../parts/ports.js";

/** @typedef {{port: number, x: number, y: number, row: number}} Place */
/** @typedef {{pitch: number, size: number, high: number, width: number, height: number, places: Place[]}} Plate */

const WIDEST = 58;
const HIGHEST = 40;
const LOWEST = 27;
const EDGE = 8;
const GAP = 0.45;
const FIRST_FIBRE = 25;

/**
 * Where the ports are, for a width.
 * @param {number[]} ports
 * @param {number} width
 * @returns {Plate}
 */
export function plateOf(ports, width) {
    const users = ports.filter((port) => port > 0);
    const copper = users.filter((port) => port < FIRST_FIBRE);
    const columns = Math.ceil(copper.length / 2) + Math.ceil((users.length - copper.length) / 2) + 1 + 2 * GAP;
    const pitch = Math.min(WIDEST, (width - 2 * EDGE) / columns);
    const size = pitch - Math.max(2, pitch * 0.14);
    const high = Math.min(HIGHEST, Math.max(LOWEST, size * 0.86));
    /** @param {number} port */
    const place = (port) => {
        const isFibre = port >= FIRST_FIBRE;
        const column = port === 0 ? 0 : Math.floor((port + 1) / 2) + (isFibre ? 2 * GAP : GAP);
        const row = port === 0 || port % 2 === 0 ? 1 : 0;
        return { port, row, x: EDGE + column * pitch, y: EDGE + row * (high + 6) };
    };
    return { pitch, size, high, width: columns * pitch + 2 * EDGE, height: 2 * (high + EDGE) + 6, places: ports.map(place) };
}

/** @param {{x: number, y: number, width: number, height: number, isIngress: boolean}} props */
function Arrow({ x, y, width, height, isIngress }) {
    const middle = x + width / 2;
    return isIngress
        ? html`<path class="arrow" d=${`M${middle - 5} ${y + height - 12}h10l-5 8z`} />`
        : null;
}

/**
 * @param {{place: Place, plate: Plate, mark: {kind: string, mark: string, text: string}, isIngress: boolean,
 *     mirror: any, trunk: number | undefined}} props
 */
function Port({ place, plate, mark, isIngress, mirror, trunk }) {
    const { x, y, port } = place;
    const { size, high } = plate;
    const middle = x + size / 2;
    return html`
        <g class=${`port ${mark.kind} ${isIngress ? "ingress" : ""} ${mirror ? "mirror" : ""}`}>
            <title>port ${portName(port)}: ${isIngress ? "the frame comes in here; " : ""}${mark.text}</title>
            <rect x=${x} y=${y} width=${size} height=${high} rx="3" />
            <text class="number" x=${middle} y=${y + 11}>${portName(port)}</text>
            ${mark.kind === "lost" && html`<path class="cross" d=${`M${x + 3} ${y + 3}L${x + size - 3} ${y + high - 3}`} />`}
            ${isIngress
                ? html`<${Arrow} x=${x} y=${y} width=${size} height=${high} isIngress=${isIngress} />`
                : html`<text class="mark" x=${middle} y=${y + high - 5}>${mark.mark}${trunk === undefined ? "" : "t"}</text>`}
            ${mirror && html`<path class="diamond" d=${`M${x + size - 5} ${y - 5}l5 5l-5 5l-5 -5z`} />`}
        </g>
    `;
}

/**
 * @param {{plate: Plate, y: number, account: import("./account.js").Account,
 *     marks: ReturnType<typeof import("./account.js").marksOf>}} props
 */
export function PlateDrawing({ plate, y, account, marks }) {
    const mirrors = new Map(account.mirrors.map((row) => [row.port, row]));
    const trunks = new Map(account.ports.map((row) => [row.port, row.trunk]));
    return html`
        <g class="plate" transform=${`translate(0 ${y})`}>
            <rect class="metal" x="0.5" y="0.5" width=${plate.width - 1} height=${plate.height - 1} rx="7" />
            ${plate.places.map((place) => html`
                <${Port} key=${place.port} place=${place} plate=${plate}
                    mark=${marks.get(place.port) ?? { kind: "none", mark: "", text: "" }}
                    isIngress=${place.port === account.port} mirror=${mirrors.get(place.port)} trunk=${trunks.get(place.port)} />
            `)}
        </g>
    `;
}

/**
 * The way from a point above the plate to a port: to one in the lower row through the gap beside the port above it.
 * @param {{x: number, y: number}} from
 * @param {Plate} plate
 * @param {number} top of the plate
 * @param {Place} place
 */
export function lineTo(from, plate, top, place) {
    const gap = (plate.pitch - plate.size) / 2;
    const isDeep = place.row === 1 && place.port !== 0;
    const x = isDeep ? place.x - gap : place.x + plate.size / 2;
    const end = top + (isDeep ? EDGE : place.y);
    const bend = (end - from.y) * 0.62;
    const curve = `M${from.x} ${from.y}C${from.x} ${from.y + bend} ${x} ${end - bend} ${x} ${end}`;
    return isDeep ? `${curve}V${top + place.y + 7}q0 5 ${gap + 1} 5` : curve;
}
