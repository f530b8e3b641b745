// The view "Front": the box with its lights, and the port that one has chosen.
import { html, useCallback, useEffect, useRef, useState } from "../vendor/preact.js";
import { addressOf, useAnswer } from "../use.js";
import { Problem } from "../parts/problem.js";
import { Details } from "./details.js";
import { Legend } from "./legend.js";
import { Plate } from "./plate.js";
import { facesOf, linkChanges } from "./state.js";
import { EVERY_SECONDS, beginningOf, useTraffic } from "./traffic.js";

/** @typedef {import("./state.js").Face} Face */

const SLOW = 1;
const MOST_SAID = 4;

/**
 * Link changes in words, for screen readers too.
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
            setNews(changes.slice(0, MOST_SAID).join(". ") + (rest > 0 ? `. And ${rest} more.` : "."));
        }
    }, [faces]);
    return news;
}

/**
 * What the plate shows, in a sentence.
 * @param {Face[]} faces
 */
function summary(faces) {
    const users = faces.filter((face) => face.port !== 0);
    const with_ = (/** @type {string} */ kind) => users.filter((face) => face.marks.some((mark) => mark.kind === kind)).length;
    const parts = [
        [users.filter((face) => !face.isPresent).length, "without an interface"],
        [with_("pulled"), "with a pulled cable"],
        [with_("bad"), "with a bad cable"],
        [with_("disabled"), "disabled"],
        [with_("blocked"), "held by spanning tree"],
        [with_("unauthorised"), "unauthorised"],
        [with_("dropping"), "dropping frames now"],
    ].filter(([count]) => Number(count) > 0).map(([count, words]) => `${count} ${words}`);
    return `${users.filter((face) => face.isUp).length} of ${users.length} ports have a link${parts.length > 0 ? `; ${parts.join(", ")}` : ""}.`;
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
    const read = (/** @type {string} */ command, /** @type {number} */ every) => useAnswer(device.name, { command }, every);
    const { answer: ports, error } = read("ports", EVERY_SECONDS);
    const counters = read("counters", EVERY_SECONDS).answer;
    const answers = {
        ports, trunks: read("trunks", SLOW).answer, groups: read("groups", SLOW).answer, mirrors: read("mirrors", SLOW).answer,
        cables: read("cables", SLOW).answer,
    };
    const { rates, moments, dropping } = useTraffic(counters);
    const faces = ports ? facesOf(answers, rates, dropping) : [];
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
    if (!ports) {
        return html`<div class="front"><h2>${device.name}</h2><${Problem} text=${error} />${error ? "" : html`<p>Reading the ports ...</p>`}</div>`;
    }
    return html`
        <div class="front">
            <h2 class="front-title">${device.name}</h2>
            <${Plate} name=${device.name} isRunning=${device.running && !error} faces=${faces} selected=${face?.port ?? null} onSelect=${onSelect} />
            <div class="front-words"><p>${summary(faces)}</p><p class="front-news" role="status">${news}</p></div>
            <${Legend} />
            ${face && html`
                <${Details} device=${device} face=${face} answers=${answers} counters=${counters} moments=${moments} onClose=${onClose} />
            `}
        </div>
    `;
}
