// The view "Explain": a frame is composed, and its way through the device is drawn. Address: #explain/DEVICE/PORT/HEX.
import { html, useEffect, useRef, useState } from "../vendor/preact.js";
import { Command } from "../parts/command.js";
import { Problem } from "../parts/problem.js";
import { addressOf, useConnection } from "../use.js";
import { Compose } from "./compose.js";
import { parsePorts, useDevicePorts } from "./device_ports.js";
import { firstFrame } from "./frame.js";
import { dumpOf, hexOf, octetsOfHex } from "./hex.js";
import { hasSwitchTag, withSwitchTag } from "./switch_tag.js";
import { Outcome, Way } from "./way.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {{port: number, text: string}} Question */
/** @typedef {{frames: import("./account.js").Account[] | null, error: string | null}} Explanation */

const PAUSE_MILLISECONDS = 200;
const MOST_USER_PORTS = 255;
const OPCODE_SWITCHED = 1;

/**
 * What an address asks.
 * @param {string[]} rest
 * @returns {Question}
 */
function questionOf(rest) {
    const [port = "", hex = ""] = rest;
    const [named] = parsePorts(port, MOST_USER_PORTS) ?? [];
    const { octets } = octetsOfHex(hex);
    return { port: named ?? 1, text: octets ? dumpOf(octets) : hex || dumpOf(firstFrame()) };
}

/**
 * What the device says, a moment after the question was changed, and when it is asked again.
 * @param {string} device
 * @param {number} port
 * @param {string | null} frame digits
 * @param {number} times
 * @returns {Explanation}
 */
function useExplanation(device, port, frame, times) {
    const connection = useConnection();
    const [explanation, setExplanation] = useState(/** @type {Explanation} */ ({ frames: null, error: null }));
    const newest = useRef("");
    useEffect(() => {
        const question = `${port} ${frame} ${times}`;
        newest.current = question;
        const ask = async () => {
            const request = { command: "explain", port, frame, texts: true };
            const next = await connection.ask(device, request).then(
                (answer) => ({ frames: answer.frames, error: null }),
                (problem) => ({ frames: null, error: problem.message }),
            );
            if (newest.current === question) {
                setExplanation((old) => ({ frames: next.frames ?? old.frames, error: next.error }));
            }
        };
        const timer = frame === null ? undefined : setTimeout(ask, PAUSE_MILLISECONDS);
        return () => clearTimeout(timer);
    }, [device, port, frame, times, connection.isConnected]);
    return explanation;
}

/**
 * The question, in the page's address, too.
 * @param {string} device
 * @param {string[]} rest
 * @returns {[Question, (question: Question) => void]}
 */
function useQuestion(device, rest) {
    const [question, setQuestion] = useState(() => questionOf(rest));
    const own = useRef(rest);
    useEffect(() => {
        if (own.current !== rest) {
            own.current = rest;
            setQuestion(questionOf(rest));
        }
    }, [rest]);
    useEffect(() => {
        const { octets } = octetsOfHex(question.text);
        if (octets) {
            history.replaceState(null, "", addressOf("explain", device, question.port, hexOf(octets)));
        }
    }, [device, question]);
    return [question, setQuestion];
}

/**
 * The frame as it comes in by another port: from the CPU alone it has a switch tag.
 * @param {Uint8Array} frame
 * @param {number} port
 */
function asFrom(frame, port) {
    if (hasSwitchTag(frame) === (port === 0)) {
        return frame;
    }
    return withSwitchTag(frame, port === 0 ? { opcode: OPCODE_SWITCHED, ports: [] } : null);
}

/** @param {{frames: import("./account.js").Account[]}} props */
function Ways({ frames }) {
    return html`${frames.map((account, index) => html`
        <section key=${index} class="card way-card">
            <h3>${index === 0 ? "Its way" : `It comes back by loopback (${index})`}: <${Outcome} account=${account} /></h3>
            <${Way} account=${account} />
        </section>
    `)}`;
}

/** @param {{device: Device, rest: string[]}} props */
export function Explain({ device, rest }) {
    const [question, setQuestion] = useQuestion(device.name, rest);
    const [times, setTimes] = useState(0);
    const ports = useDevicePorts(device.name);
    const { octets, error } = octetsOfHex(question.text);
    const readable = useRef(octets ?? firstFrame());
    readable.current = octets ?? readable.current;
    const digits = octets && hexOf(octets);
    const explanation = useExplanation(device.name, question.port, digits, times);
    /** @param {number} port */
    const onPort = (port) => setQuestion({ port, text: octets ? dumpOf(asFrom(octets, port)) : question.text });
    return html`
        <h2>What would become of a frame</h2>
        <div class="explain">
            <div>
                <${Compose} port=${question.port} ports=${ports} frame=${readable.current} text=${question.text} error=${error}
                    onPort=${onPort} onText=${(/** @type {string} */ text) => setQuestion({ port: question.port, text })} />
                <p><button type="button" disabled=${!digits} onClick=${() => setTimes(times + 1)}>Explain</button></p>
                ${digits && html`<p><${Command}
                    text=${`${device.vdevctl} explain ${digits} ${question.port === 0 ? "--cpu" : `--port ${question.port}`}`} /></p>`}
            </div>
            <div class=${`ways ${error || explanation.error ? "old" : ""}`} aria-live="polite">
                <${Problem} text=${explanation.error} />
                ${explanation.frames && html`<${Ways} frames=${explanation.frames} />`}
            </div>
        </div>
    `;
}
