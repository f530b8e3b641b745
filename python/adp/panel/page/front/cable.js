// A port's cable: pull it, plug it in, make it a bad one or a good one.
import { html, useState } from "../vendor/preact.js";
import { useAction, usePanel } from "../use.js";
import { Problem } from "../parts/problem.js";
import { titleOf } from "./words.js";

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
 * @returns {Record<string, string | number> | null}
 */
export function conditionsOf(port, cables) {
    return cables?.cables.find((/** @type {any} */ each) => each.port === port)?.conditions ?? null;
}

/** @param {Record<string, string | number>} conditions */
export function conditionWords(conditions) {
    const set = CONDITIONS.filter(({ name }) => conditions[name] !== undefined);
    return set.map(({ name }) => `${name} ${conditions[name]}`).join(", ") || "no conditions";
}

/**
 * What the device counted on a bad cable.
 * @param {{port: number, cables: any}} props
 */
function CableCounts({ port, cables }) {
    const rows = cables.cables.filter((/** @type {any} */ each) => each.port === port);
    return html`
        <ul class="front-cable-counts">
            ${rows.map((/** @type {any} */ row) => html`
                <li>${row.direction === "in" ? "To the device" : "To the host"}: ${row.frames} frames came, ${row.lost} lost,
                    ${" "}${row.corrupted} corrupted, ${row.duplicated} duplicated, ${row.waiting} wait, ${row.no_room + row.cut} dropped</li>
            `)}
        </ul>
    `;
}

/**
 * @param {{conditions: Record<string, string | number> | null, isOff: boolean, onMake: (values: Record<string, string>) => void}} props
 */
function Conditions({ conditions, isOff, onMake }) {
    const [values, setValues] = useState(/** @type {Record<string, string>} */ ({}));
    /** @param {string} name */
    const shown = (name) => values[name] ?? String(conditions?.[name] ?? "");
    const wanted = Object.fromEntries(CONDITIONS.map(({ name }) => [name, shown(name).trim()]).filter(([, value]) => value !== ""));
    const isEmpty = Object.keys(wanted).length === 0;
    /** @param {Event} event */
    const submit = (event) => {
        event.preventDefault();
        if (!isEmpty) {
            onMake(wanted);
            setValues({});
        }
    };
    return html`
        <form class="front-conditions" onSubmit=${submit}>
            ${CONDITIONS.map(({ name, title, hint }) => html`
                <label>${title}
                    <input name=${name} value=${shown(name)} placeholder=${hint} size="6" disabled=${isOff} autocomplete="off"
                        onInput=${(/** @type {any} */ event) => setValues({ ...values, [name]: event.target.value })} />
                </label>
            `)}
            <button type="submit" disabled=${isOff || isEmpty}>${conditions ? "Change the bad cable" : "Make it a bad cable"}</button>
        </form>
    `;
}

/** @param {{device: import("../types").Device, row: any, cables: any}} props `row` is the port's of `ports` */
export function Cable({ device, row, cables }) {
    const { read_only } = usePanel();
    const { act, problem, isBusy } = useAction(device.name);
    const { port } = row;
    const conditions = conditionsOf(port, cables);
    const isOff = read_only || isBusy || !device.running;
    const reason = read_only ? "The panel is read-only: it pulls no cables." : device.running ? null : `${device.name} is not running.`;
    const pull = () => act({ command: row.pulled ? "plug" : "pull", port });
    return html`
        <section aria-label=${`Cable of ${titleOf(port).toLowerCase()}`}>
            <h3>Cable</h3>
            <p>${row.pulled ? "Pulled" : row.present ? "Plugged in" : "No interface, so no cable"}${conditions
                ? html`, a bad one: <b>${conditionWords(conditions)}</b>` : row.present ? ", a good one" : ""}.</p>
            ${conditions && html`<${CableCounts} port=${port} cables=${cables} />`}
            ${reason && html`<p class="front-reason">${reason}</p>`}
            <div class="front-actions">
                <button type="button" class="front-pull" disabled=${isOff} onClick=${pull}>${row.pulled ? "Plug the cable in" : "Pull the cable"}</button>
                ${conditions && html`
                    <button type="button" class="front-good" disabled=${isOff} onClick=${() => act({ command: "cable", port, clear: true })}>
                        Make it a good cable</button>
                `}
            </div>
            <${Conditions} key=${port} conditions=${conditions} isOff=${isOff} onMake=${(/** @type {any} */ values) => act({ command: "cable", port, ...values })} />
            <${Problem} text=${problem} />
        </section>
    `;
}
