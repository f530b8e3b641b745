// The switch tag of a frame from the CPU: docs/reference/cpu-frames.md. Ports here are ports of the chip.
import { read16, write16 } from "./checksums.js";

export const SWITCH_TAG_TYPE = 0x8874;
export const SWITCH_TAG_OCTETS = 10;
const PLACE = 12;
const PORTS_IN_WORD_1 = 25;

/** @typedef {{opcode: number, ports: number[]}} SwitchTag */

/** What an opcode's destination is. */
export const OPCODES = [
    { opcode: 1, title: "1: switched like a frame of port 0", names: "none" },
    { opcode: 3, title: "3: to one port, by its egress rule", names: "one" },
    { opcode: 4, title: "4: to ports, by their egress rules", names: "some" },
    { opcode: 5, title: "5: to one port, as given", names: "one" },
    { opcode: 6, title: "6: to one port, as given", names: "one" },
    { opcode: 7, title: "7: to ports, as given", names: "some" },
    { opcode: 0, title: "0: no opcode, dropped", names: "none" },
    { opcode: 2, title: "2: no opcode, dropped", names: "none" },
];

/** @param {number} opcode */
export function namesOf(opcode) {
    return OPCODES.find((each) => each.opcode === opcode)?.names ?? "none";
}

/** @param {Uint8Array} frame */
export function hasSwitchTag(frame) {
    return frame.length >= PLACE + SWITCH_TAG_OCTETS && read16(frame, PLACE) === SWITCH_TAG_TYPE;
}

/**
 * The switch tag of a frame that has one.
 * @param {Uint8Array} frame
 * @returns {SwitchTag}
 */
export function switchTagOf(frame) {
    const words = new DataView(frame.buffer, frame.byteOffset + PLACE + 2, 8);
    const first = words.getUint32(0);
    const opcode = first >>> 29;
    const names = namesOf(opcode);
    const second = words.getUint32(4);
    const bits = Array.from({ length: 32 }, (_, port) => port).filter((port) =>
        port < PORTS_IN_WORD_1 ? first >>> port & 1 : second >>> port - PORTS_IN_WORD_1 & 1);
    return { opcode, ports: names === "some" ? bits : names === "one" ? [first & 0x1ffffff] : [] };
}

/** @param {SwitchTag} tag @returns {Uint8Array} */
function octetsOf({ opcode, ports }) {
    const octets = new Uint8Array(SWITCH_TAG_OCTETS);
    const view = new DataView(octets.buffer);
    let first = opcode * 2 ** 29;
    let second = 0;
    const names = namesOf(opcode);
    if (names === "one") {
        first += ports[0] ?? 0;
    }
    for (const port of names === "some" ? ports : []) {
        first += port < PORTS_IN_WORD_1 ? 2 ** port : 0;
        second += port < PORTS_IN_WORD_1 ? 0 : 2 ** (port - PORTS_IN_WORD_1);
    }
    write16(octets, 0, SWITCH_TAG_TYPE);
    view.setUint32(2, first);
    view.setUint32(6, second);
    return octets;
}

/**
 * The frame with this switch tag, or with none.
 * @param {Uint8Array} frame
 * @param {SwitchTag | null} tag
 */
export function withSwitchTag(frame, tag) {
    const rest = frame.subarray(hasSwitchTag(frame) ? PLACE + SWITCH_TAG_OCTETS : PLACE);
    return Uint8Array.from([...frame.subarray(0, PLACE), ...(tag ? octetsOf(tag) : []), ...rest]);
}
