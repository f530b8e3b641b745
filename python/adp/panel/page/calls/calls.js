// The view "Calls": the newest calls of the management programs that are traced, and the driver calls of each.
import { html, useMemo, useState } from "../vendor/preact.js";
import { Command } from "../parts/command.js";
import { Problem } from "../parts/problem.js";
import { CallList } from "./list.js";
import { MOST_KEPT, chosen, useNewestCalls } from "./newest.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {import("./newest").Newest} Newest */

const MOST_SHOWN = 100;

/** @param {Device} device */
const recordCommand = (device) =>
    `${device.exec} sh -c 'adptrace record -o "$VDEVICE_DIR/agent.adptrace" -- adpsh adp_vlan_default_get'`;

/** @param {{device: Device, isOpen: boolean}} props */
function HowTo({ device, isOpen }) {
    return html`
        <details class="card calls-how" open=${isOpen}>
            <summary>Trace a program</summary>
            <p>Calls are shown here of programs that run under <code>adptrace record</code> and write their recording into the
                run folder of ${device.name}, as <code>NAME.adptrace</code>. Put your program in the place of <code>adpsh</code>:</p>
            <${Command} text=${recordCommand(device)} />
        </details>
    `;
}

/** @param {{newest: Newest}} props */
function Recordings({ newest }) {
    const all = [...newest.recordings.values()];
    return html`
        <ul class="calls-recordings" aria-label="Recordings">
            ${all.map((each) => html`
                <li key=${each.name}><code>${each.name}</code>${" "}
                    ${each.problem ? html`<span class="calls-mark failed">✕ ${each.problem}</span>`
                        : each.state === "ended" ? html`<span>■ ended</span>` : html`<span>● followed</span>`}
                </li>
            `)}
        </ul>
    `;
}

/**
 * @param {{filter: {text: string, isFailed: boolean}, setFilter: (filter: any) => void, held: Newest | null,
 *     setHeld: (held: Newest | null) => void, newest: Newest}} props
 */
function Controls({ filter, setFilter, held, setHeld, newest }) {
    const since = held ? newest.calls.findIndex((call) => call === held.calls[0]) : 0;
    const waiting = since < 0 ? newest.calls.length : since;
    return html`
        <form class="calls-controls" onSubmit=${(/** @type {Event} */ event) => event.preventDefault()}>
            <button type="button" class="calls-pause" aria-pressed=${held ? "true" : "false"}
                onClick=${() => setHeld(held ? null : newest)}>${held ? "▶ Go on" : "❚❚ Pause"}</button>
            <label>Text <input type="search" value=${filter.text} placeholder="vlan"
                onInput=${(/** @type {any} */ event) => setFilter({ ...filter, text: event.target.value })} /></label>
            <label><input type="checkbox" checked=${filter.isFailed}
                onChange=${(/** @type {any} */ event) => setFilter({ ...filter, isFailed: event.target.checked })} />
                Only failed</label>
            ${held && html`<span class="calls-waiting">paused, ${waiting} newer ${waiting === 1 ? "call" : "calls"}</span>`}
        </form>
    `;
}

/** @param {{shown: number, found: number, kept: number, missed: number}} props */
function Counts({ shown, found, kept, missed }) {
    const text = `${shown} of ${kept === MOST_KEPT ? `the newest ${kept}` : kept} calls` +
        `${shown < found && found < kept ? `, the newest of ${found} that are chosen` : ""}${missed ? `; ${missed} were missed` : ""}`;
    return html`<p class="calls-counts">${text}</p>`;
}

/** @param {{device: Device, rest: string[]}} props */
export function Calls({ device }) {
    const { newest, problem } = useNewestCalls(device.name);
    const [held, setHeld] = useState(/** @type {Newest | null} */ (null));
    const [filter, setFilter] = useState({ text: "", isFailed: false });
    const { calls } = held ?? newest;
    const found = useMemo(() => chosen(calls, filter), [calls, filter]);
    const shown = found.slice(0, MOST_SHOWN);
    return html`
        <h2>Calls of programs that manage ${device.name}</h2>
        <${Problem} text=${problem} />
        <${Recordings} newest=${newest} />
        ${newest.recordings.size > 0 && html`
            <${Controls} ...${{ filter, setFilter, held, setHeld, newest }} />
            <${Counts} shown=${shown.length} found=${found.length} kept=${calls.length} missed=${newest.missed} />
            ${shown.length > 0 && html`<${CallList} calls=${shown} />`}
            ${calls.length === 0 && html`<p>No call has ended yet.</p>`}
            ${calls.length > 0 && shown.length === 0 && html`<p>No call is chosen.</p>`}
        `}
        ${newest.hasBegun && html`<${HowTo} device=${device} isOpen=${newest.recordings.size === 0} />`}
    `;
}
