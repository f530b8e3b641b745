// Texts of other programs, made fit to be shown on one line, as vdevctl writes them.

/** What moves the text, changes its direction, or cannot be seen; and the backslash, which begins an escape. */
const ESCAPED = new RegExp(String.raw`[\\\u0000-\u001f\u007f-\u009f\u00ad\u061c\u180e\u200b-\u200f\u2028-\u202e`
    + String.raw`\u2060-\u206f\ufeff\ufff0-\ufffb\u{e0000}-\u{e0fff}]`, "gu");
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
