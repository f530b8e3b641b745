// The view "Front": the box with its lights, and the port that one has chosen.
import { html, useCallback, useEffect, useMemo, useRef, useState } from "../vendor/preact.js";
import { addressOf, useAnswer } from "../use.js";
import { Problem } from "../parts/problem.js";
import { Details } from "./details.js";
import { Legend } from "./legend.js";
import { Plate } from "./plate.js";
import { facesOf, linkChanges, summaryOf } from "./state.js";
import { EVERY_SECONDS, beginningOf, useTraffic } from "./traffic.js";

/** @typedef {import("./state.js").Face} Face */

const SETTINGS_SECONDS = 1;
const MOST_SAID = 4;
const NO_RATES = new Map();

/**
 * What has changed at the links last, in words, for screen readers too.
 * @param {Face[]} faces
 * @returns {string}
 */
function useNews(faces) {
    const before = useRef(/** @type {Face[]} */ ([]));
    const [news, setNews] = useState("");
    useEffect(() => {
        const changes = linkChanges(before.current, faces);
        before.current = faces;
        if (changes.length > 0) {
            const rest = changes.length - MOST_SAID;
            setNews(`${changes.slice(0, MOST_SAID).join(". ")}${rest > 0 ? `. And ${rest} more` : ""}.`);
        }
    }, [faces]);
    return news;
}

/**
 * What the device answers, read again and again, and the ports as they are seen.
 * @param {import("../types").Device} device
 */
function useFaces(device) {
    /** @param {string} command */
    const read = (command, every = SETTINGS_SECONDS) => useAnswer(device.name, { command }, every);
    const { answer: ports, error } = read("ports", EVERY_SECONDS);
    const counters = read("counters", EVERY_SECONDS).answer;
    const trunks = read("trunks").answer;
    const groups = read("groups").answer;
    const mirrors = read("mirrors").answer;
    const cables = read("cables").answer;
    const traffic = useTraffic(counters);
    const problem = !device.running ? "not running" : error ? "no answer" : "";
    const answers = { ports, trunks, groups, mirrors, cables };
    const dropping = [...traffic.dropping].join();
    const faces = useMemo(
        () => (ports ? facesOf(answers, problem ? NO_RATES : traffic.rates, traffic.dropping) : []),
        [ports, trunks, groups, mirrors, cables, traffic.rates, dropping, problem],
    );
    return { answers, counters, traffic, faces, error, problem };
}

/**
 * The chosen port in the address, if the device has it.
 * @param {Face[]} faces
 * @param {string[]} rest
 */
function chosen(faces, rest) {
    const port = rest[0] === "cpu" ? 0 : Number(rest[0] || NaN);
    return faces.find((face) => face.port === port) ?? null;
}

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Front({ device, rest }) {
    const { answers, counters, traffic, faces, error, problem } = useFaces(device);
    const news = useNews(faces);
    const face = chosen(faces, rest);
    useEffect(() => void beginningOf(device.name, counters), [device.name, counters]);
    const onSelect = useCallback((/** @type {number} */ port) => {
        location.hash = addressOf("front", device.name, port === 0 ? "cpu" : port);
    }, [device.name]);
    const onClose = () => {
        document.getElementById(`front-port-${face?.port}`)?.focus();
        location.hash = addressOf("front", device.name);
    };
    if (faces.length === 0) {
        return html`<h2>${device.name}</h2><p hidden=${error}>Reading the ports ...</p><${Problem} text=${error} />`;
    }
    return html`
        <div class="front">
            <h2 class="front-title">Front of ${device.name}</h2>
            <${Plate} name=${device.name} problem=${problem} faces=${faces} selected=${face?.port ?? null}
                onSelect=${onSelect} />
            <div class="front-words"><p>${summaryOf(faces)}</p><p class="front-news" role="status">${news}</p></div>
            <${Legend} />
            ${face && html`
                <${Details} device=${device} face=${face} answers=${answers} counters=${counters} traffic=${traffic}
                    onClose=${onClose} />
            `}
        </div>
    `;
}
