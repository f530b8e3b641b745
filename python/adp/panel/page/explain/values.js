// Values of fields as people write them. A value is a number, or a list of octets.

/** @typedef {{value: number | number[], error: null} | {value: null, error: string}} Parsed */

/** @param {string} error @returns {Parsed} */
const refused = (error) => ({ value: null, error });

/**
 * @param {string} text decimal, or hexadecimal with 0x
 * @param {number} most
 * @returns {Parsed}
 */
export function parseNumber(text, most) {
    const trimmed = text.trim();
    const value = /^(\d+|0x[0-9a-f]+)$/i.test(trimmed) ? Number(trimmed) : NaN;
    return value <= most ? { value, error: null } : refused(`A number from 0 to ${most}`);
}

/**
 * @param {string} text
 * @param {number} digits
 * @returns {Parsed}
 */
export function parseHex(text, digits) {
    const match = text.trim().match(/^(?:0x)?([0-9a-f]+)$/i);
    return match && match[1].length <= digits
        ? { value: parseInt(match[1], 16), error: null }
        : refused(`Up to ${digits} hexadecimal digits`);
}

/** @param {string} text @returns {Parsed} */
export function parseMac(text) {
    const digits = text.trim().replace(/[:.-]/g, "");
    return /^[0-9a-f]{12}$/i.test(digits)
        ? { value: [0, 2, 4, 6, 8, 10].map((at) => parseInt(digits.slice(at, at + 2), 16)), error: null }
        : refused("An address as 02:00:00:00:00:01");
}

/** @param {string} text @returns {Parsed} */
export function parseIp(text) {
    const parts = text.trim().split(".");
    const isAddress = parts.length === 4 && parts.every((part) => /^\d{1,3}$/.test(part) && Number(part) <= 255);
    return isAddress ? { value: parts.map(Number), error: null } : refused("An address as 10.0.0.1");
}

/** @param {ArrayLike<number>} octets */
export function macText(octets) {
    return Array.from(octets, (octet) => octet.toString(16).padStart(2, "0")).join(":");
}

/** @param {number} value @param {number} digits */
export function hexText(value, digits) {
    return `0x${value.toString(16).padStart(digits, "0")}`;
}
