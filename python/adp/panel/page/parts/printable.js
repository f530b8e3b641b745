// Texts of other programs, made fit to be shown on one line, as vdevctl writes them.

/** What moves the text, changes its direction, or cannot be seen; and the backslash, which begins an escape. */
const ESCAPED = /[\\\p{Cc}\p{Cf}\p{Zl}\p{Zp}\p{Cn}\p{Cs}]/gu;
/** @type {Record<string, string>} */
const SHORT = { "\\": "\\\\", "\n": "\\n", "\r": "\\r", "\t": "\\t" };
const encoder = new TextEncoder();

/** @param {string} character */
function escape(character) {
    const octets = [...encoder.encode(character)];
    return SHORT[character] ?? octets.map((octet) => `\\x${octet.toString(16).padStart(2, "0")}`).join("");
}

/**
 * A text on one line, on which every character is seen.
 * @param {string} text
 */
export function printable(text) {
    return text.replace(ESCAPED, escape);
}
