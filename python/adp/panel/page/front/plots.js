// Small plots of a port's traffic in the last minute.
import { html } from "../vendor/preact.js";
import { short } from "../rates.js";

/** @typedef {import("./traffic.js").Moment} Moment */

const WIDTH = 240;
const HEIGHT = 56;
const SECONDS = 60;

/**
 * The highest value of the scale: 1, 2 or 5 of a power of ten.
 * @param {number} most
 */
export function scaleOf(most) {
    const power = 10 ** Math.floor(Math.log10(Math.max(most, 1)));
    return (/** @type {number} */ ([1, 2, 5, 10].find((each) => each * power >= most)) ?? 10) * power;
}

/**
 * @param {number[][]} points
 * @param {number} scale
 */
function pathOf(points, scale) {
    return points.map(([x, value], index) => `${index === 0 ? "M" : "L"}${x.toFixed(1)} ${(HEIGHT - (value / scale) * HEIGHT).toFixed(1)}`).join("");
}

/**
 * A curve in words.
 * @param {string} unit
 * @param {number} now
 * @param {number} most
 */
function inWords(unit, now, most) {
    return `${short(now)}${/ /.test(short(now)) ? "" : " "}${unit}, at most ${short(most)}`;
}

/**
 * @param {{title: string, unit: string, moments: Moment[], port: number, counts: [string, string], factor: number}} props
 *     `counts` are those of what comes in and of what goes out
 */
export function Plot({ title, unit, moments, port, counts, factor }) {
    const end = moments.length > 0 ? moments[moments.length - 1].at : 0;
    const [into, out] = counts.map((count) => moments.flatMap((moment) => {
        const rate = moment.rates.get(port);
        const x = WIDTH - ((end - moment.at) / SECONDS) * WIDTH;
        return rate && x >= 0 ? [[x, rate[count] * factor]] : [];
    }));
    const most = [into, out].map((points) => Math.max(0, ...points.map(([, value]) => value)));
    const now = [into, out].map((points) => (points.length > 0 ? points[points.length - 1][1] : 0));
    const scale = scaleOf(Math.max(...most));
    const area = into.length > 1 ? `${pathOf(into, scale)}V${HEIGHT}H${into[0][0].toFixed(1)}z` : "";
    const words = `in ${inWords(unit, now[0], most[0])}; out ${inWords(unit, now[1], most[1])}`;
    return html`
        <figure class="front-plot">
            <figcaption>${title} <span class="front-scale">to ${short(scale)}</span></figcaption>
            <svg viewBox=${`0 -2 ${WIDTH} ${HEIGHT + 4}`} preserveAspectRatio="none" role="img" aria-label=${`${title} in the last minute: ${words}`}>
                <path class="front-grid" d=${`M0 ${HEIGHT}h${WIDTH}M0 ${HEIGHT / 2}h${WIDTH}M0 0h${WIDTH}`} />
                <path class="front-in" d=${area} />
                <path class="front-in-line" d=${pathOf(into, scale)} />
                <path class="front-out" d=${pathOf(out, scale)} />
            </svg>
            <div class="front-values">
                <span><svg class="front-sample" viewBox="0 0 18 10" aria-hidden="true"><rect class="front-in" width="18" height="10" /><path class="front-in-line" d="M0 1h18" /></svg>
                    in <b>${short(now[0])}</b></span>
                <span><svg class="front-sample" viewBox="0 0 18 10" aria-hidden="true"><path class="front-out" d="M0 5h18" /></svg>
                    out <b>${short(now[1])}</b></span>
            </div>
        </figure>
    `;
}

/** @param {{moments: Moment[], port: number}} props */
export function Plots({ moments, port }) {
    return html`
        <div class="front-plots">
            <${Plot} title="Frames per second" unit="frames per second" moments=${moments} port=${port}
                counts=${["rx_frames", "tx_frames"]} factor=${1} />
            <${Plot} title="Bits per second" unit="bits per second" moments=${moments} port=${port}
                counts=${["rx_octets", "tx_octets"]} factor=${8} />
        </div>
    `;
}
