// What the device and the programs on it have logged.
import { html, useLayoutEffect, useMemo, useRef, useState } from "../vendor/preact.js";
import { printable } from "../parts/printable.js";
import { Problem } from "../parts/problem.js";
import { useAnswer } from "../use.js";
import { grouped } from "./bar.js";
import { by, member, number } from "./columns.js";
import { Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */

const LASTS = [200, 1000, 4096];
/** So near to the end, in pixels, one reads what comes. */
const NEAR = 40;

const COLUMNS = [
    number("number", "Line", { isHead: true }),
    number("time", "Time", { show: (row) => row.time.toFixed(6), about: "Time in seconds since the device was started" }),
    number("level", "Level"),
    member("module", "Module"),
    member("text", "Text", { show: (row) => html`<code>${row.text}</code>` }),
];

/**
 * The newest lines with their numbers since the start.
 * @param {any} answer
 */
function linesOf(answer) {
    const first = answer.total - answer.log.length + 1;
    return answer.log.map((/** @type {any} */ row, /** @type {number} */ index) => ({
        ...row,
        number: first + index,
        module: `${row.module} ${printable(row.word)}`,
        text: printable(row.text),
    }));
}

/**
 * Keeps the end of a table in sight while it grows, as long as one does not scroll away from it.
 * @param {any[]} rows
 */
function useEnd(rows) {
    const frame = useRef(/** @type {HTMLElement | null} */ (null));
    const isAtEnd = useRef(true);
    const onScroll = (/** @type {any} */ event) => {
        const { scrollTop, scrollHeight, clientHeight } = event.target;
        isAtEnd.current = scrollHeight - scrollTop - clientHeight < NEAR;
    };
    useLayoutEffect(() => {
        const scroll = frame.current?.querySelector(".scroll");
        if (scroll && isAtEnd.current) {
            scroll.scrollTop = scroll.scrollHeight;
        }
    }, [rows]);
    return { frame, onScroll };
}

/** @param {{last: number, onChange: (last: number) => void}} props */
function Last({ last, onChange }) {
    return html`
        <label>The last
            <select value=${last} onChange=${(/** @type {any} */ event) => onChange(Number(event.target.value))}>
                ${LASTS.map((each) => html`<option value=${each}>${grouped(each)}</option>`)}
            </select> lines</label>
    `;
}

/** @param {{device: Device}} props */
export function Log({ device }) {
    const [last, setLast] = useState(LASTS[0]);
    const { answer, error } = useAnswer(device.name, { command: "log", last });
    const rows = useMemo(() => (answer ? linesOf(answer) : []), [answer]);
    const { frame, onScroll } = useEnd(rows);
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const note = html`
        <p>${grouped(answer.total)} lines since the start, the newest last.
            <${Last} last=${last} onChange=${setLast} /></p>
    `;
    return html`
        <${Problem} text=${error} />
        <div class="log" ref=${frame} onScrollCapture=${onScroll}>
            <${Part} title="Log" isOnly note=${note} rows=${rows} columns=${COLUMNS} keyOf=${by("number")}
                search="Search" commands=${[`${device.vdevctl} log --last ${last}`]}
                empty="Nothing was logged. Calls that change rules log what they do:"
                make=${adpsh(device, "adp_fp_lookupMissAct_set 1 ADP_FP_MISS_NONE")} />
        </div>
    `;
}
