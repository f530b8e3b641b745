// The payloads that a frame can be given. Checksums are filled in afterwards.
import { read16, write16 } from "./checksums.js";
import { octetsOfHex } from "./hex.js";

/** The frame's payload is what follows its type; `type` is null for a frame with a length in its place (802.3).
 * @typedef {{name: string, title: string, type: number | null, destination?: number[],
 *     payload: (source: ArrayLike<number>) => number[]}} Template
 */

const HOST = [10, 0, 0, 1];
const OTHER_HOST = [10, 0, 0, 2];
const GROUP = [239, 1, 2, 3];

/** @param {string} text */
const octets = (text) => Array.from(/** @type {Uint8Array} */ (octetsOfHex(text).octets));

/**
 * @param {number} protocol
 * @param {number[]} payload
 * @param {number[]} [destination]
 */
function ipv4(protocol, payload, destination = OTHER_HOST) {
    const packet = Uint8Array.from([
        0x45, 0, 0, 0, 0, 1, 0, 0, destination === GROUP ? 1 : 64, protocol, 0, 0, ...HOST, ...destination, ...payload,
    ]);
    write16(packet, 2, packet.length);
    return Array.from(packet);
}

const BROADCAST = octets("ff:ff:ff:ff:ff:ff");

/** @type {Template[]} */
export const TEMPLATES = [
    {
        name: "arp", title: "ARP request", type: 0x0806, destination: BROADCAST,
        payload: (source) => [...octets("0001 0800 06 04 0001"), ...Array.from(source), ...HOST, 0, 0, 0, 0, 0, 0, ...OTHER_HOST],
    },
    {
        name: "udp", title: "IPv4, UDP", type: 0x0800,
        payload: () => ipv4(17, octets("c000 1389 001a 0000 6672616d65206f662074686520706167 6520")),
    },
    {
        name: "tcp", title: "IPv4, TCP (SYN)", type: 0x0800,
        payload: () => ipv4(6, octets("c000 0050 00000001 00000000 5002 ffff 0000 0000")),
    },
    {
        name: "icmp", title: "IPv4, ICMP echo request", type: 0x0800,
        payload: () => ipv4(1, octets("08 00 0000 0001 0001 6162636465666768")),
    },
    {
        name: "igmp", title: "IPv4, IGMP report", type: 0x0800, destination: octets("01:00:5e:01:02:03"),
        payload: () => ipv4(2, [0x16, 0, 0, 0, ...GROUP], GROUP),
    },
    {
        name: "bpdu", title: "Spanning-tree BPDU", type: null, destination: octets("01:80:c2:00:00:00"),
        payload: (source) => [
            ...octets("424203 0000 02 02 3c 8000"), ...Array.from(source), 0, 0, 0, 0, 0x80, 0, ...Array.from(source),
            ...octets("8001 0000 1400 0200 0f00 00"),
        ],
    },
    {
        name: "lldp", title: "LLDP", type: 0x88cc, destination: octets("01:80:c2:00:00:0e"),
        payload: (source) => [...octets("0207 04"), ...Array.from(source), ...octets("0404 05 657468 0602 0078 0000")],
    },
    {
        name: "lacp", title: "LACP", type: 0x8809, destination: octets("01:80:c2:00:00:02"),
        payload: (source) => [
            ...octets("01 01 0114 ffff"), ...Array.from(source), ...octets("0001 00ff 0001 45 000000 0214 ffff 000000000000"),
            ...octets("0000 00ff 0000 02 000000 0310 0000"), ...Array(12).fill(0), ...octets("0000"), ...Array(50).fill(0),
        ],
    },
    { name: "other", title: "Other: zeros", type: 0x88b5, payload: () => Array(46).fill(0) },
];

const BY_PROTOCOL = new Map([[1, "icmp"], [2, "igmp"], [6, "tcp"], [17, "udp"]]);
const BY_TYPE = new Map([[0x0806, "arp"], [0x88cc, "lldp"], [0x8809, "lacp"]]);
const LEAST_TYPE = 0x600;

/**
 * The name of the template that a frame is like; "other" if it is like none.
 * @param {Uint8Array} frame
 * @param {number} at where its type is
 */
export function templateOf(frame, at) {
    if (frame.length < at + 2) {
        return "other";
    }
    const type = read16(frame, at);
    if (type === 0x0800 && frame.length >= at + 12) {
        return BY_PROTOCOL.get(frame[at + 11]) ?? "other";
    }
    const isBpdu = type < LEAST_TYPE && frame[at + 2] === 0x42 && frame[at + 3] === 0x42;
    return isBpdu ? "bpdu" : BY_TYPE.get(type) ?? "other";
}
