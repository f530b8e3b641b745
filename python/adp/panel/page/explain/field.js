// A field of a frame, to be changed. What does not fit is said below it and changes nothing.
import { html, useState } from "../vendor/preact.js";
import { fieldText, withField } from "./frame.js";

/** @typedef {(frame: Uint8Array) => void} OnFrame */

/** @param {{id: string, field: import("./layout.js").Field, value: string, onText: (text: string) => void}} props */
function Choices({ id, field, value, onText }) {
    const choices = field.choices ?? [];
    const isKnown = choices.some((choice) => choice.value === Number(value));
    return html`
        <select id=${id} value=${String(Number(value))} onChange=${(/** @type {any} */ event) => onText(event.target.value)}>
            ${!isKnown && html`<option value=${String(Number(value))}>${value}</option>`}
            ${choices.map((choice) => html`<option value=${String(choice.value)}>${choice.title}</option>`)}
        </select>
    `;
}

/** @param {{frame: Uint8Array, field: import("./layout.js").Field, onFrame: OnFrame}} props */
export function FieldInput({ frame, field, onFrame }) {
    const [draft, setDraft] = useState(/** @type {string | null} */ (null));
    const value = fieldText(frame, field);
    const error = draft === null ? null : withField(frame, field, draft).error;
    const id = `field-${field.name}`;
    /** @param {string} text */
    const onText = (text) => {
        setDraft(text);
        const changed = withField(frame, field, text);
        if (changed.frame) {
            onFrame(changed.frame);
        }
    };
    /** @param {string} text a number of a choice */
    const onChoice = (text) => onText(field.kind === "hex" ? `0x${Number(text).toString(16)}` : text);
    return html`
        <div class=${`field ${field.kind}`}>
            <label for=${id}>${field.title}</label>
            ${field.choices
                ? html`<${Choices} id=${id} field=${field} value=${value} onText=${onChoice} />`
                : html`<input id=${id} value=${draft ?? value} spellcheck="false" autocomplete="off" aria-invalid=${error ? "true" : null}
                    aria-describedby=${error ? `${id}-error` : null}
                    onInput=${(/** @type {any} */ event) => onText(event.target.value)} onBlur=${() => setDraft(null)} />`}
            ${error && html`<span class="wrong" id=${`${id}-error`}>${error}</span>`}
        </div>
    `;
}
