// A frame, to be composed: its port, its fields and its octets, which follow each other.
import { html } from "../vendor/preact.js";
import { portName } from "../parts/ports.js";
import { FieldInput } from "./field.js";
import { withLength, withTag, withTemplate, withoutTag } from "./frame.js";
import { MOST_OCTETS, dumpOf } from "./hex.js";
import { sectionsOf, tagsOf } from "./layout.js";
import { hasSwitchTag } from "./switch_tag.js";
import { SwitchTagInput } from "./switch_tag_input.js";
import { TEMPLATES, templateOf } from "./templates.js";

/** @typedef {(frame: Uint8Array) => void} OnFrame */

const MOST_TAGS = 8;
const LEAST_LENGTH = 14;

/** @param {{port: number, ports: import("./device_ports.js").DevicePort[], onPort: (port: number) => void}} props */
function PortInput({ port, ports, onPort }) {
    const isKnown = ports.some((each) => each.port === port);
    return html`
        <div class="field">
            <label for="explain-port">Comes in by</label>
            <select id="explain-port" value=${String(port)}
                onChange=${(/** @type {any} */ event) => onPort(Number(event.target.value))}>
                ${!isKnown && html`<option value=${String(port)}>port ${portName(port)}</option>`}
                ${ports.map((each) => html`
                    <option value=${String(each.port)}>${each.port === 0 ? "the CPU" : `port ${each.port}`}${each.up ? "" : ", down"}</option>
                `)}
            </select>
        </div>
    `;
}

/** @param {{frame: Uint8Array, onFrame: OnFrame}} props */
function WholeFrame({ frame, onFrame }) {
    const { tags, type } = tagsOf(frame);
    return html`
        <div class="field">
            <label for="explain-payload">Payload</label>
            <select id="explain-payload" value=${templateOf(frame, type)}
                onChange=${(/** @type {any} */ event) => onFrame(withTemplate(frame, event.target.value))}>
                ${TEMPLATES.map((each) => html`<option value=${each.name}>${each.title}</option>`)}
            </select>
        </div>
        <div class="field number">
            <label for="explain-length">Length</label>
            <input id="explain-length" type="number" min=${LEAST_LENGTH} max=${MOST_OCTETS} value=${frame.length}
                onChange=${(/** @type {any} */ event) => {
                    if (event.target.checkValidity() && event.target.value !== "") {
                        onFrame(withLength(frame, Number(event.target.value)));
                    }
                }} />
        </div>
        <button type="button" disabled=${tags.length >= MOST_TAGS} onClick=${() => onFrame(withTag(frame))}>Add a VLAN tag</button>
    `;
}

/** @param {{frame: Uint8Array, onFrame: OnFrame}} props */
function Fields({ frame, onFrame }) {
    return html`${sectionsOf(frame).map((section) => {
        const tag = section.name.match(/^tag(\d)$/);
        return html`
            <fieldset key=${section.name}>
                <legend>${section.title}</legend>
                ${section.fields.map((field) => html`<${FieldInput} key=${field.name} frame=${frame} field=${field} onFrame=${onFrame} />`)}
                ${tag && html`
                    <button type="button" aria-label=${`Remove VLAN tag ${tag[1]}`}
                        onClick=${() => onFrame(withoutTag(frame, Number(tag[1]) - 1))}>Remove</button>
                `}
            </fieldset>
        `;
    })}`;
}

/** @param {{text: string, error: string | null, onText: (text: string) => void}} props */
function HexInput({ text, error, onText }) {
    return html`
        <div class="octets">
            <label for="explain-hex">Octets, hexadecimal</label>
            <textarea id="explain-hex" class="mono" rows="6" spellcheck="false" autocomplete="off" value=${text}
                aria-invalid=${error ? "true" : null} aria-describedby=${error ? "explain-hex-error" : null}
                onInput=${(/** @type {any} */ event) => onText(event.target.value)}></textarea>
            ${error && html`<span class="wrong" id="explain-hex-error" role="alert">${error}</span>`}
        </div>
    `;
}

/**
 * @param {{port: number, ports: import("./device_ports.js").DevicePort[], frame: Uint8Array, text: string, error: string | null,
 *     onPort: (port: number) => void, onText: (text: string) => void}} props
 *     `frame` is what `text` says, or said last while it has an error
 */
export function Compose({ port, ports, frame, text, error, onPort, onText }) {
    /** @param {Uint8Array} changed */
    const onFrame = (changed) => onText(dumpOf(changed));
    return html`
        <form class="compose card" onSubmit=${(/** @type {Event} */ event) => event.preventDefault()}>
            <div class="whole">
                <${PortInput} port=${port} ports=${ports} onPort=${onPort} />
                ${!error && html`<${WholeFrame} frame=${frame} onFrame=${onFrame} />`}
            </div>
            <fieldset class="all" disabled=${error !== null}>
                <legend class="unseen">Fields of the frame</legend>
                ${hasSwitchTag(frame) && html`<${SwitchTagInput} frame=${frame} ports=${ports} onFrame=${onFrame} />`}
                <${Fields} frame=${frame} onFrame=${onFrame} />
            </fieldset>
            <${HexInput} text=${text} error=${error} onText=${onText} />
        </form>
    `;
}
