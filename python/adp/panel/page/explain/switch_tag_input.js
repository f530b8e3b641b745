// The switch tag of a frame from the CPU, to be changed. Ports are shown as the device's, and kept as the chip's.
import { html, useState } from "../vendor/preact.js";
import { portList, portName } from "../parts/ports.js";
import { parsePorts } from "./device_ports.js";
import { OPCODES, namesOf, switchTagOf, withSwitchTag } from "./switch_tag.js";

/** @typedef {import("./device_ports.js").DevicePort} DevicePort */
/** @typedef {import("./switch_tag.js").SwitchTag} SwitchTag */

/** @param {{tag: SwitchTag, ports: DevicePort[], onTag: (tag: SwitchTag) => void}} props */
function OnePort({ tag, ports, onTag }) {
    const [chipPort] = tag.ports;
    const isKnown = ports.some((each) => each.chip_port === chipPort);
    return html`
        <div class="field">
            <label for="switch-port">Destination</label>
            <select id="switch-port" value=${String(chipPort)}
                onChange=${(/** @type {any} */ event) => onTag({ ...tag, ports: [Number(event.target.value)] })}>
                ${!isKnown && html`<option value=${String(chipPort)}>chip port ${chipPort}</option>`}
                ${ports.map((each) => html`<option value=${String(each.chip_port)}>port ${portName(each.port)}</option>`)}
            </select>
        </div>
    `;
}

/** @param {{tag: SwitchTag, ports: DevicePort[], onTag: (tag: SwitchTag) => void}} props */
function SomePorts({ tag, ports, onTag }) {
    const [draft, setDraft] = useState(/** @type {string | null} */ (null));
    const named = portList(ports.filter((each) => tag.ports.includes(each.chip_port)).map((each) => each.port));
    const most = Math.max(0, ...ports.map((each) => each.port));
    const isWrong = draft !== null && parsePorts(draft, most) === null;
    /** @param {string} text */
    const onText = (text) => {
        setDraft(text);
        const numbers = parsePorts(text, most);
        if (numbers) {
            onTag({ ...tag, ports: ports.filter((each) => numbers.includes(each.port)).map((each) => each.chip_port) });
        }
    };
    return html`
        <div class="field">
            <label for="switch-ports">Destinations</label>
            <input id="switch-ports" value=${draft ?? (named === "none" ? "" : named)} placeholder="1-4,7" spellcheck="false"
                aria-invalid=${isWrong ? "true" : null} aria-describedby=${isWrong ? "switch-ports-error" : null}
                onInput=${(/** @type {any} */ event) => onText(event.target.value)} onBlur=${() => setDraft(null)} />
            ${isWrong && html`<span class="wrong" id="switch-ports-error">Ports as 1-4,7</span>`}
        </div>
    `;
}

/** @param {{frame: Uint8Array, ports: DevicePort[], onFrame: (frame: Uint8Array) => void}} props of a frame that has the tag */
export function SwitchTagInput({ frame, ports, onFrame }) {
    const tag = switchTagOf(frame);
    const names = namesOf(tag.opcode);
    /** @param {SwitchTag} changed */
    const onTag = (changed) => onFrame(withSwitchTag(frame, changed));
    /** @param {number} opcode */
    const onOpcode = (opcode) => onTag({ opcode, ports: tag.ports.length > 0 ? tag.ports : [ports[1]?.chip_port ?? 0] });
    return html`
        <fieldset>
            <legend>Switch tag</legend>
            <div class="field wide">
                <label for="switch-opcode">Opcode</label>
                <select id="switch-opcode" value=${String(tag.opcode)}
                    onChange=${(/** @type {any} */ event) => onOpcode(Number(event.target.value))}>
                    ${OPCODES.map((each) => html`<option value=${String(each.opcode)}>${each.title}</option>`)}
                </select>
            </div>
            ${names === "one" && html`<${OnePort} tag=${tag} ports=${ports} onTag=${onTag} />`}
            ${names === "some" && html`<${SomePorts} tag=${tag} ports=${ports} onTag=${onTag} />`}
        </fieldset>
    `;
}
