// Small plots of a port's traffic in the last minute.
import { html } from "../vendor/preact.js";
import { short } from "../rates.js";
import { HISTORY_SECONDS } from "./traffic.js";

/** @typedef {import("./traffic.js").Traffic} Traffic */
/** @typedef {[number, number]} Point a place in the picture, and a value */

const WIDTH = 240;
const HEIGHT = 56;
const BOX = `0 -2 ${WIDTH} ${HEIGHT + 4}`;

/**
 * The highest value of the scale: 1, 2 or 5 of a power of ten.
 * @param {number} most
 */
export function scaleOf(most) {
    const power = 10 ** Math.floor(Math.log10(Math.max(most, 1)));
    return ([1, 2, 5].find((each) => each * power >= most) ?? 10) * power;
}

/**
 * The points of a count.
 * @param {Traffic} traffic
 * @param {number} port
 * @param {string} count
 * @param {number} factor
 * @returns {Point[]}
 */
function pointsOf({ moments, now }, port, count, factor) {
    return moments.flatMap((moment) => {
        const rate = moment.rates.get(port);
        const x = WIDTH * (1 - (now - moment.at) / HISTORY_SECONDS);
        return rate && x >= 0 ? [/** @type {Point} */ ([x, rate[count] * factor])] : [];
    });
}

/**
 * @param {Point[]} points
 * @param {number} scale
 */
function pathOf(points, scale) {
    const places = points.map(([x, value]) => `${x.toFixed(1)} ${(HEIGHT * (1 - value / scale)).toFixed(1)}`);
    return places.length > 1 ? `M${places.join("L")}` : "";
}

/**
 * @param {Point[]} points
 * @param {number} scale
 */
function areaOf(points, scale) {
    const line = pathOf(points, scale);
    return line && `${line}V${HEIGHT}H${points[0][0].toFixed(1)}z`;
}

/** @param {Point[]} points */
const newest = (points) => (points.length > 0 ? points[points.length - 1][1] : 0);

/** @param {Point[]} points */
const most = (points) => Math.max(0, ...points.map(([, value]) => value));

/** What stands beside the value of a curve. */
const SAMPLES = {
    in: () => html`<rect class="front-in" width="18" height="10" /><path class="front-in-line" d="M0 1h18" />`,
    out: () => html`<path class="front-out" d="M0 5h18" />`,
};

/** @param {{way: "in" | "out", points: Point[]}} props */
function Value({ way, points }) {
    return html`
        <span>
            <svg class="front-sample" viewBox="0 0 18 10" aria-hidden="true">${SAMPLES[way]()}</svg>
            ${" "}${way} <b>${short(newest(points))}</b>
        </span>
    `;
}

/**
 * @param {{title: string, traffic: Traffic, port: number, count: string, factor: number}} props
 *     `count` is the end of the counters' names
 */
export function Plot({ title, traffic, port, count, factor }) {
    const into = pointsOf(traffic, port, `rx_${count}`, factor);
    const out = pointsOf(traffic, port, `tx_${count}`, factor);
    const scale = scaleOf(Math.max(most(into), most(out)));
    const words = [into, out].map((points) => `${short(newest(points))}, at most ${short(most(points))}`);
    const name = `${title} in the last minute: in ${words[0]}; out ${words[1]}`;
    return html`
        <figure class="front-plot">
            <figcaption>${title} <span class="front-scale">to ${short(scale)}</span></figcaption>
            <svg viewBox=${BOX} preserveAspectRatio="none" role="img" aria-label=${name}>
                <path class="front-grid" d=${`M0 ${HEIGHT}h${WIDTH}M0 ${HEIGHT / 2}h${WIDTH}M0 0h${WIDTH}`} />
                <path class="front-in" d=${areaOf(into, scale)} />
                <path class="front-in-line" d=${pathOf(into, scale)} />
                <path class="front-out" d=${pathOf(out, scale)} />
            </svg>
            <div class="front-values"><${Value} way="in" points=${into} /><${Value} way="out" points=${out} /></div>
        </figure>
    `;
}

/** @param {{traffic: Traffic, port: number}} props */
export function Plots({ traffic, port }) {
    return html`
        <section class="front-plots" aria-label="Traffic">
            <h3>Traffic in the last minute</h3>
            <${Plot} title="Frames per second" traffic=${traffic} port=${port} count="frames" factor=${1} />
            <${Plot} title="Bits per second" traffic=${traffic} port=${port} count="octets" factor=${8} />
        </section>
    `;
}
