// What the lights and marks mean.
import { html } from "../vendor/preact.js";
import { KINDS, MarkBadge, markOf } from "./marks.js";
import { ActivityLight, Copper, LinkLight } from "./jack.js";

/**
 * @param {Partial<import("./state.js").Face>} parts
 * @returns {import("./state.js").Face}
 */
function faceWith(parts) {
    return {
        port: 1, name: "", isFibre: false, isUp: true, speed: 1000, isPresent: true, isEnabled: true, hasPlug: true,
        marks: [], in: 0, out: 0, ...parts,
    };
}

const SPEEDS = [[10, "10 Mb/s"], [100, "100 Mb/s"], [1000, "1000 Mb/s"], [10000, "10 Gb/s"]];

const JACKS = [
    { face: faceWith({}), words: "a cable is in it" },
    { face: faceWith({ hasPlug: false }), words: "the cable is pulled" },
    { face: faceWith({ hasPlug: false, isPresent: false }), words: "gone: the port has no interface" },
];

/** @param {{children: any, words: string, box?: string}} props */
function Light({ children, words, box = "-3 -3 22 15" }) {
    return html`
        <li><svg class="front-badge wide" viewBox=${box} aria-hidden="true">
            <rect class="front-badge-ground" x="-4" y="-4" width="60" height="50" />${children}</svg> ${words}</li>
    `;
}

/** The lights and jacks. */
function Lights() {
    return html`
        <ul>
            ${SPEEDS.map(([speed, words]) => html`
                <${Light} words=${`link, ${words}`}>
                    <${LinkLight} face=${faceWith({ speed: Number(speed) })} x=${2} y=${0} />
                <//>
            `)}
            <${Light} words="no link"><${LinkLight} face=${faceWith({ isUp: false })} x=${2} y=${0} /><//>
            <${Light} words="frames come in (left) and go out (right): the more, the faster; none: outlined">
                <${ActivityLight} face=${faceWith({ in: 2, out: 2 })} x=${1} y=${0.5} />
            <//>
            ${JACKS.map(({ face, words }) => html`
                <${Light} words=${words} box="1 -2 52 40"><${Copper} face=${face} /><//>
            `)}
        </ul>
    `;
}

export function Legend() {
    return html`
        <details class="front-legend">
            <summary>Legend: what the lights and marks mean</summary>
            <div class="front-keys">
                <section aria-label="Lights"><h3>Lights and jacks</h3><${Lights} /></section>
                <section aria-label="Marks">
                    <h3>Marks</h3>
                    <ul>
                        ${Object.entries(KINDS).map(([kind, { title }]) => html`
                            <li>
                                <${MarkBadge} mark=${markOf(kind, title, { isHollow: kind === "standby" })} /> ${title}
                            </li>
                        `)}
                    </ul>
                </section>
            </div>
        </details>
    `;
}
