// A bar: how much of something there is, with the number as text.
import { html } from "../vendor/preact.js";
import { short } from "../rates.js";

/** From here on a bar is striped. */
const HIGH = 0.8;

/**
 * @param {{part: number, text: string, name?: string, mayBeFull?: boolean}} props
 *     `part` of the whole, 0 to 1; `name` says what it is; a bar that may be full is not striped when it nearly is
 */
export function Bar({ part, text, name, mayBeFull = false }) {
    const shown = Math.max(0, Math.min(1, part || 0));
    return html`
        <span class="bar" title=${name}>
            <span class="bar-text">${text}</span>
            <span class=${shown >= HIGH && !mayBeFull ? "bar-track high" : "bar-track"} aria-hidden="true">
                <span class="bar-fill" style=${{ width: `${(100 * shown).toFixed(1)}%` }}></span>
            </span>
        </span>
    `;
}

/**
 * A rate, next to the highest one of its table; nothing as long as it is not known.
 * @param {{rate: number | undefined, most: number}} props
 */
export function RateBar({ rate, most }) {
    return rate !== undefined && html`<${Bar} part=${rate / (most || 1)} text=${`${short(rate)}/s`} mayBeFull />`;
}

/**
 * How full a table is.
 * @param {{count: number, capacity: number, what?: string}} props
 */
export function Fill({ count, capacity, what = "entries" }) {
    const text = `${grouped(count)} of ${grouped(capacity)} ${what}`;
    return html`<p><${Bar} part=${count / capacity} text=${text} name="Fill of the table" /></p>`;
}

/**
 * The highest of some rates.
 * @param {import("../parts/fresh_rates").Rates} rates
 * @param {string} count
 */
export function mostOf(rates, count) {
    let most = 0;
    rates.forEach((each) => {
        most = Math.max(most, each[count]);
    });
    return most;
}

/**
 * A number that people read: 1,234,567.
 * @param {number} number
 */
export function grouped(number) {
    return number.toLocaleString("en");
}

/**
 * A rate that is set: 1.5 Mbit/s.
 * @param {number} kilobits per second
 */
export function bitRate(kilobits) {
    return `${short(1000 * kilobits)}bit/s`;
}
