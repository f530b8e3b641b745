// The list of calls. A call is unfolded to show the calls within it.
import { html, useMemo, useState } from "../vendor/preact.js";

/** @typedef {import("./newest").Call} Call */
/** @typedef {import("./newest").ListedCall} ListedCall */

const UNITS = [{ microseconds: 1e6, name: "s" }, { microseconds: 1e3, name: "ms" }, { microseconds: 1, name: "µs" }];

/** @param {number | null} microseconds */
function durationText(microseconds) {
    if (microseconds === null) {
        return "did not return";
    }
    const unit = UNITS.find((each) => microseconds >= each.microseconds) ?? UNITS[UNITS.length - 1];
    const value = microseconds / unit.microseconds;
    return `${value.toFixed(value < 10 ? 1 : 0)} ${unit.name}`;
}

/** @param {{call: Call, hasFailure?: boolean}} props */
function Mark({ call, hasFailure }) {
    if (call.failed) {
        return html`<span class="calls-mark failed">✕ failed</span>`;
    }
    return hasFailure ? html`<span class="calls-mark inner">! failed within</span>` : null;
}

/** @param {{call: Call}} props */
function Within({ call }) {
    return html`
        <ol class="calls-within">
            ${call.within.map((each, place) => html`
                <li key=${place}>
                    <div class="calls-inner">
                        <code>${each.text}</code>
                        <${Mark} call=${each} />
                        <span class="calls-duration">${durationText(each.microseconds)}</span>
                    </div>
                    ${each.within.length > 0 && html`<${Within} call=${each} />`}
                </li>
            `)}
            ${call.left_out ? html`<li class="calls-note">${call.left_out} more calls within it are left out</li>` : null}
        </ol>
    `;
}

/** @param {Call} call */
const nameOf = (call) => call.text.split("(", 1)[0];

/** @param {{call: ListedCall, hasThreads: boolean}} props */
function Row({ call, hasThreads }) {
    const [isOpen, setOpen] = useState(false);
    const id = `call-${call.key}`;
    const count = call.within.length;
    return useMemo(() => html`
        <li class=${`calls-call${call.failed ? " failed" : ""}`}>
            <div class="calls-row">
                ${count
                    ? html`<button type="button" class="calls-fold" aria-expanded=${isOpen ? "true" : "false"}
                        aria-controls=${isOpen ? id : null} onClick=${() => setOpen((old) => !old)}
                        aria-label=${`${count} ${count === 1 ? "call" : "calls"} within ${nameOf(call)}`}>
                        <span aria-hidden="true">${isOpen ? "▾" : "▸"} ${count}</span>
                    </button>`
                    : html`<span class="calls-fold"></span>`}
                <code class="calls-text">${call.text}</code>
                <${Mark} call=${call} hasFailure=${call.hasFailure} />
                <span class="calls-facts">
                    <span class="calls-duration">${durationText(call.microseconds)}</span>
                    <span class="calls-time">at ${call.at.toFixed(6)} s</span>
                    ${hasThreads && html`<span>thread ${call.process}/${call.thread}</span>`}
                    <span class="calls-recording" title=${call.recording}>${call.recording}</span>
                </span>
            </div>
            ${isOpen && html`<div id=${id}><${Within} call=${call} /></div>`}
        </li>
    `, [call, hasThreads, isOpen]);
}

/** @param {{calls: ListedCall[]}} props */
export function CallList({ calls }) {
    const hasThreads = useMemo(() => new Set(calls.map((call) => `${call.process}/${call.thread}`)).size > 1, [calls]);
    return html`
        <ol class="calls-list card" aria-label="Calls, the newest first">
            ${calls.map((call) => html`<${Row} key=${call.key} call=${call} hasThreads=${hasThreads} />`)}
        </ol>
    `;
}
