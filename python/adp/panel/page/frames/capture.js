// A capture: frames of ports as a pcapng file, which the browser saves when the capture ends.
import { html, useEffect, useRef, useState } from "../vendor/preact.js";
import { Command } from "../parts/command.js";
import { Problem } from "../parts/problem.js";

/** @typedef {{port: string, direction: string, dropped: boolean, seconds: string}} Wish */
/** @typedef {{octets: number, isRunning: boolean, said: string, problem: string | null}} Progress */

export const MOST_CAPTURED = 64 * 1024 * 1024;
const SHOWN_MILLISECONDS = 200;
/** @type {Progress} */
const NOTHING = { octets: 0, isRunning: false, said: "", problem: null };

/** @param {number} octets */
const size = (octets) => (octets < 1024 ? `${octets} octets` : octets < 1 << 20 ? `${(octets / 1024).toFixed(1)} KiB`
    : `${(octets / (1 << 20)).toFixed(1)} MiB`);

/** @param {Uint8Array[]} pieces @param {string} name */
function save(pieces, name) {
    const address = URL.createObjectURL(new Blob(pieces, { type: "application/octet-stream" }));
    const link = document.createElement("a");
    link.href = address;
    link.download = name;
    link.click();
    setTimeout(() => URL.revokeObjectURL(address), 60000);
}

/**
 * Takes what the server sends until it ends, is stopped, or is too much.
 * @param {string} address
 * @param {AbortSignal} signal
 * @param {(piece: Uint8Array) => boolean} take false: no more
 */
async function receive(address, signal, take) {
    try {
        const response = await fetch(address, { signal });
        if (!response.ok || !response.body) {
            throw new Error((await response.text()).slice(0, 500) || `The server answers with ${response.status}.`);
        }
        const reader = response.body.getReader();
        for (let next = await reader.read(); !next.done && take(next.value); next = await reader.read()) {
            // take() keeps it
        }
        await reader.cancel();
    } catch (problem) {
        if (!signal.aborted) {
            throw problem;
        }
    }
}

/** @param {Wish} wish */
function queryOf({ port, direction, dropped, seconds }) {
    return new URLSearchParams({
        ...(port && { port }), direction, ...(dropped && { dropped: "1" }), ...(seconds && { seconds }),
    });
}

/** @param {Wish} wish */
function wordsOf({ port, direction, dropped, seconds }) {
    return [
        port && ` --port ${port}`, direction !== "both" && ` --direction ${direction}`, dropped && " --dropped",
        seconds && ` --for ${seconds}s`,
    ].filter(Boolean).join("");
}

/**
 * Makes captures of a device. One that is left behind by going to another view ends without a file.
 * @param {string} device
 */
function useCapture(device) {
    const [progress, setProgress] = useState(NOTHING);
    const abort = useRef(/** @type {AbortController | null} */ (null));
    const isThere = useRef(true);
    useEffect(() => () => {
        isThere.current = false;
        abort.current?.abort();
    }, []);
    /** @param {Wish} wish */
    const start = async (wish) => {
        const own = new AbortController();
        abort.current = own;
        /** @type {Uint8Array[]} */
        const pieces = [];
        let octets = 0;
        const shown = setInterval(() => setProgress((old) => ({ ...old, octets })), SHOWN_MILLISECONDS);
        setProgress({ ...NOTHING, isRunning: true });
        /** @param {Uint8Array} piece */
        const take = (piece) => {
            pieces.push(piece);
            octets += piece.length;
            return octets < MOST_CAPTURED;
        };
        const problem = await receive(`capture/${encodeURIComponent(device)}?${queryOf(wish)}`, own.signal, take).then(
            () => null, (/** @type {Error} */ failed) => failed.message);
        clearInterval(shown);
        if (!isThere.current) {
            return;
        }
        const name = `${device}.pcapng`;
        if (octets > 0) {
            save(pieces, name);
        }
        const limit = octets >= MOST_CAPTURED ? " A capture ends at 64 MiB; vdevctl capture writes longer ones." : "";
        setProgress({ octets, isRunning: false, problem, said: octets > 0 ? `${name}: ${size(octets)}.${limit}` : "" });
    };
    return { progress, start, stop: () => abort.current?.abort() };
}

/** @param {{wish: Wish, isDisabled: boolean, onWish: (wish: Wish) => void}} props */
function WishInputs({ wish, isDisabled, onWish }) {
    /** @param {keyof Wish} name @returns {(event: any) => void} */
    const change = (name) => ({ target }) =>
        onWish({ ...wish, [name]: target.type === "checkbox" ? target.checked : target.value.trim() });
    return html`
        <fieldset class="filters" disabled=${isDisabled}>
            <legend class="unseen">What is captured</legend>
            <div class="field"><label for="capture-port">Ports</label>
                <input id="capture-port" value=${wish.port} placeholder="all" spellcheck="false" maxlength="100"
                    onInput=${change("port")} /></div>
            <div class="field"><label for="capture-direction">Direction</label>
                <select id="capture-direction" value=${wish.direction} onChange=${change("direction")}>
                    <option value="both">in and out</option><option value="in">in</option><option value="out">out</option>
                </select></div>
            <div class="field"><label for="capture-seconds">Seconds</label>
                <input id="capture-seconds" type="number" min="1" max="86400" value=${wish.seconds} placeholder="until Stop"
                    onInput=${change("seconds")} /></div>
            <label class="check"><input type="checkbox" checked=${wish.dropped} onChange=${change("dropped")} /> Also dropped or lost</label>
        </fieldset>
    `;
}

/** @param {{device: import("../types").Device}} props */
export function Capture({ device }) {
    const [wish, setWish] = useState({ port: "", direction: "both", dropped: true, seconds: "" });
    const { progress, start, stop } = useCapture(device.name);
    return html`
        <section class="card capture" aria-labelledby="capture-title">
            <h3 id="capture-title">Capture to a file</h3>
            <${WishInputs} wish=${wish} isDisabled=${progress.isRunning} onWish=${setWish} />
            <p class="actions">
                ${progress.isRunning
                    ? html`<button type="button" onClick=${stop}>Stop and save</button>`
                    : html`<button type="button" onClick=${() => start(wish)}>Capture</button>`}
                <span role="status">${progress.isRunning ? `Captured ${size(progress.octets)}` : progress.said}</span>
            </p>
            <${Problem} text=${progress.problem} />
            <${Command} text=${`${device.vdevctl} capture ${device.name}.pcapng${wordsOf(wish)}`} />
        </section>
    `;
}
