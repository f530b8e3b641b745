// A frame made again from what its account says: addresses, tag, type, IPv4 packet and length.
import { withField, withLength, withTag, withTemplate } from "../explain/frame.js";
import { hexOf } from "../explain/hex.js";
import { sectionsOf } from "../explain/layout.js";
import { withSwitchTag } from "../explain/switch_tag.js";
import { hexText } from "../explain/values.js";

/** @typedef {import("../explain/account.js").Account} Account */
/** @typedef {import("../explain/account.js").Step} Step */

const TEMPLATES = new Map([[1, "icmp"], [2, "igmp"], [6, "tcp"], [17, "udp"]]);
const HEADER_OCTETS = 14;
const IPV4 = 0x0800;
const ARP = 0x0806;

/**
 * The frame with these values in its fields, by their names; a field that it does not have is left out.
 * @param {Uint8Array} frame
 * @param {Record<string, any>} values
 */
function withValues(frame, values) {
    let changed = frame;
    for (const [name, value] of Object.entries(values)) {
        const field = sectionsOf(changed).flatMap((section) => section.fields).find((each) => each.name === name);
        if (field && value !== undefined) {
            changed = withField(changed, field, String(value)).frame ?? changed;
        }
    }
    return changed;
}

/** @param {Step} header @returns {Record<string, any>} */
function packetValues({ packet }) {
    const transport = TEMPLATES.get(packet.protocol) ?? "";
    return {
        "ip-source": packet.source, "ip-destination": packet.destination, "ip-dscp": packet.dscp, "ip-protocol": packet.protocol,
        [`${transport}-source`]: packet.ports?.[0], [`${transport}-destination`]: packet.ports?.[1],
    };
}

/**
 * The frame with a payload of its kind.
 * @param {Uint8Array} frame
 * @param {Step} header
 */
function withPayload(frame, header) {
    if (header.type === IPV4 && header.packet) {
        const made = withTemplate(frame, TEMPLATES.get(header.packet.protocol) ?? "udp");
        return withValues(made, packetValues(header));
    }
    return header.type === ARP ? withTemplate(frame, "arp") : frame;
}

/**
 * @param {Account} account
 * @param {import("../explain/device_ports.js").DevicePort[]} ports
 * @returns {string | null} hexadecimal digits; null if the device could not read its header
 */
export function rebuiltFrame(account, ports) {
    const header = account.steps.find((step) => step.step === "header");
    if (!header) {
        return null;
    }
    let frame = withPayload(new Uint8Array(HEADER_OCTETS), header);
    frame = header.tag ? withTag(frame) : frame;
    frame = withValues(frame, {
        destination: header.destination, source: header.source, type: hexText(header.type, 4),
        "tag1-vlan": header.tag?.vid, "tag1-priority": header.tag?.priority,
    });
    const cpu = account.steps.find((step) => step.step === "cpu_tag");
    if (cpu) {
        const named = ports.filter((each) => cpu.ports.includes(each.port)).map((each) => each.chip_port);
        frame = withSwitchTag(frame, { opcode: cpu.opcode, ports: named });
    }
    return hexOf(withLength(frame, account.steps[0].octets));
}
