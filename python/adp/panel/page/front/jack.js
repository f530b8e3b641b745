// A port of the face plate: its jack, number, lights and marks.
import { html, useMemo } from "../vendor/preact.js";
import { portName } from "../parts/ports.js";
import { CELL } from "./layout.js";
import { MarkShape } from "./marks.js";

/** @typedef {import("./state.js").Face} Face */
/** @typedef {import("./layout.js").Spot} Spot */

const MARK = 17;
const BARS = [1, 2, 3, 4];

const CONTACTS = `M15 33${"v-5m3.4 5".repeat(8)}`;

/**
 * The mouth of a copper jack with its contacts, the tab above.
 * @param {{face: Face}} props
 */
export function Copper({ face }) {
    return html`
        <rect class="front-jack" x="5" y="0" width="44" height="36" rx="2.5" />
        <path class="front-mouth" d="M10 33v-21h8v-4h5v-4h8v4h5v4h8v21z" />
        ${face.isPresent ? html`<path class="front-contacts" d=${CONTACTS} />` : html`
            <rect class="front-cover" x="10" y="12" width="34" height="21" rx="1.5" />
            <path class="front-cover-line" d="M21 22.5h12" />
        `}
        ${face.hasPlug && html`
            <path class="front-plug" d="M12.5 31v-16.5h7v-4h4v-4h7v4h4v4h7v16.5z" />
            <path class="front-clip" d="M23.5 6.5v12h7v-12" />
        `}
    `;
}

/**
 * A cage for a module with two fibres.
 * @param {{face: Face}} props
 */
function Fibre({ face }) {
    return html`
        <rect class="front-cage" x="4" y="2" width="62" height="32" rx="2" />
        <rect class="front-mouth" x="8" y="6" width="54" height="24" rx="1" />
        ${face.isPresent ? "" : html`
            <rect class="front-cover" x="8" y="6" width="54" height="24" rx="1" />
            <path class="front-cover-line" d="M29 18h12" />
        `}
        ${face.hasPlug && html`
            <rect class="front-module" x="11" y="8" width="48" height="20" rx="1.5" />
            <path class="front-plug" d="M15 11h16v14h-16zM39 11h16v14h-16z" />
            <path class="front-clip" d="M20 11v6h6v-6M44 11v6h6v-6" />
        `}
    `;
}

/** The management port, where the device's own processor is. */
function Cpu() {
    return html`
        <rect class="front-cpu" x="6" y="1" width="56" height="34" rx="8" />
        <path class="front-pins" d="M24 8v-4m7 4v-4m6 4v-4m7 4v-4M24 28v4m7 -4v4m6 -4v4m7 -4v4" />
        <path class="front-pins" d="M19 12h-5m5 6h-5m5 6h-5M49 12h5m-5 6h5m-5 6h5" />
        <rect class="front-chip" x="20" y="8" width="28" height="20" rx="2" />
        <circle class="front-dot" cx="24" cy="12" r="1.4" />
    `;
}

/**
 * The link light: a bar for each power of ten of the speed.
 * @param {{face: Face, x: number, y: number}} props
 */
export function LinkLight({ face, x, y }) {
    const bars = face.isUp ? Math.round(Math.log10(face.speed)) : 0;
    return html`
        <g class=${`front-link ${face.isUp ? `speed-${face.speed}` : "down"}`} transform=${`translate(${x} ${y})`}>
            ${BARS.map((bar) => html`
                <rect class=${bar <= bars ? "lit" : null} x=${(bar - 1) * 3} y=${6.4 - bar * 1.6}
                    width="2.2" height=${2 + bar * 1.6} rx=".5" />
            `)}
        </g>
    `;
}

/**
 * The activity light: a triangle that points into the device, and one that points out.
 * @param {{face: Face, x: number, y: number}} props
 */
export function ActivityLight({ face, x, y }) {
    const delay = { animationDelay: `-${(face.port * 370) % 1000}ms` };
    return html`
        <g class="front-activity" transform=${`translate(${x} ${y})`}>
            <path class=${`in level-${face.in}`} style=${delay} d="M0 .8h6.2l-3.1 7z" />
            <path class=${`out level-${face.out}`} style=${delay} d="M7 7.8h6.2l-3.1 -7z" />
        </g>
    `;
}

/** @param {{face: Face, width: number, y: number}} props */
function Marks({ face, width, y }) {
    const room = Math.floor(width / MARK);
    const shown = face.marks.length > room ? face.marks.slice(0, room - 1) : face.marks;
    const rest = face.marks.length - shown.length;
    const left = (width - MARK * (shown.length + (rest > 0 ? 1 : 0))) / 2 + 0.5;
    return html`
        ${shown.map((mark, index) => html`<${MarkShape} mark=${mark} x=${left + index * MARK} y=${y} />`)}
        ${rest > 0 && html`
            <text class="front-more" x=${left + shown.length * MARK + MARK / 2} y=${y + 12.5}>+${rest}</text>
        `}
    `;
}

/** @param {{face: Face, spot: Spot}} props */
function Drawing({ face, spot }) {
    const isCpu = face.port === 0;
    const jackTop = spot.isUpper ? CELL.marks + CELL.label : 0;
    const lights = spot.isUpper ? CELL.marks + 2.5 : CELL.jack + 3;
    const isTurned = !spot.isUpper && !isCpu;
    const middle = spot.width / 2;
    return html`
        <rect class="front-ring" x="1" y="0" width=${spot.width - 2} height=${CELL.height} rx="5" />
        <g transform=${isTurned ? `translate(0 ${jackTop + CELL.jack}) scale(1 -1)` : `translate(0 ${jackTop})`}>
            <${isCpu ? Cpu : face.isFibre ? Fibre : Copper} face=${face} />
        </g>
        <${LinkLight} face=${face} x=${3.5} y=${lights} />
        <text class="front-number" x=${middle} y=${lights + 8.6}>${portName(face.port).toUpperCase()}</text>
        <${ActivityLight} face=${face} x=${spot.width - 16.6} y=${lights} />
        <${Marks} face=${face} width=${spot.width} y=${spot.isUpper ? 2 : CELL.height - 18} />
    `;
}

/**
 * A port as a button. It is drawn again only when something of it has changed.
 * @param {{face: Face, spot: Spot, isSelected: boolean, isInOrder: boolean, onSelect: (port: number) => void,
 *     onKey: (event: KeyboardEvent, port: number) => void}} props `isInOrder` says that the tab key stops here
 */
export function Port({ face, spot, isSelected, isInOrder, onSelect, onKey }) {
    const kind = face.port === 0 ? "cpu" : face.isFibre ? "fibre" : "copper";
    const classes = [
        "front-port", kind, face.isUp && "up", !face.isPresent && "gone", !face.isEnabled && "off",
        isSelected && "selected",
    ];
    const onKeyDown = (/** @type {KeyboardEvent} */ event) => onKey(event, face.port);
    return useMemo(() => html`
        <g class=${classes.filter(Boolean).join(" ")} transform=${`translate(${spot.x} ${spot.y})`}
            id=${`front-port-${face.port}`} role="button" tabindex=${isInOrder ? 0 : -1}
            aria-pressed=${String(isSelected)}
            onClick=${() => onSelect(face.port)} onKeyDown=${onKeyDown}>
            <title>${face.name}</title>
            <g aria-hidden="true"><${Drawing} face=${face} spot=${spot} /></g>
        </g>
    `, [JSON.stringify(face), spot, isSelected, isInOrder, onSelect, onKey]);
}
