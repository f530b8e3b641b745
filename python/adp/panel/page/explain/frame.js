// A frame as its octets, and what changes it: a field, a tag, the payload, the length. A changed frame is a new one.
import { mendChecksums, packetAt, read16, write16 } from "./checksums.js";
import { MOST_OCTETS } from "./hex.js";
import { TAG_OCTETS, TYPE, tagsOf } from "./layout.js";
import { SWITCH_TAG_OCTETS, hasSwitchTag } from "./switch_tag.js";
import { TEMPLATES } from "./templates.js";
import { hexText, macText, parseHex, parseIp, parseMac, parseNumber } from "./values.js";

/** @typedef {import("./layout.js").Field} Field */

/** A frame without its check sequence has at least so many octets. */
export const LEAST_OCTETS = 60;
const HEADER_OCTETS = 14;
const UDP = 17;

/** @param {Uint8Array} frame @param {number} octets */
function padded(frame, octets = LEAST_OCTETS) {
    const longer = new Uint8Array(Math.max(frame.length, octets));
    longer.set(frame);
    return longer;
}

/** @param {Uint8Array} frame which is changed */
function mended(frame) {
    const { type } = tagsOf(frame);
    if (read16(frame, type) === 0x0800) {
        mendChecksums(frame, type + 2);
    }
    return frame;
}

/** @param {Field} field */
const bitsOf = (field) => ({ shift: field.shift ?? 0, size: 2 ** (field.bits ?? field.octets * 8) });

/**
 * A field's value, as one number.
 * @param {Uint8Array} frame
 * @param {Field} field
 */
function numberOf(frame, field) {
    const value = frame.subarray(field.at, field.at + field.octets).reduce((sum, octet) => sum * 256 + octet, 0);
    const { shift, size } = bitsOf(field);
    return Math.floor(value / 2 ** shift) % size;
}

/**
 * @param {Uint8Array} frame
 * @param {Field} field
 */
export function fieldText(frame, field) {
    const octets = frame.subarray(field.at, field.at + field.octets);
    switch (field.kind) {
    case "mac": return macText(octets);
    case "ip": return Array.from(octets).join(".");
    case "hex": return hexText(numberOf(frame, field), field.octets * 2);
    default: return String(numberOf(frame, field));
    }
}

/** @param {Field} field @param {string} text */
function parse(field, text) {
    switch (field.kind) {
    case "mac": return parseMac(text);
    case "ip": return parseIp(text);
    case "hex": return parseHex(text, field.octets * 2);
    default: return parseNumber(text, bitsOf(field).size - 1);
    }
}

/**
 * The frame with another value of a field, and right checksums; or a sentence about the text.
 * @param {Uint8Array} frame
 * @param {Field} field
 * @param {string} text
 * @returns {{frame: Uint8Array, error: null} | {frame: null, error: string}}
 */
export function withField(frame, field, text) {
    const { value, error } = parse(field, text);
    if (value === null) {
        return { frame: null, error: /** @type {string} */ (error) };
    }
    const changed = Uint8Array.from(frame);
    if (typeof value === "number") {
        const { shift } = bitsOf(field);
        const whole = changed.subarray(field.at, field.at + field.octets).reduce((sum, octet) => sum * 256 + octet, 0);
        let rest = whole + (value - numberOf(frame, field)) * 2 ** shift;
        for (let at = field.at + field.octets - 1; at >= field.at; at--) {
            changed[at] = rest % 256;
            rest = Math.floor(rest / 256);
        }
    } else {
        changed.set(value, field.at);
    }
    return { frame: mended(changed), error: null };
}

/** @param {Uint8Array} frame @param {number} at @param {number} removed @param {number[]} [inserted] */
function spliced(frame, at, removed, inserted = []) {
    return Uint8Array.from([...frame.subarray(0, at), ...inserted, ...frame.subarray(at + removed)]);
}

/**
 * The frame with one more tag, the outermost.
 * @param {Uint8Array} frame
 */
export function withTag(frame) {
    return spliced(frame, TYPE + (hasSwitchTag(frame) ? SWITCH_TAG_OCTETS : 0), 0, [0x81, 0, 0, 1]);
}

/**
 * The frame without its tag of this index; a whole frame stays whole.
 * @param {Uint8Array} frame
 * @param {number} index
 */
export function withoutTag(frame, index) {
    const at = tagsOf(frame).tags[index];
    const shorter = at === undefined ? frame : spliced(frame, at, TAG_OCTETS);
    return frame.length < LEAST_OCTETS ? shorter : padded(shorter);
}

/**
 * The frame with the payload of a template, and with its destination if it has one.
 * @param {Uint8Array} frame
 * @param {string} name
 */
export function withTemplate(frame, name) {
    const template = TEMPLATES.find((each) => each.name === name);
    if (!template) {
        return frame;
    }
    const whole = padded(frame, HEADER_OCTETS);
    const { type } = tagsOf(whole);
    const payload = template.payload(whole.subarray(6, 12));
    const number = template.type ?? payload.length;
    const head = whole.slice(0, type);
    head.set(template.destination ?? [], 0);
    const isGroup = (head[0] & 1) === 1;
    if (!template.destination && isGroup) {
        head.set(OTHER_HOST, 0);
    }
    return mended(padded(Uint8Array.from([...head, number >> 8, number & 255, ...payload])));
}

const OTHER_HOST = [2, 0, 0, 0, 0, 2];
const SOURCE = [2, 0, 0, 0, 0, 1];

/** The frame that one begins with: an ARP request. */
export function firstFrame() {
    return withTemplate(Uint8Array.from([...OTHER_HOST, ...SOURCE, 0, 0]), "arp");
}

/**
 * The frame cut, or with zeros behind it. An IPv4 packet that filled the frame fills it again.
 * @param {Uint8Array} frame
 * @param {number} octets
 */
export function withLength(frame, octets) {
    const length = Math.min(Math.max(octets, 1), MOST_OCTETS);
    const changed = new Uint8Array(length);
    changed.set(frame.subarray(0, length));
    const { type } = tagsOf(frame);
    const at = type + 2;
    const packet = frame.length > at + 2 && read16(frame, type) === 0x0800 ? packetAt(frame, at) : null;
    const filled = packet && (packet.end === frame.length || (packet.end < frame.length && frame.length === LEAST_OCTETS));
    if (!packet || !filled || length < packet.payload || (length <= LEAST_OCTETS && packet.end <= length)) {
        return changed;
    }
    write16(changed, at + 2, length - at);
    if (packet.protocol === UDP && length >= packet.payload + 8) {
        write16(changed, packet.payload + 4, length - packet.payload);
    }
    return mended(changed);
}
