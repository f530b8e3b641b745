// The way of a frame: a drawing of the stages that it passes, with lines onto the ports, and the same in lists.
import { html, useLayoutEffect, useRef, useState } from "../vendor/preact.js";
import { portList, portName } from "../parts/ports.js";
import { groupsOf, isLeaving, isLost, marksOf, outcomeOf, stagesOf, textOf } from "./account.js";
import { PlateDrawing, lineTo, plateOf } from "./plate.js";
import { linesOf } from "./wrap.js";

/** @typedef {import("./account.js").Account} Account */
/** @typedef {import("./account.js").Stage} Stage */
/** @typedef {{stage: Stage, y: number, top: number, height: number, lines: string[]}} Row */

const AXIS = 30;
const LEFT = 52;
const LINE = 18;
const QUIET = 21;
const HEAD = 46;
const FAN = 84;
const NARROW = 560;

/** @param {number} width */
const columnOf = (width) => LEFT + (width < NARROW ? 92 : 122);

/**
 * Where the stages are, from the top.
 * @param {Account} account
 * @param {number} width
 */
function rowsOf(account, width) {
    let top = HEAD;
    return stagesOf(account).map((stage) => {
        const lines = stage.texts.flatMap((text) => linesOf(text, width - columnOf(width) - 14));
        const height = lines.length > 0 ? lines.length * LINE + 10 : QUIET;
        const row = { stage, lines, top, height, y: top + (lines.length > 0 ? 14 : QUIET / 2) };
        top += height;
        return row;
    });
}

/** @param {{state: Stage["state"], y: number}} props */
function Node({ state, y }) {
    switch (state) {
    case "dropped":
        return html`<g class="node dropped">
            <path d=${`M${AXIS - 4.5} ${y - 11}h9l6.5 6.5v9l-6.5 6.5h-9l-6.5 -6.5v-9z`} />
            <path class="cross" d=${`M${AXIS - 5} ${y - 5}l10 10m0 -10l-10 10`} />
        </g>`;
    case "cpu":
        return html`<rect class="node cpu" x=${AXIS - 8} y=${y - 8} width="16" height="16" />`;
    case "passed":
        return html`<circle class="node passed" cx=${AXIS} cy=${y} r="7" />`;
    default:
        return html`<circle class=${`node ${state}`} cx=${AXIS} cy=${y} r="3.5" />`;
    }
}

/** @param {{row: Row, width: number}} props */
function StageDrawing({ row, width }) {
    const { stage, lines, top, y } = row;
    const left = columnOf(width);
    const isEnd = stage.state === "dropped" || stage.state === "cpu";
    return html`
        <g class=${`stage ${stage.state}`}>
            ${isEnd && html`
                <rect class="ground" x=${LEFT - 8} y=${top + 1} width=${width - LEFT + 6} height=${row.height - 4} rx="5" />
            `}
            <text class="title" x=${LEFT} y=${y + 4.5}>${stage.title}</text>
            ${lines.map((line, index) => html`<text x=${left} y=${y + 4.5 + index * LINE}>${line}</text>`)}
            <${Node} state=${stage.state} y=${y} />
        </g>
    `;
}

/** @param {{account: Account, first: number}} props where the frame comes from: a socket with the port's name */
function Socket({ account, first }) {
    const isLooped = account.steps[0]?.looped;
    const name = account.port === 0 ? "CPU" : portName(account.port);
    return html`
        <g class="socket">
            <path class="way" d=${`M${AXIS} 30V${first}`} />
            <path class="jack" d=${`M${AXIS - 20} 2h40v26h-12v5h-16v-5h-12z`} />
            <text class="number" x=${AXIS} y="20">${name}</text>
            <text class="title" x=${LEFT + 4} y="20">${
                account.port === 0 ? "from the CPU" : isLooped ? `looped back into port ${name}` : `into port ${name}`}</text>
        </g>
    `;
}

/** @param {{rows: Row[]}} props the line through the stages, as far as the frame came */
function Axis({ rows }) {
    const reached = rows.filter((row) => row.stage.state !== "after");
    const last = reached[reached.length - 1] ?? rows[0];
    const end = rows[rows.length - 1];
    return html`
        <path class="beyond" d=${`M${AXIS} ${last.y}V${end.y}`} />
        <path class="way" d=${`M${AXIS} ${HEAD - 6}V${last.y}`} />
    `;
}

/** @param {{account: Account, rows: Row[], plate: import("./plate.js").Plate, top: number}} props the lines onto the ports */
function Lines({ account, rows, plate, top }) {
    const place = (/** @type {number} */ port) => plate.places.find((each) => each.port === port);
    const cpu = rows.find((row) => row.stage.state === "cpu");
    const from = { x: AXIS, y: (cpu ?? rows[rows.length - 1]).y };
    const side = cpu && `M${AXIS} ${cpu.y}H18Q10 ${cpu.y} 10 ${cpu.y + 8}V${top - 20}`;
    return html`
        <g class="lines">
            ${account.mirrors.map((row) => {
                const end = place(row.port);
                const aside = end && { ...end, x: end.x + (end.row === 0 ? plate.size / 4 : 0) };
                const start = { x: AXIS, y: rows[rows.length - 1].y };
                return aside && html`<path class="mirror" d=${lineTo(start, plate, top, aside)} />`;
            })}
            ${account.ports.filter((row) => row.fate !== "not" || isLost(row)).map((row) => {
                const end = place(row.port);
                const isSide = side && row.port === 0 && end;
                const path = isSide ? `${side}V${top + end.y + 4}` : end && lineTo(from, plate, top, end);
                return path && html`<path class=${row.fate === "not" ? "lost" : isSide ? "cpu" : row.fate} d=${path} />`;
            })}
        </g>
    `;
}

/** @param {{account: Account, width: number}} props */
function Drawing({ account, width }) {
    const rows = rowsOf(account, width);
    const end = rows[rows.length - 1];
    const plate = plateOf(account.ports.map((row) => row.port), width - 2);
    const top = end.top + end.height + (isLeaving(account) || account.mirrors.length > 0 ? FAN : 18);
    const height = top + plate.height + 2;
    return html`
        <svg class="drawing" width=${width} height=${height} viewBox=${`0 0 ${width} ${height}`} aria-hidden="true">
            <${Axis} rows=${rows} />
            <${Socket} account=${account} first=${rows[0].y} />
            <${PlateDrawing} plate=${plate} y=${top} account=${account} marks=${marksOf(account)} />
            <${Lines} account=${account} rows=${rows} plate=${plate} top=${top} />
            ${rows.map((row) => html`<${StageDrawing} key=${row.stage.name} row=${row} width=${width} />`)}
        </svg>
    `;
}

/** @param {{account: Account}} props the ports in words, with the marks of the drawing */
function PortLists({ account }) {
    const marks = marksOf(account);
    /** @param {string} title @param {boolean} areSent */
    const list = (title, areSent) => {
        const groups = groupsOf(account, areSent);
        return groups.length > 0 && html`
            <h4>${title}</h4>
            <ul class="fates">
                ${groups.map(({ text, rows }) => html`
                    <li key=${text}>
                        <span class=${`key ${marks.get(rows[0].port)?.kind}`} aria-hidden="true">${marks.get(rows[0].port)?.mark}</span>
                        <span>${rows.length === 1 ? "port" : "ports"} <b>${portList(rows.map((row) => row.port))}</b>: ${text}</span>
                    </li>
                `)}
            </ul>
        `;
    };
    return html`
        ${list("Sent", true)}
        ${account.mirrors.length > 0 && html`
            <h4>Mirrors</h4>
            <ul class="fates">${account.mirrors.map((row) => html`
                <li>
                    <span class="key mirror" aria-hidden="true">◆</span>
                    <span>port <b>${portName(row.port)}</b>: ${row.text ?? row.origin}</span>
                </li>
            `)}</ul>
        `}
        ${list("Not sent", false)}
    `;
}

/** @param {{account: Account}} props */
export function Outcome({ account }) {
    const { drop, sent, lost } = outcomeOf(account);
    const to = sent.length > 0 ? `To ${sent.length > 1 ? "ports" : "port"} ${portList(sent)}` : "To no port";
    const words = [drop ? `Dropped: ${drop}` : to, ...lost];
    return html`<span class=${`outcome ${drop || sent.length === 0 ? "dropped" : "sent"}`}>${words.join(", ")}</span>`;
}

/**
 * The width that a part of the page has.
 * @returns {[{current: any}, number]}
 */
function useWidth() {
    const part = useRef(/** @type {any} */ (null));
    const [width, setWidth] = useState(0);
    useLayoutEffect(() => {
        const observer = new ResizeObserver(([entry]) => setWidth(Math.floor(entry.contentRect.width)));
        observer.observe(part.current);
        return () => observer.disconnect();
    }, []);
    return [part, width];
}

/**
 * A frame's way. The steps are words of the device.
 * @param {{account: Account}} props
 */
export function Way({ account }) {
    const [part, width] = useWidth();
    return html`
        <div class="way-of-frame" ref=${part}>
            <ol class="unseen" aria-label="Steps">
                ${account.steps.map((step) => html`<li>${textOf(step)}</li>`)}
            </ol>
            ${width > 0 && html`<${Drawing} account=${account} width=${width} />`}
            <${PortLists} account=${account} />
        </div>
    `;
}
