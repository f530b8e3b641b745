// Octets as hexadecimal text, as people paste it, and back.

/** The device takes no longer frame. */
export const MOST_OCTETS = 16384;

/** A line of a dump: its offset, octets, and behind two spaces what a person reads of them. */
const DUMP_LINE = /^\s*(?:0x)?([0-9a-f]{4}):?[ \t]{1,3}(\S.*)$/i;
const OCTETS_IN_LINE = 16;
const SEPARATORS = /0x|[\s:.,;_-]/gi;

/**
 * The octets' digits of a dump with offsets, as tcpdump and Wireshark make it; any other text as it is.
 * @param {string} text
 */
function withoutOffsets(text) {
    const lines = text.split("\n").filter((line) => line.trim() !== "").map((line) => line.match(DUMP_LINE));
    const isDump = lines.every((line, index) => line && parseInt(line[1], 16) === index * OCTETS_IN_LINE);
    return isDump ? lines.map((line) => line?.[2].split("  ")[0]).join("\n") : text;
}

/**
 * The octets that a text says, or a sentence about what is wrong with it.
 * @param {string} text
 * @returns {{octets: Uint8Array, error: null} | {octets: null, error: string}}
 */
export function octetsOfHex(text) {
    const digits = withoutOffsets(text).replace(SEPARATORS, "");
    const wrong = digits.match(/[^0-9a-f]/iu);
    if (wrong) {
        return { octets: null, error: `“${wrong[0]}” is not a hexadecimal digit.` };
    }
    if (digits.length === 0) {
        return { octets: null, error: "The frame has no octets yet." };
    }
    if (digits.length % 2 !== 0) {
        return { octets: null, error: `An octet has two digits, but there are ${digits.length}.` };
    }
    if (digits.length / 2 > MOST_OCTETS) {
        return { octets: null, error: `The frame has ${digits.length / 2} octets; the device takes at most ${MOST_OCTETS}.` };
    }
    const octets = new Uint8Array(digits.length / 2);
    for (let at = 0; at < octets.length; at++) {
        octets[at] = parseInt(digits.slice(2 * at, 2 * at + 2), 16);
    }
    return { octets, error: null };
}

/** @param {ArrayLike<number>} octets */
export function hexOf(octets) {
    return Array.from(octets, (octet) => octet.toString(16).padStart(2, "0")).join("");
}

/**
 * Lines of sixteen octets, each octet apart.
 * @param {ArrayLike<number>} octets
 */
export function dumpOf(octets) {
    const pairs = Array.from(octets, (octet) => octet.toString(16).padStart(2, "0"));
    const lines = [];
    for (let at = 0; at < pairs.length; at += 16) {
        lines.push(pairs.slice(at, at + 16).join(" "));
    }
    return lines.join("\n");
}
