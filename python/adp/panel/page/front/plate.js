// The face plate: chassis, name, vents and ports.
import { html, useCallback, useEffect, useMemo, useRef, useState } from "../vendor/preact.js";
import { Port } from "./jack.js";
import { layoutOf, neighbour } from "./layout.js";

/** @typedef {import("./state.js").Face} Face */
/** @typedef {import("./layout.js").Layout} Layout */

const FIRST_WIDTH = 900;
const MOST_LETTERS = 15;
const SLOT = 9;

/**
 * The width of an element, now and whenever it changes.
 * @returns {[{current: HTMLElement | null}, number]}
 */
function useWidth() {
    const element = useRef(/** @type {HTMLElement | null} */ (null));
    const [width, setWidth] = useState(FIRST_WIDTH);
    useEffect(() => {
        const observer = new ResizeObserver(([entry]) => setWidth(Math.round(entry.contentRect.width)));
        observer.observe(/** @type {HTMLElement} */ (element.current));
        return () => observer.disconnect();
    }, []);
    return [element, width];
}

/**
 * The slots of a vent.
 * @param {{x: number, y: number, width: number, height: number}} props
 */
function Vents({ x, y, width, height }) {
    const columns = Math.floor(width / SLOT);
    const rows = Math.max(1, Math.floor(height / 32));
    const slots = Array.from({ length: rows }, (_, row) => `M${x + SLOT / 2} ${y + row * 32 + 5}`
        + `${"v22m9 -22".repeat(columns - 1)}v22`);
    return html`<path class="front-vents" d=${slots.join("")} />`;
}

/** @param {{width: number, height: number}} props */
function Ears({ width, height }) {
    const tops = [21, height - 31];
    return [0, width - 24].map((x) => html`
        <g transform=${`translate(${x} 0)`}>
            <path class="front-seam" d=${`M${x === 0 ? 23.5 : 0.5} 4v${height - 8}`} />
            ${tops.map((top) => html`<rect class="front-hole" x="6" y=${top} width="12" height="10" rx="5" />`)}
        </g>
    `);
}

/**
 * The chassis.
 * @param {{layout: Layout, name: string, problem: string}} props
 */
function Chassis({ layout, name, problem }) {
    const { width, height, hasEars, vents } = layout;
    const shown = name.length > MOST_LETTERS ? `${name.slice(0, MOST_LETTERS - 1)}…` : name;
    return html`
        <defs>
            <linearGradient id="front-metal" x1="0" y1="0" x2="0" y2="1">
                <stop class="front-metal-top" offset="0" /><stop class="front-metal-middle" offset=".08" />
                <stop class="front-metal-middle" offset=".86" /><stop class="front-metal-bottom" offset="1" />
            </linearGradient>
            <pattern id="front-brushed" width="8" height="3" patternUnits="userSpaceOnUse">
                <path class="front-brush" d="M0 .5h8" />
            </pattern>
        </defs>
        <rect class="front-chassis" x=".5" y=".5" width=${width - 1} height=${height - 1} rx="6"
            fill="url(#front-metal)" />
        <rect x="1" y="1" width=${width - 2} height=${height - 2} rx="6" fill="url(#front-brushed)" />
        <path class="front-edge" d=${`M6 1.5h${width - 12}`} />
        ${hasEars && html`<${Ears} width=${width} height=${height} />`}
        ${vents && html`<${Vents} ...${vents} />`}
        <g transform=${`translate(${layout.name.x} ${layout.name.y})`}>
            <circle class=${`front-power ${problem ? "" : "on"}`} cx="7" cy="11" r="4" />
            <text class="front-name" x="18" y="15.5">${shown}<title>${name}</title></text>
            <text class="front-kind" x=${hasEars ? 18 : width - 2 * layout.name.x} y=${hasEars ? 30 : 15.5}
                text-anchor=${hasEars ? "start" : "end"}>${problem || "access switch"}</text>
        </g>
    `;
}

/**
 * @param {{name: string, problem: string, faces: Face[], selected: number | null,
 *     onSelect: (port: number) => void}} props `problem` says why the lights are off
 */
export function Plate({ name, problem, faces, selected, onSelect }) {
    const [element, width] = useWidth();
    const shape = faces.map((face) => `${face.port}${face.isFibre ? "f" : ""}`).join();
    const layout = useMemo(() => layoutOf(faces, width), [shape, width]);
    const [current, setCurrent] = useState(selected ?? 1);
    const held = layout.spots.has(current) ? current : faces[0].port;
    const onKey = useCallback((/** @type {KeyboardEvent} */ event, /** @type {number} */ port) => {
        if (event.key === "Enter" || event.key === " ") {
            event.preventDefault();
            onSelect(port);
        } else if (/^(Arrow|Home|End)/.test(event.key)) {
            event.preventDefault();
            const next = neighbour(layout.spots, port, event.key);
            setCurrent(next);
            document.getElementById(`front-port-${next}`)?.focus();
        }
    }, [layout, onSelect]);
    const take = useCallback((/** @type {number} */ port) => {
        setCurrent(port);
        onSelect(port);
    }, [onSelect]);
    const chassis = useMemo(
        () => html`<${Chassis} layout=${layout} name=${name} problem=${problem} />`, [layout, name, problem],
    );
    return html`
        <div class="front-plate" ref=${element}>
            <svg viewBox=${`0 0 ${layout.width} ${layout.height}`} role="group" aria-label=${`Face plate of ${name}`}>
                ${chassis}
                ${faces.map((face) => html`
                    <${Port} key=${face.port} face=${face} spot=${layout.spots.get(face.port)}
                        isSelected=${face.port === selected} isInOrder=${face.port === held}
                        onSelect=${take} onKey=${onKey} />
                `)}
            </svg>
        </div>
    `;
}
