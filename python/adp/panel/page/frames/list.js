// The list of frames: only the rows in sight are made. Arrow keys go from frame to frame.
import { html, useEffect, useLayoutEffect, useRef, useState } from "../vendor/preact.js";
import { portName } from "../parts/ports.js";
import { Outcome } from "../explain/way.js";
import { summaryOf } from "./keep.js";

/** @typedef {import("./keep.js").Entry} Entry */

const ROW = 28;
const SPARE = 4;
const PAGE = 10;
const COLUMNS = ["Time", "In", "What became of it", "Type", "Source", "Destination", "VLAN", "Prio", "Octets"];

/** @param {{entry: Entry, index: number, isSelected: boolean, onSelect: (id: number) => void}} props */
function Row({ entry, index, isSelected, onSelect }) {
    const style = { transform: `translateY(${index * ROW}px)` };
    if (!entry.account) {
        return html`
            <div role="row" class="frame gap" style=${style} aria-rowindex=${index + 2}>
                <span role="gridcell" class="whole">${entry.gap}</span>
            </div>
        `;
    }
    // Under load a row has moved on before the button of the mouse is up, and then there is no click.
    const onPointer = (/** @type {PointerEvent} */ event) => event.pointerType === "mouse" && onSelect(entry.id);
    const frame = summaryOf(entry.account);
    const cells = [frame.type, frame.source, frame.destination, frame.vlan, frame.priority, frame.octets];
    return html`
        <div role="row" id=${`frame-${entry.id}`} class=${`frame ${isSelected ? "selected" : ""}`} style=${style}
            aria-rowindex=${index + 2} aria-selected=${isSelected ? "true" : "false"}
            onPointerDown=${onPointer} onClick=${() => onSelect(entry.id)}>
            <span role="gridcell">${frame.time.toFixed(6)}</span>
            <span role="gridcell">${portName(frame.port)}</span>
            <span role="gridcell"><${Outcome} account=${entry.account} /></span>
            ${cells.map((cell) => html`<span role="gridcell">${cell}</span>`)}
        </div>
    `;
}

/**
 * The index of the frame that a key leads to.
 * @param {string} key
 * @param {number} at
 * @param {number} count
 */
function targetOf(key, at, count) {
    const steps = new Map([["ArrowDown", 1], ["ArrowUp", -1], ["PageDown", PAGE], ["PageUp", -PAGE]]);
    const step = steps.get(key);
    const ends = new Map([["Home", 0], ["End", count - 1]]);
    const target = ends.get(key) ?? (step === undefined ? -1 : at < 0 ? 0 : at + step);
    return step === undefined && !ends.has(key) ? null : Math.min(Math.max(target, 0), count - 1);
}

/**
 * While one has scrolled away from the newest frame, what one sees stays where it is.
 * @param {{current: any}} part
 * @param {Entry[]} entries
 */
function useSteadyScroll(part, entries) {
    const newest = useRef(0);
    useLayoutEffect(() => {
        const added = entries.findIndex((entry) => entry.id <= newest.current);
        if (part.current.scrollTop > 0 && added > 0) {
            part.current.scrollTop += added * ROW;
        }
        newest.current = entries[0]?.id ?? 0;
    }, [entries]);
}

/**
 * The rows that are in sight.
 * @param {{current: any}} part
 * @returns {{first: number, count: number}}
 */
function useSight(part) {
    const [sight, setSight] = useState({ first: 0, count: 20 });
    useEffect(() => {
        const look = () => {
            const first = Math.max(0, Math.floor(part.current.scrollTop / ROW) - SPARE);
            const count = Math.ceil(part.current.clientHeight / ROW) + 2 * SPARE;
            setSight((old) => (old.first === first && old.count === count ? old : { first, count }));
        };
        const observer = new ResizeObserver(look);
        observer.observe(part.current);
        part.current.addEventListener("scroll", look, { passive: true });
        return () => observer.disconnect();
    }, []);
    return sight;
}

/** @param {{entries: Entry[], selected: number | null, onSelect: (id: number) => void}} props the newest entry first */
export function FrameList({ entries, selected, onSelect }) {
    const part = useRef(/** @type {any} */ (null));
    const { first, count } = useSight(part);
    useSteadyScroll(part, entries);
    const at = entries.findIndex((entry) => entry.id === selected);
    /** @param {KeyboardEvent} event */
    const onKey = (event) => {
        const target = entries.length > 0 ? targetOf(event.key, at, entries.length) : null;
        if (target === null) {
            return;
        }
        event.preventDefault();
        onSelect(entries[target].id);
        const { scrollTop, clientHeight } = part.current;
        const [top, bottom] = [target * ROW, (target + 2) * ROW];
        part.current.scrollTop = Math.min(top, Math.max(bottom - clientHeight, scrollTop));
    };
    const inSight = entries.slice(first, first + count);
    const isInSight = inSight.some((entry) => entry.id === selected);
    return html`
        <div class="frames scroll" ref=${part} role="grid" tabindex="0" aria-label="Frames, the newest first"
            aria-rowcount=${entries.length + 1} aria-activedescendant=${isInSight ? `frame-${selected}` : null} onKeyDown=${onKey}>
            <div role="rowgroup" class="frame-head"><div role="row" aria-rowindex="1" class="frame">
                ${COLUMNS.map((title) => html`<span role="columnheader">${title}</span>`)}
            </div></div>
            <div role="rowgroup" class="frame-rows" style=${{ height: `${entries.length * ROW}px` }}>
                ${inSight.map((entry, index) => html`
                    <${Row} entry=${entry} index=${first + index} isSelected=${entry.id === selected} onSelect=${onSelect} />
                `)}
            </div>
        </div>
    `;
}
