// Which frames are followed: fields of a form, which become options of `follow`, so that the device sends no others.
import { html } from "../vendor/preact.js";
import { parseMac, parseHex } from "../explain/values.js";
import { TYPE_NUMBERS } from "./keep.js";

/** @typedef {{port: string, vlan: string, mac: string, type: string, reason: string, dropped: boolean}} Filters */

/** @type {Filters} */
export const NO_FILTERS = { port: "", vlan: "", mac: "", type: "", reason: "", dropped: false };
const LISTS = /^(cpu|\d{1,4}(-\d{1,4})?)(,(cpu|\d{1,4}(-\d{1,4})?))*$/;
/** What becomes of copies, besides the reasons that the device counts. */
const LOSSES = ["too_long", "queue_full", "flushed", "loopback", "mirror_down"];

/** @param {string} text @returns {number | null} */
function typeOf(text) {
    const { value } = parseHex(text, 4);
    return TYPE_NUMBERS.get(text.trim().toLowerCase()) ?? (typeof value === "number" ? value : null);
}

/**
 * What is wrong in each field; nothing in most.
 * @param {Filters} filters
 * @returns {Partial<Record<keyof Filters, string>>}
 */
export function problemsOf({ port, vlan, mac, type }) {
    return {
        ...(port && !LISTS.test(port) && { port: "Ports as 1-4,7 or cpu" }),
        ...(vlan && !LISTS.test(vlan) && { vlan: "VLANs as 10 or 1-99,200" }),
        ...(mac && parseMac(mac).error && { mac: /** @type {string} */ (parseMac(mac).error) }),
        ...(type && typeOf(type) === null && { type: "A type as 0x0806 or ARP" }),
    };
}

/**
 * The options of `follow`. Fields that cannot be read are left out.
 * @param {Filters} filters
 */
function optionsOf(filters) {
    const problems = problemsOf(filters);
    const wanted = Object.entries(filters).filter(([name, value]) => value && !(name in problems));
    /** @type {Record<string, any>} */
    const options = Object.fromEntries(wanted);
    return options.type === undefined ? options : { ...options, type: typeOf(options.type) };
}

/** @param {Filters} filters @returns {import("../types").Request} */
export function requestOf(filters) {
    return { command: "follow", ...optionsOf(filters), steps: true, texts: true };
}

/** @param {Filters} filters */
export function wordsOf(filters) {
    return Object.entries(optionsOf(filters)).map(([name, value]) => {
        const text = name === "type" ? `0x${value.toString(16).padStart(4, "0")}` : value;
        return value === true ? ` --${name}` : ` --${name} ${text}`;
    }).join("");
}

/**
 * Filters as a part of the page's address, and back.
 * @param {string} text
 * @returns {Filters}
 */
export function filtersOfAddress(text = "") {
    const given = new URLSearchParams(text);
    const texts = ["port", "vlan", "mac", "type", "reason"].map((name) => [name, given.get(name)?.slice(0, 100) ?? ""]);
    return { ...NO_FILTERS, ...Object.fromEntries(texts), dropped: given.has("dropped") };
}

/** @param {Filters} filters */
export function addressOfFilters(filters) {
    const wanted = Object.entries(filters).filter(([, value]) => value);
    return new URLSearchParams(wanted.map(([name, value]) => [name, value === true ? "1" : String(value)])).toString();
}

/**
 * @param {{name: keyof Filters, title: string, hint: string, filters: Filters, onFilters: (filters: Filters) => void,
 *     list?: string}} props
 */
function FilterInput({ name, title, hint, filters, onFilters, list }) {
    const problem = problemsOf(filters)[name];
    const id = `filter-${name}`;
    return html`
        <div class="field">
            <label for=${id}>${title}</label>
            <input id=${id} value=${filters[name]} placeholder=${hint} list=${list ?? null} spellcheck="false" autocomplete="off"
                maxlength="100" aria-invalid=${problem ? "true" : null} aria-describedby=${problem ? `${id}-error` : null}
                onInput=${(/** @type {any} */ event) => onFilters({ ...filters, [name]: event.target.value.trim() })} />
            ${problem && html`<span class="wrong" id=${`${id}-error`}>${problem}</span>`}
        </div>
    `;
}

/** @param {{filters: Filters, reasons: string[], onFilters: (filters: Filters) => void}} props */
export function FilterForm({ filters, reasons, onFilters }) {
    const words = [...new Set([...reasons, ...LOSSES])].sort();
    return html`
        <form class="filters" onSubmit=${(/** @type {Event} */ event) => event.preventDefault()} aria-label="Which frames">
            <${FilterInput} name="port" title="Ports" hint="1-4,7" filters=${filters} onFilters=${onFilters} />
            <${FilterInput} name="vlan" title="VLANs" hint="1-99" filters=${filters} onFilters=${onFilters} />
            <${FilterInput} name="mac" title="Address" hint="02:00:..." filters=${filters} onFilters=${onFilters} />
            <${FilterInput} name="type" title="Type" hint="ARP, 0x0806" filters=${filters} onFilters=${onFilters} />
            <div class="field">
                <label for="filter-reason">Dropped for</label>
                <select id="filter-reason" value=${filters.reason}
                    onChange=${(/** @type {any} */ event) => onFilters({ ...filters, reason: event.target.value })}>
                    <option value="">any reason, or not</option>
                    ${filters.reason && !words.includes(filters.reason) && html`<option value=${filters.reason}>${filters.reason}</option>`}
                    ${words.map((word) => html`<option value=${word}>${word}</option>`)}
                </select>
            </div>
            <label class="check"><input type="checkbox" checked=${filters.dropped}
                onChange=${(/** @type {any} */ event) => onFilters({ ...filters, dropped: event.target.checked })} /> Only dropped or lost</label>
        </form>
    `;
}
