// The ports of a device: which port of the chip each is, which are up; and ports as people write them.
import { useAnswer } from "../use.js";

/** @typedef {{port: number, chip_port: number, up: boolean}} DevicePort */

/**
 * @param {string} device
 * @returns {DevicePort[]}
 */
export function useDevicePorts(device) {
    return useAnswer(device, { command: "ports" }, 2).answer?.ports ?? [];
}

/**
 * The ports that a text names, `cpu,1-4,7`, or null if it is none.
 * @param {string} text
 * @param {number} most
 */
export function parsePorts(text, most) {
    /** @type {Set<number>} */
    const ports = new Set();
    for (const part of text.split(",").map((each) => each.trim()).filter((each) => each !== "")) {
        const range = part.toLowerCase() === "cpu" ? ["", "0"] : part.match(/^(\d{1,4})(?:-(\d{1,4}))?$/);
        const [first, last] = range ? [Number(range[1] || 0), Number(range[2] ?? range[1])] : [1, 0];
        if (first > last || last > most) {
            return null;
        }
        for (let port = first; port <= last; port++) {
            ports.add(port);
        }
    }
    return [...ports].sort((a, b) => a - b);
}
