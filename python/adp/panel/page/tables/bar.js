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
 * @param {{rate: number | undefined, most: number, unit?: string}} props
 */
export function RateBar({ rate, most, unit = "/s" }) {
    return rate === undefined ? null : html`<${Bar} part=${rate / (most || 1)} text=${`${short(rate)}${unit}`} mayBeFull />`;
}

/**
 * The highest of some rates.
 * @param {Map<any, Record<string, number>>} rates
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
