// The checksums of an IPv4 packet, made right after a field of it was changed.

const IP_HEADER = 20;
const PSEUDO_HEADER_PROTOCOLS = new Map([[6, 16], [17, 6]]);
const PLAIN_PROTOCOLS = new Map([[1, 2], [2, 2]]);

/** @param {Uint8Array} octets @param {number} at */
export function read16(octets, at) {
    return octets[at] * 256 + octets[at + 1];
}

/** @param {Uint8Array} octets @param {number} at @param {number} value */
export function write16(octets, at, value) {
    octets[at] = value >> 8;
    octets[at + 1] = value;
}

/**
 * The checksum of the Internet protocols (RFC 1071).
 * @param {Uint8Array} octets
 * @param {number} [sum] what is added to them
 */
export function checksum(octets, sum = 0) {
    for (let at = 0; at < octets.length; at += 2) {
        sum += octets[at] * 256 + (octets[at + 1] ?? 0);
    }
    while (sum > 0xffff) {
        sum = Math.floor(sum / 0x10000) + (sum % 0x10000);
    }
    return 0xffff - sum;
}

/**
 * Where the parts of an IPv4 packet are, or null if it is none or not whole.
 * @param {Uint8Array} octets of the frame
 * @param {number} at where the packet begins
 */
export function packetAt(octets, at) {
    const headerLength = (octets[at] & 15) * 4;
    const isWhole = octets[at] >> 4 === 4 && headerLength >= IP_HEADER && octets.length >= at + headerLength;
    if (!isWhole) {
        return null;
    }
    const end = at + read16(octets, at + 2);
    return {
        payload: at + headerLength,
        end,
        protocol: octets[at + 9],
        isFragment: (read16(octets, at + 6) & 0x3fff) !== 0,
        hasPayload: end > at + headerLength && end <= octets.length,
    };
}

/** @param {Uint8Array} octets @param {number} at @param {NonNullable<ReturnType<typeof packetAt>>} packet */
function mendPayload(octets, at, packet) {
    const place = PSEUDO_HEADER_PROTOCOLS.get(packet.protocol) ?? PLAIN_PROTOCOLS.get(packet.protocol);
    const payload = octets.subarray(packet.payload, packet.end);
    if (place === undefined || payload.length < place + 2) {
        return;
    }
    write16(payload, place, 0);
    let sum = 0;
    if (PSEUDO_HEADER_PROTOCOLS.has(packet.protocol)) {
        for (let word = at + 12; word < at + 20; word += 2) {
            sum += read16(octets, word);
        }
        sum += packet.protocol + payload.length;
    }
    const made = checksum(payload, sum);
    write16(payload, place, made === 0 && packet.protocol === 17 ? 0xffff : made);
}

/**
 * Puts the right checksums into the IPv4 packet at that place, if there is one.
 * @param {Uint8Array} octets of the frame; they are changed
 * @param {number} at
 */
export function mendChecksums(octets, at) {
    const packet = packetAt(octets, at);
    if (!packet) {
        return;
    }
    write16(octets, at + 10, 0);
    write16(octets, at + 10, checksum(octets.subarray(at, packet.payload)));
    if (packet.hasPayload && !packet.isFragment) {
        mendPayload(octets, at, packet);
    }
}
