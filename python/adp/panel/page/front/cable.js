// A port's cable: pull it, plug it in, make it a bad one or a good one.
import { html, useState } from "../vendor/preact.js";
import { useAction, usePanel } from "../use.js";
import { Problem } from "../parts/problem.js";
import { titleOf } from "./words.js";

/** @typedef {Record<string, string | number>} Conditions */

/** The conditions of a bad cable, as the command has them, with values that are worth a try. */
const CONDITIONS = [
    { name: "loss", title: "Loss", hint: "5%" },
    { name: "delay", title: "Delay", hint: "20ms" },
    { name: "jitter", title: "Jitter", hint: "2ms" },
    { name: "rate", title: "Rate", hint: "10M" },
    { name: "corrupt", title: "Corrupt", hint: "1%" },
    { name: "duplicate", title: "Duplicate", hint: "1%" },
];

/**
 * The conditions of a port's cable, null if it is a good one.
 * @param {number} port
 * @param {any} cables the answer to `cables`
 * @returns {Conditions | null}
 */
export function conditionsOf(port, cables) {
    return cables?.cables.find((/** @type {any} */ each) => each.port === port)?.conditions ?? null;
}

/** @param {Conditions} conditions */
export function conditionWords(conditions) {
    const set = CONDITIONS.filter(({ name }) => conditions[name] !== undefined);
    return set.map(({ name }) => `${name} ${conditions[name]}`).join(", ") || "no conditions";
}

/**
 * What the device has counted on a bad cable.
 * @param {{port: number, cables: any}} props
 */
function CableCounts({ port, cables }) {
    const rows = cables.cables.filter((/** @type {any} */ each) => each.port === port);
    return html`
        <ul class="front-cable-counts">
            ${rows.map((/** @type {any} */ row) => html`
                <li key=${row.direction}>
                    ${row.direction === "in" ? "To the device" : "To the host"}: ${row.frames} frames, ${row.lost} lost,
                    ${" "}${row.corrupted} corrupted, ${row.duplicated} duplicated, ${row.waiting} waiting,
                    ${" "}${row.no_room + row.cut} dropped
                </li>
            `)}
        </ul>
    `;
}

/**
 * The fields for a bad cable's conditions; what is not changed is as the cable has it.
 * @param {{conditions: Conditions | null, isOff: boolean,
 *     onMake: (values: Record<string, string>) => Promise<boolean>}} props
 */
function BadCable({ conditions, isOff, onMake }) {
    const [values, setValues] = useState(/** @type {Record<string, string>} */ ({}));
    const shown = (/** @type {string} */ name) => values[name] ?? String(conditions?.[name] ?? "");
    const wanted = Object.fromEntries(
        CONDITIONS.map(({ name }) => [name, shown(name).trim()]).filter(([, value]) => value !== ""),
    );
    const isEmpty = Object.keys(wanted).length === 0;
    const submit = async (/** @type {Event} */ event) => {
        event.preventDefault();
        if (await onMake(wanted)) {
            setValues({});
        }
    };
    const change = (/** @type {any} */ event) => setValues({ ...values, [event.target.name]: event.target.value });
    return html`
        <form class="front-conditions" onSubmit=${submit}>
            ${CONDITIONS.map(({ name, title, hint }) => html`
                <label key=${name}>
                    ${title}
                    <input name=${name} value=${shown(name)} placeholder=${hint} autocomplete="off" disabled=${isOff}
                        onInput=${change} />
                </label>
            `)}
            <button type="submit" disabled=${isOff || isEmpty}>
                ${conditions ? "Change the bad cable" : "Make it a bad cable"}
            </button>
        </form>
    `;
}

/** @param {{row: any, conditions: Conditions | null}} props `row` is the port's of `ports` */
function CableState({ row, conditions }) {
    const place = row.pulled ? "Pulled" : row.present ? "Plugged in" : "No interface, so no cable";
    return html`<p>${place}${conditions ? html`; a bad cable: <b>${conditionWords(conditions)}</b>` : ""}.</p>`;
}

/** @param {{device: import("../types").Device, row: any, cables: any}} props `row` is the port's of `ports` */
export function Cable({ device, row, cables }) {
    const { read_only } = usePanel();
    const { act, problem, isBusy } = useAction(device.name);
    const { port } = row;
    const conditions = conditionsOf(port, cables);
    const isOff = read_only || isBusy || !device.running;
    const isRunning = device.running ? "" : `${device.name} is not running.`;
    const make = (/** @type {Record<string, string>} */ values) => act({ command: "cable", port, ...values });
    const reason = read_only ? "The panel is read-only, so cables cannot be changed here." : isRunning;
    return html`
        <section class="front-cable" aria-label=${`Cable of ${titleOf(port)}`}>
            <h3>Cable</h3>
            <${CableState} row=${row} conditions=${conditions} />
            ${conditions && html`<${CableCounts} port=${port} cables=${cables} />`}
            <p class="front-reason" hidden=${!reason}>${reason}</p>
            <div class="front-actions">
                <button type="button" class="front-pull" disabled=${isOff}
                    onClick=${() => act({ command: row.pulled ? "plug" : "pull", port })}>
                    ${row.pulled ? "Plug the cable in" : "Pull the cable"}
                </button>
                ${conditions && html`
                    <button type="button" class="front-good" disabled=${isOff}
                        onClick=${() => act({ command: "cable", port, clear: true })}>Make it a good cable</button>
                `}
            </div>
            <${BadCable} conditions=${conditions} isOff=${isOff} onMake=${make} />
            <${Problem} text=${problem} />
        </section>
    `;
}
