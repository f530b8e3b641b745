// A port's settings in words.
import { portList, portName } from "../parts/ports.js";

/** What the learning mode does to a frame whose source is not known behind the port. */
const LEARNING = {
    0: "closed: only stations that were let in pass (mode 0)",
    1: "addresses are learned (mode 1)",
    4: "nothing is learned, frames pass (mode 4)",
    5: "addresses are learned (mode 5)",
    8: "pending: the CPU decides about new stations (mode 8)",
};

const LOOPBACK = ["none", "in the port's MAC", "at the port's line side"];

/** @param {number} port */
export function titleOf(port) {
    return port === 0 ? "CPU port" : `Port ${portName(port)}`;
}

/** @param {number} speed Mb/s */
export function speedWords(speed) {
    return speed >= 10000 ? `${speed / 1000} Gb/s` : `${speed} Mb/s`;
}

/** @param {any} row of `ports` */
export function linkWords(row) {
    if (row.up) {
        return `up, ${speedWords(row.speed)} ${row.full_duplex ? "full" : "half"}`;
    }
    return row.present ? "down" : "down, no interface";
}

/**
 * Why there is no link.
 * @param {any} row of `ports`
 */
export function downWords(row) {
    if (!row.present) {
        return `The device has no interface ${row.interface}; it takes one of this name up when it is there.`;
    }
    if (row.pulled) {
        return "The cable is pulled.";
    }
    if (!row.enabled) {
        return "The port is disabled.";
    }
    return "The host at the other end is down.";
}

/** @param {number} mode */
export function learningWords(mode) {
    return LEARNING[/** @type {keyof typeof LEARNING} */ (mode)] ?? `mode ${mode}`;
}

/** @param {number} loopback */
export function loopbackWords(loopback) {
    return LOOPBACK[loopback] ?? `mode ${loopback}`;
}

/**
 * The other ports that a port's frames may not leave by.
 * @param {any} row of `ports`
 * @param {any[]} rows
 * @returns {number[]}
 */
export function barredPorts(row, rows) {
    return rows.map((each) => each.port).filter((port) => port !== row.port && !row.egress.includes(port));
}

/**
 * @param {any} row of `ports`
 * @param {any[]} rows
 */
export function isolationWords(row, rows) {
    const others = row.egress.filter((/** @type {number} */ port) => port !== row.port);
    return barredPorts(row, rows).length === 0 ? "all other ports" : portList(others);
}
