// Where the fields of a frame are, as far as they can be read. A field is a run of bits in a run of octets.
import { packetAt, read16 } from "./checksums.js";
import { SWITCH_TAG_OCTETS, hasSwitchTag } from "./switch_tag.js";

/**
 * `bits` and `shift` say which bits of the octets are the field's, if it has not all of them.
 * @typedef {{name: string, title: string, at: number, octets: number, shift?: number, bits?: number,
 *     kind: "mac" | "ip" | "number" | "hex", choices?: {value: number, title: string}[]}} Field
 * @typedef {{name: string, title: string, fields: Field[]}} Section
 */

export const TPIDS = [0x8100, 0x88a8, 0x9100];
export const TYPE = 12;
const ADDRESSES = 12;
export const TAG_OCTETS = 4;
const MOST_TAGS = 8;

/**
 * What makes fields of a header that begins there.
 * @param {number} at
 * @returns {(name: string, title: string, offset: number, octets: number, kind: Field["kind"], rest?: object) => Field}
 */
const fieldsFrom = (at) => (name, title, offset, octets, kind, rest = {}) =>
    ({ name, title, at: at + offset, octets, kind, ...rest });

/**
 * Where the VLAN tags and the type behind them are.
 * @param {Uint8Array} frame
 */
export function tagsOf(frame) {
    let at = TYPE + (hasSwitchTag(frame) ? SWITCH_TAG_OCTETS : 0);
    const tags = [];
    while (tags.length < MOST_TAGS && frame.length >= at + TAG_OCTETS + 2 && TPIDS.includes(read16(frame, at))) {
        tags.push(at);
        at += TAG_OCTETS;
    }
    return { tags, type: at };
}

/** @param {number} at @param {number} index @returns {Section} */
function tagSection(at, index) {
    const field = fieldsFrom(at);
    const name = `tag${index + 1}`;
    return {
        name,
        title: `VLAN tag ${index + 1}`,
        fields: [
            field(`${name}-tpid`, "TPID", 0, 2, "hex", {
                choices: TPIDS.map((value) => ({ value, title: `0x${value.toString(16)}` })),
            }),
            field(`${name}-vlan`, "VLAN", 2, 2, "number", { bits: 12 }),
            field(`${name}-priority`, "Priority", 2, 1, "number", { shift: 5, bits: 3 }),
            field(`${name}-dei`, "DEI", 2, 1, "number", {
                shift: 4, bits: 1, choices: [{ value: 0, title: "no" }, { value: 1, title: "yes" }],
            }),
        ],
    };
}

/** @param {number} at @returns {Section} */
function arpSection(at) {
    const field = fieldsFrom(at);
    return {
        name: "arp",
        title: "ARP",
        fields: [
            field("arp-operation", "Operation", 6, 2, "number", {
                choices: [{ value: 1, title: "request" }, { value: 2, title: "reply" }],
            }),
            field("arp-sender", "Sender's IP", 14, 4, "ip"),
            field("arp-sender-mac", "Sender's address", 8, 6, "mac"),
            field("arp-target", "Target's IP", 24, 4, "ip"),
            field("arp-target-mac", "Target's address", 18, 6, "mac"),
        ],
    };
}

/** @param {number} at @returns {Section} */
function ipSection(at) {
    const field = fieldsFrom(at);
    return {
        name: "ip",
        title: "IPv4",
        fields: [
            field("ip-source", "Source IP", 12, 4, "ip"),
            field("ip-destination", "Destination IP", 16, 4, "ip"),
            field("ip-dscp", "DSCP", 1, 1, "number", { shift: 2, bits: 6 }),
            field("ip-ttl", "TTL", 8, 1, "number"),
            field("ip-protocol", "Protocol", 9, 1, "number"),
        ],
    };
}

/** @param {string} name @param {string} title @param {number} at */
function portsSection(name, title, at) {
    const field = fieldsFrom(at);
    const fields = [
        field(`${name}-source`, "Source port", 0, 2, "number"), field(`${name}-destination`, "Destination port", 2, 2, "number"),
    ];
    return { name, title, fields: name === "tcp" ? [...fields, field("tcp-flags", "Flags", 13, 1, "hex")] : fields };
}

/** What stands in an IPv4 packet, by its protocol: how many octets its fields need, and its section. */
const PROTOCOLS = new Map([
    [17, { octets: 8, section: (/** @type {number} */ at) => portsSection("udp", "UDP", at) }],
    [6, { octets: 20, section: (/** @type {number} */ at) => portsSection("tcp", "TCP", at) }],
    [1, {
        octets: 8,
        section: (/** @type {number} */ at) => ({
            name: "icmp",
            title: "ICMP",
            fields: [
                fieldsFrom(at)("icmp-type", "Type", 0, 1, "number"), fieldsFrom(at)("icmp-code", "Code", 1, 1, "number"),
                fieldsFrom(at)("icmp-sequence", "Sequence", 6, 2, "number"),
            ],
        }),
    }],
    [2, {
        octets: 8,
        section: (/** @type {number} */ at) => ({
            name: "igmp",
            title: "IGMP",
            fields: [
                fieldsFrom(at)("igmp-type", "Type", 0, 1, "hex", {
                    choices: [
                        { value: 0x11, title: "query" }, { value: 0x12, title: "report, version 1" },
                        { value: 0x16, title: "report, version 2" }, { value: 0x17, title: "leave" },
                        { value: 0x22, title: "report, version 3" },
                    ],
                }),
                fieldsFrom(at)("igmp-group", "Group", 4, 4, "ip"),
            ],
        }),
    }],
]);

/** @param {Uint8Array} frame @param {number} at @returns {Section[]} */
function packetSections(frame, at) {
    const packet = packetAt(frame, at);
    if (!packet) {
        return [];
    }
    const protocol = packet.isFragment ? undefined : PROTOCOLS.get(packet.protocol);
    const isWhole = protocol && frame.length >= packet.payload + protocol.octets;
    return isWhole ? [ipSection(at), protocol.section(packet.payload)] : [ipSection(at)];
}

/**
 * The fields of a frame, from the front as far as they can be read.
 * @param {Uint8Array} frame
 * @returns {Section[]}
 */
export function sectionsOf(frame) {
    if (frame.length < ADDRESSES + 2) {
        return [];
    }
    const { tags, type } = tagsOf(frame);
    const addresses = fieldsFrom(0);
    const field = fieldsFrom(type);
    const payload = type + 2;
    const isArp = frame.length >= payload + 28 && read16(frame, type) === 0x0806;
    return [
        {
            name: "ethernet",
            title: "Ethernet",
            fields: [
                addresses("destination", "Destination", 0, 6, "mac"), addresses("source", "Source", 6, 6, "mac"),
                ...(frame.length >= payload ? [field("type", "Type", 0, 2, "hex")] : []),
            ],
        },
        ...tags.map(tagSection),
        ...(isArp ? [arpSection(payload)] : []),
        ...(read16(frame, type) === 0x0800 ? packetSections(frame, payload) : []),
    ];
}
