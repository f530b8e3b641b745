// The form that makes a port's cable a bad one, or a good one again, and what became of the frames on it.
import { html, useEffect, useState } from "../vendor/preact.js";
import { useAction, useAnswer, usePanel } from "../use.js";
import { Command } from "./command.js";
import { Problem } from "./problem.js";
import { Table } from "./table.js";

/** @typedef {Record<string, string | number>} Conditions as the device says them: "5%", "20ms", 1 */

/** The conditions, in the order in which they act on a frame. A number without a unit has `unit`. */
const CONDITIONS = [
    { name: "loss", title: "Loss", unit: "%", example: "5%" },
    { name: "duplicate", title: "Duplicates", unit: "%", example: "1%" },
    { name: "corrupt", title: "Corruption", unit: "%", example: "0.1%" },
    { name: "rate", title: "Rate", unit: "M", example: "100M" },
    { name: "delay", title: "Delay", unit: "ms", example: "20ms" },
    { name: "jitter", title: "Jitter", unit: "ms", example: "2ms" },
    { name: "seed", title: "Seed", unit: "", example: "1" },
];

const COUNTS = ["frames", "passed", "lost", "duplicated", "corrupted", "waiting", "no_room", "cut"];

const COLUMNS = [
    { name: "direction", title: "Direction", value: (/** @type {any} */ row) => row.direction },
    ...COUNTS.map((name) => ({
        name,
        title: name === "no_room" ? "no room" : name,
        value: (/** @type {any} */ row) => row[name],
        isNumber: true,
    })),
];

/**
 * The rows of `cables` that are of a port, one for each direction; none if its cable is a good one.
 * @param {any} answer
 * @param {number} port
 * @returns {any[]}
 */
export function cableRows(answer, port) {
    return answer?.cables.filter((/** @type {any} */ row) => row.port === port) ?? [];
}

/**
 * Conditions in words: loss 5%, delay 20ms.
 * @param {Conditions} conditions
 */
export function conditionsText(conditions) {
    const named = CONDITIONS.filter(({ name }) => name in conditions && !(name === "seed" && conditions.seed === 1));
    return named.map(({ name }) => `${name} ${conditions[name]}`).join(", ");
}

/**
 * What a person has typed, as the device takes it.
 * @param {Conditions} typed
 * @returns {Record<string, string>}
 */
function conditionsOf(typed) {
    const given = CONDITIONS.map(({ name, unit }) => {
        const text = String(typed[name] ?? "").trim();
        return [name, /^[0-9.]+$/.test(text) ? text + unit : text];
    });
    return Object.fromEntries(given.filter(([, text]) => text !== ""));
}

/** @param {{values: Conditions, onInput: (name: string, text: string) => void}} props */
function Fields({ values, onInput }) {
    return CONDITIONS.map(({ name, title, example }) => html`
        <label key=${name}>
            <span>${title}</span>
            <input name=${name} size="7" autocomplete="off" spellcheck=${false} placeholder=${example}
                value=${values[name] ?? ""}
                onInput=${(/** @type {any} */ event) => onInput(name, event.target.value)} />
        </label>
    `);
}

/**
 * The command that does the same, for a terminal.
 * @param {import("../types").Panel} panel
 * @param {string} device
 * @param {number} port
 */
function cableCommand(panel, device, port) {
    const isOfLab = panel.lab?.nodes.some((node) => node.name === device);
    return isOfLab
        ? `${panel.lab?.command} cable ${device}:${port}`
        : `${panel.devices.find((each) => each.name === device)?.vdevctl} cable ${port}`;
}

/**
 * What is typed, until the device has other conditions than before; its own conditions otherwise.
 * @param {Conditions} conditions
 * @returns {[Conditions, (name: string, text: string) => void]}
 */
function useTyped(conditions) {
    const [typed, setTyped] = useState(/** @type {Conditions | null} */ (null));
    const values = typed ?? conditions;
    useEffect(() => setTyped(null), [JSON.stringify(conditions)]);
    return [values, (name, text) => setTyped((old) => ({ ...(old ?? conditions), [name]: text }))];
}

/** @param {{device: string, port: number}} props */
export function CableForm({ device, port }) {
    const panel = usePanel();
    const rows = cableRows(useAnswer(device, { command: "cables" }).answer, port);
    const isBad = rows.length > 0;
    const [values, setValue] = useTyped(rows[0]?.conditions ?? {});
    const { act, problem, isBusy } = useAction(device);
    const conditions = conditionsOf(values);
    const options = Object.entries(conditions).map(([name, text]) => `--${name} ${text}`);
    const apply = (/** @type {Event} */ event) => {
        event.preventDefault();
        act({ command: "cable", port, ...conditions });
    };
    const command = cableCommand(panel, device, port);
    const isRunning = panel.devices.some((each) => each.name === device && each.running);
    return html`
        <form class="cable-form" onSubmit=${apply} aria-label=${`Conditions of the cable at ${device} port ${port}`}>
            <p>${isBad ? `A bad cable: ${conditionsText(rows[0].conditions)}.` : "A good cable."}</p>
            <fieldset disabled=${panel.read_only || isBusy || !isRunning}>
                <legend>Frames in both directions have</legend>
                <div class="cable-fields"><${Fields} values=${values} onInput=${setValue} /></div>
                <button type="submit" disabled=${options.length === 0}>${isBad ? "Change" : "Make it bad"}</button>
                ${" "}
                <button type="button" disabled=${!isBad}
                    onClick=${() => act({ command: "cable", port, clear: true })}>Make it good</button>
            </fieldset>
            <${Problem} text=${problem} />
            <p><${Command} text=${`${command} ${options.join(" ") || "--clear"}`} /></p>
            ${isBad && html`
                <${Table} caption=${`Frames on the cable at ${device} port ${port}`} columns=${COLUMNS} rows=${rows}
                    keyOf=${(/** @type {any} */ row) => row.direction} />
            `}
        </form>
    `;
}
