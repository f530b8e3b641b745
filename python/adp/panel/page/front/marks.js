// The marks at a port: each has a shape of its own, a letter and a name.
import { html } from "../vendor/preact.js";

/**
 * A mark at a port. `isHollow` is one that holds in part, or that is set up but off. `text` says it in words.
 * @typedef {{kind: string, letter: string, isHollow: boolean, text: string}} Mark
 */

/**
 * The kinds of marks, the most important first. Shapes are drawn in a square of 16.
 * @type {Record<string, {letter: string, title: string, tone: string, shape: () => any}>}
 */
export const KINDS = {
    disabled: {
        letter: "",
        title: "disabled by software",
        tone: "neutral",
        shape: () => html`<circle cx="8" cy="8" r="6.8" /><path class="front-slash" d="M3.4 3.4l9.2 9.2" />`,
    },
    pulled: {
        letter: "P",
        title: "cable pulled",
        tone: "warn",
        shape: () => html`<path d="M2 1.2h12v8.6l-6 5.4l-6 -5.4z" />`,
    },
    blocked: {
        letter: "B",
        title: "spanning tree: B blocking, Li listening, Le learning, D disabled; outlined: in some groups only",
        tone: "bad",
        shape: () => html`<path d="M5 .8h6l4.2 4.2v6l-4.2 4.2h-6l-4.2 -4.2v-6z" />`,
    },
    unauthorised: {
        letter: "8",
        title: "unauthorised (802.1X): only stations that were let in pass; the number is the learning mode, "
            + "0 closed, 8 the CPU decides",
        tone: "bad",
        shape: () => html`<path class="front-shackle" d="M4.6 7v-2.6a3.4 3.4 0 0 1 6.8 0v2.6" />
            <rect x="1.8" y="6" width="12.4" height="9.4" rx="1.6" />`,
    },
    looped: {
        letter: "L",
        title: "in loopback: what would leave comes in again",
        tone: "warn",
        shape: () => html`
            <path class="front-arc" d="M12.6 3.2a6.7 6.7 0 1 0 2 4.8" /><path d="M9.8 4.6l5.6 .6l-1 -5.2z" />
            <circle cx="8" cy="8" r="4.9" />
        `,
    },
    dropping: {
        letter: "!",
        title: "drops or loses frames now",
        tone: "warn",
        shape: () => html`<path d="M8 .8l7.6 14h-15.2z" />`,
    },
    bad: {
        letter: "",
        title: "bad cable: frames are lost, delayed or damaged on it",
        tone: "warn",
        shape: () => html`
            <path d="M8 .4l7.6 7.6l-7.6 7.6l-7.6 -7.6z" />
            <path class="front-slash" d="M3.6 8.6l2.2 -2.4l2.4 4l2 -4l2.2 2.4" />
        `,
    },
    trunk: {
        letter: "T0",
        title: "member of a trunk, with its number",
        tone: "group",
        shape: () => html`<rect x=".6" y="2.2" width="14.8" height="11.6" rx="5.8" />`,
    },
    standby: {
        letter: "S0",
        title: "on standby in a trunk: nothing leaves by it",
        tone: "group",
        shape: () => html`<rect class="front-dashed" x=".6" y="2.2" width="14.8" height="11.6" rx="5.8" />`,
    },
    mirrored: {
        letter: "M",
        title: "mirrored: its frames are copied; outlined: mirroring is off",
        tone: "copy",
        shape: () => html`
            <path d="M4.6 .8h10.6v10.6h-2v-8.6h-8.6z" /><rect x=".8" y="4.4" width="10.8" height="10.8" />
        `,
    },
    copies: {
        letter: "M",
        title: "copies of mirrored frames leave here; outlined: mirroring is off",
        tone: "copy",
        shape: () => html`<path d="M.8 2h9l5.6 6l-5.6 6h-9z" />`,
    },
    isolated: {
        letter: "I",
        title: "isolated: its frames may not leave by all ports",
        tone: "neutral",
        shape: () => html`
            <path d="M.2 1h1.8v14h-1.8zM14 1h1.8v14h-1.8z" /><rect x="3.6" y="2.6" width="8.8" height="10.8" rx="1" />
        `,
    },
};

const ORDER = Object.keys(KINDS);

/** Where a letter stands in its shape, if it is not in the middle. */
const LETTERS = {
    looped: [8, 11.2], dropping: [8, 13.4], mirrored: [6.2, 13.4], copies: [6.6, 11.8], unauthorised: [8, 13.8],
    pulled: [8, 10.6], isolated: [8, 11.6],
};

/**
 * @param {string} kind
 * @param {string} text
 * @param {{letter?: string, isHollow?: boolean}} [options]
 * @returns {Mark}
 */
export function markOf(kind, text, options) {
    return { kind, text, letter: KINDS[kind].letter, isHollow: false, ...options };
}

/**
 * The most important ones first.
 * @param {Mark[]} marks
 */
export function sortedMarks(marks) {
    return [...marks].sort((a, b) => ORDER.indexOf(a.kind) - ORDER.indexOf(b.kind));
}

/**
 * The drawing of a mark, in an SVG.
 * @param {{mark: Mark, x?: number, y?: number}} props
 */
export function MarkShape({ mark, x = 0, y = 0 }) {
    const { tone, shape } = KINDS[mark.kind];
    const [left, base] = LETTERS[/** @type {keyof typeof LETTERS} */ (mark.kind)] ?? [8, 11.8];
    const classes = `front-mark tone-${tone} kind-${mark.kind}${mark.isHollow ? " hollow" : ""}`;
    return html`
        <g class=${classes} transform=${`translate(${x} ${y})`}>
            ${shape()}
            ${mark.letter && html`
                <text x=${left} y=${base} class=${mark.letter.length > 1 ? "long" : null}>${mark.letter}</text>
            `}
        </g>
    `;
}

/**
 * A mark outside of the plate.
 * @param {{mark: Mark}} props
 */
export function MarkBadge({ mark }) {
    return html`
        <svg class="front-badge" viewBox="-3 -3 22 22" aria-hidden="true">
            <rect class="front-badge-ground" x="-3" y="-3" width="22" height="22" rx="4" />
            <${MarkShape} mark=${mark} />
        </svg>
    `;
}
