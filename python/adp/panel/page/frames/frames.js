// The view "Frames": what becomes of frames as they pass, and captures. Address: #frames/DEVICE/FILTERS.
import { html, useEffect, useRef, useState } from "../vendor/preact.js";
import { useDevicePorts } from "../explain/device_ports.js";
import { Outcome, Way } from "../explain/way.js";
import { Command } from "../parts/command.js";
import { portName } from "../parts/ports.js";
import { Problem } from "../parts/problem.js";
import { addressOf, useAnswer, useStream } from "../use.js";
import { Capture } from "./capture.js";
import { FilterForm, addressOfFilters, filtersOfAddress, requestOf, wordsOf } from "./filters.js";
import { Keep, MOST_FRAMES } from "./keep.js";
import { FrameList } from "./list.js";
import { rebuiltFrame } from "./rebuild.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {import("./filters.js").Filters} Filters */

const SHOWN_MILLISECONDS = 100;
const TYPING_MILLISECONDS = 400;

/**
 * The frames that are kept, and what shows them anew: at most ten times a second.
 * @returns {{keep: Keep, show: () => void}}
 */
function useKeep() {
    const [keep] = useState(() => new Keep());
    const [, setTimes] = useState(0);
    const timer = useRef(/** @type {any} */ (null));
    useEffect(() => () => clearTimeout(timer.current), []);
    const show = () => {
        timer.current ??= setTimeout(() => {
            timer.current = null;
            setTimes((times) => times + 1);
        }, SHOWN_MILLISECONDS);
    };
    return { keep, show };
}

/**
 * Filters as they are written, and a moment later as they are asked for; in the page's address, too.
 * @param {string} device
 * @param {string[]} rest
 */
function useFilters(device, rest) {
    const [written, setWritten] = useState(() => filtersOfAddress(rest[0]));
    const [asked, setAsked] = useState(written);
    const own = useRef(rest);
    useEffect(() => {
        if (own.current !== rest) {
            own.current = rest;
            setWritten(filtersOfAddress(rest[0]));
        }
    }, [rest]);
    useEffect(() => {
        const timer = setTimeout(() => {
            setAsked(written);
            const text = addressOfFilters(written);
            history.replaceState(null, "", addressOf("frames", device, ...(text ? [text] : [])));
        }, TYPING_MILLISECONDS);
        return () => clearTimeout(timer);
    }, [written]);
    return { written, asked, setWritten };
}

/** @param {{keep: Keep, onChange: () => void}} props */
function Actions({ keep, onChange }) {
    const isPaused = keep.passed !== null;
    const pause = () => {
        isPaused ? keep.goOn() : keep.pause();
        onChange();
    };
    const clear = () => {
        keep.clear();
        onChange();
    };
    const counts = [
        `${keep.seen} frames`, keep.missed > 0 && `${keep.missed} missed`, isPaused && `${keep.passed} since the list stands still`,
        keep.seen > MOST_FRAMES && `the newest ${MOST_FRAMES} are kept`,
    ];
    return html`
        <p class="actions">
            <button type="button" aria-pressed=${isPaused ? "true" : "false"} onClick=${pause}>${isPaused ? "Go on" : "Pause"}</button>
            <button type="button" onClick=${clear}>Clear</button>
            <span class="frame-counts">${counts.filter(Boolean).join(", ")}</span>
        </p>
    `;
}

/** @param {{device: string, account: import("../explain/account.js").Account}} props */
function Details({ device, account }) {
    const ports = useDevicePorts(device);
    const hex = rebuiltFrame(account, ports);
    return html`
        <section class="card way-card" aria-label="The selected frame">
            <h3>Frame at ${account.time?.toFixed(6)}, port ${portName(account.port)}: <${Outcome} account=${account} /></h3>
            <${Way} account=${account} />
            ${hex && html`
                <p><a class="again" href=${addressOf("explain", device, portName(account.port), hex)}>Explain this frame again</a>
                ${" "}with the tables as they are now. It is made from its header and length; the other octets are not known.</p>
            `}
        </section>
    `;
}

/** @param {{device: Device, rest: string[]}} props */
export function Frames({ device, rest }) {
    const { written, asked, setWritten } = useFilters(device.name, rest);
    const { keep, show } = useKeep();
    const [selected, setSelected] = useState(/** @type {import("./keep.js").Entry | null} */ (null));
    const reasons = Object.keys(useAnswer(device.name, { command: "counters", port: 0 }, 60).answer?.counters[0]?.drops ?? {});
    const problem = useStream(device.name, requestOf(asked), (lines) => {
        keep.take(lines);
        show();
    });
    /** @param {number} id */
    const onSelect = (id) => setSelected(keep.entries.find((entry) => entry.id === id) ?? null);
    return html`
        <h2>Frames as they pass</h2>
        <${FilterForm} filters=${written} reasons=${reasons} onFilters=${setWritten} />
        <${Problem} text=${problem} />
        <${Actions} keep=${keep} onChange=${show} />
        <div class="frames-view">
            <div>
                <${FrameList} entries=${keep.entries} selected=${selected?.id ?? null} onSelect=${onSelect} />
                <p><${Command} text=${`${device.vdevctl} follow${wordsOf(asked)}`} /></p>
                <${Capture} device=${device} />
            </div>
            ${selected?.account
                ? html`<${Details} device=${device.name} account=${selected.account} />`
                : html`<p class="card hint">Select a frame by a click or the arrow keys: its steps and ports appear here.</p>`}
        </div>
    `;
}
