// Ages that count on between two readings.
import { html, useEffect, useState } from "../vendor/preact.js";

const TICK_MILLISECONDS = 1000;
const UNITS = [
    { name: "d", seconds: 86400 },
    { name: "h", seconds: 3600 },
    { name: "min", seconds: 60 },
    { name: "s", seconds: 1 },
];

/** @type {Set<() => void>} */
const listeners = new Set();
let timer = 0;

/** @param {() => void} listener */
function listen(listener) {
    listeners.add(listener);
    timer ||= setInterval(() => listeners.forEach((each) => each()), TICK_MILLISECONDS);
    return () => {
        listeners.delete(listener);
        if (listeners.size === 0) {
            clearInterval(timer);
            timer = 0;
        }
    };
}

/**
 * Seconds in words: 12 s, 3 min 5 s.
 * @param {number} seconds
 */
export function ageText(seconds) {
    const whole = Math.max(0, Math.floor(seconds));
    const at = UNITS.findIndex((unit) => whole >= unit.seconds);
    if (at < 0) {
        return "0 s";
    }
    const rest = UNITS[at + 1] ? Math.floor((whole % UNITS[at].seconds) / UNITS[at + 1].seconds) : 0;
    return `${Math.floor(whole / UNITS[at].seconds)} ${UNITS[at].name}${rest ? ` ${rest} ${UNITS[at + 1].name}` : ""}`;
}

/**
 * @param {{seconds: number, read: number, isLive: boolean}} props an age, when it was read, by performance.now(), and
 *     whether it goes on
 */
export function Age({ seconds, read, isLive }) {
    const [now, setNow] = useState(read);
    useEffect(() => (isLive ? listen(() => setNow(performance.now())) : undefined), [isLive]);
    return html`${ageText(seconds + Math.max(0, now - read) / 1000)}`;
}
