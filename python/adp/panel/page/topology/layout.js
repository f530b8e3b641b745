// Where the nodes of a lab are in its picture: devices in rows, their hosts in a block above or below each.
import { deviceRows } from "./rows.js";

/** @typedef {import("../types").Lab} Lab */
/** @typedef {import("../types").LabNode} LabNode */
/**
 * A node's place, by its upper left corner. `toHosts` is the side of a device on which its hosts are; a host has that
 * of its device. A host's `row` is that in its block, from the device on; cables to further rows pass at its right.
 * @typedef {{node: LabNode, x: number, y: number, width: number, height: number, row: number,
 *     toHosts: "top" | "bottom"}} Box
 */

export const TAB_SPACE = 28;
export const HOST = { width: 124, height: 46 };
export const GAP = { rows: 40, cables: 100, devices: 44, siblings: 190, levels: 150, edge: 24 };
const GUTTER = 10;
export const GUTTER_CABLE = 7;
const DEVICE = { width: 132, height: 58 };
const MOST_COLUMNS = 12;

/**
 * The device that each host stands at: the one at the other end of its first cable.
 * @param {Lab} lab
 * @returns {Map<string, string[]>} the hosts of each device, in the order of its ports
 */
function hostsOf(lab) {
    const isDevice = new Map(lab.nodes.map((node) => [node.name, node.kind === "adp"]));
    const devices = lab.nodes.filter((node) => node.kind === "adp");
    const hosts = new Map(devices.map((node) => [node.name, /** @type {{name: string, port: number}[]} */ ([])]));
    const placed = new Set();
    for (const { ends: [one, other] } of lab.cables) {
        const [device, host] = isDevice.get(one.node) ? [one, other] : [other, one];
        if (isDevice.get(device.node) && isDevice.get(host.node) === false && !placed.has(host.node)) {
            placed.add(host.node);
            hosts.get(device.node)?.push({ name: host.node, port: device.port ?? 0 });
        }
    }
    const inOrder = [...hosts.values()].map((found) => found.sort((a, b) => a.port - b.port).map((each) => each.name));
    return new Map([...hosts.keys()].map((name, at) => [name, inOrder[at]]));
}

/**
 * How many cables of a device end at each of its sides, as far as its size is concerned.
 * @param {Lab} lab
 * @param {string} name
 * @param {string[][]} rows
 */
function endsOf(lab, name, rows) {
    const rowOf = (/** @type {string} */ node) => rows.findIndex((row) => row.includes(node));
    const own = lab.cables.filter(({ ends }) => ends.some((end) => end.node === name));
    const others = own.map(({ ends: [one, other] }) => (one.node === name ? other.node : one.node));
    const beside = others.filter((other) => isBeside(rows, name, other)).length;
    const hosts = others.filter((other) => rowOf(other) < 0).length;
    return { beside, across: Math.max(hosts, others.length - hosts - beside) };
}

/**
 * Whether two devices are neighbours in a row.
 * @param {string[][]} rows
 * @param {string} one
 * @param {string} other
 */
export function isBeside(rows, one, other) {
    const isNext = (/** @type {string[]} */ row) => Math.abs(row.indexOf(one) - row.indexOf(other)) === 1;
    return rows.some((row) => row.includes(one) && row.includes(other) && isNext(row));
}

/**
 * The size of a block of hosts.
 * @param {number} count
 * @param {number} columns
 */
function blockOf(count, columns) {
    const across = Math.max(1, Math.min(count, columns));
    const rows = Math.ceil(count / across);
    const gutter = GUTTER + GUTTER_CABLE * Math.max(1, rows);
    return { across, rows, gutter, width: count ? across * (HOST.width + gutter) : 0,
        height: rows ? rows * HOST.height + (rows - 1) * GAP.rows + GAP.cables : 0 };
}

/**
 * @typedef {{name: string, node: LabNode, hosts: string[], width: number, height: number, block: any, span: number,
 *     after: number}} Cell a device with its hosts; `after` is the room behind it
 */

/**
 * A row of devices with their hosts.
 * @param {Lab} lab
 * @param {string[][]} rows
 * @param {string[]} row one of them
 * @param {number} columns of hosts, at most
 * @returns {Cell[]}
 */
function cellsOf(lab, rows, row, columns) {
    const hosts = hostsOf(lab);
    const nodes = new Map(lab.nodes.map((node) => [node.name, node]));
    const isJoined = (/** @type {string} */ one, /** @type {string} */ other) =>
        lab.cables.some(({ ends }) => ends.some((end) => end.node === one) && ends.some((end) => end.node === other));
    return row.map((name, at) => {
        const ends = endsOf(lab, name, rows);
        const own = hosts.get(name) ?? [];
        const width = Math.max(DEVICE.width, ends.across * TAB_SPACE + 16);
        const block = blockOf(own.length, columns);
        const next = row[at + 1];
        const span = Math.max(width, block.width);
        // The cable to the next device begins at the device, not at its hosts.
        const room = next && isJoined(name, next) ? GAP.siblings - (span - width) / 2 : 0;
        return { name, node: /** @type {LabNode} */ (nodes.get(name)), hosts: own, width, block, span,
            height: Math.max(DEVICE.height, ends.beside * TAB_SPACE + 12),
            after: next ? Math.max(GAP.devices, room) : 0 };
    });
}

/** @param {Cell[]} row */
const widthOf = (row) => row.reduce((sum, cell) => sum + cell.span + cell.after, 0);

/**
 * The hosts of a device, from its side on.
 * @param {Cell} cell
 * @param {number} middle
 * @param {number} y of the device's side
 * @param {1 | -1} way downwards or upwards
 * @param {Map<string, LabNode>} nodes
 * @returns {Box[]}
 */
function placeHosts({ hosts, block }, middle, y, way, nodes) {
    return hosts.map((name, at) => {
        const row = Math.floor(at / block.across);
        const x = middle - block.width / 2 + (at % block.across) * (HOST.width + block.gutter) + block.gutter / 2;
        const away = GAP.cables + row * (HOST.height + GAP.rows);
        return { node: /** @type {LabNode} */ (nodes.get(name)), x, row, ...HOST,
            y: way > 0 ? y + away : y - away - HOST.height, toHosts: way > 0 ? "bottom" : "top" };
    });
}

/**
 * A row with as many hosts side by side as fit.
 * @param {Lab} lab
 * @param {string[][]} rows
 * @param {string[]} row
 * @param {number} room
 */
function fittingCells(lab, rows, row, room) {
    for (let columns = MOST_COLUMNS; ; columns--) {
        const cells = cellsOf(lab, rows, row, columns);
        if (columns === 1 || widthOf(cells) <= room) {
            return cells;
        }
    }
}

/**
 * Places a row of devices with their hosts; gives where the next one begins.
 * @param {Map<string, Box>} boxes
 * @param {Cell[]} row
 * @param {{middle: number, y: number, isAbove: boolean, nodes: Map<string, LabNode>}} where `isAbove`: the hosts are
 */
function placeRow(boxes, row, { middle, y, isAbove, nodes }) {
    const hostsHeight = Math.max(0, ...row.map((cell) => cell.block.height));
    const height = Math.max(...row.map((cell) => cell.height));
    const top = y + (isAbove ? hostsHeight : 0);
    let x = middle - widthOf(row) / 2;
    for (const cell of row) {
        const own = x + cell.span / 2;
        boxes.set(cell.name, { node: cell.node, x: own - cell.width / 2, y: top, width: cell.width, height, row: 0,
            toHosts: isAbove ? "top" : "bottom" });
        const hosts = placeHosts(cell, own, isAbove ? top : top + height, isAbove ? -1 : 1, nodes);
        hosts.forEach((box) => boxes.set(box.node.name, box));
        x += cell.span + cell.after;
    }
    return top + height + (isAbove ? 0 : hostsHeight) + GAP.levels;
}

/**
 * Hosts without a device stand in rows of their own below; gives where these end.
 * @param {Map<string, Box>} boxes
 * @param {LabNode[]} others
 * @param {number} width
 * @param {number} y
 */
function placeOthers(boxes, others, width, y) {
    const across = Math.max(1, Math.floor((width - GAP.edge) / (HOST.width + GAP.edge)));
    others.forEach((node, at) => boxes.set(node.name, {
        node, x: GAP.edge + (at % across) * (HOST.width + GAP.edge),
        y: y + Math.floor(at / across) * (HOST.height + GAP.cables), ...HOST, row: 0, toHosts: "top" }));
    return y + Math.ceil(others.length / across) * (HOST.height + GAP.cables);
}

/**
 * @param {Lab} lab
 * @param {number} room the width that there is; the picture may be wider
 * @returns {{width: number, height: number, boxes: Map<string, Box>, rows: string[][]}}
 */
export function layoutOf(lab, room) {
    const devices = lab.nodes.filter((node) => node.kind === "adp").map((node) => node.name);
    const joined = lab.cables.map(({ ends }) => /** @type {[string, string]} */ ([ends[0].node, ends[1].node]));
    const rows = deviceRows(devices, joined.filter((pair) => pair.every((name) => devices.includes(name))));
    const cells = rows.map((row) => fittingCells(lab, rows, row, room - 2 * GAP.edge));
    const width = Math.max(2 * HOST.width, ...cells.map(widthOf)) + 2 * GAP.edge;
    const boxes = new Map();
    const nodes = new Map(lab.nodes.map((node) => [node.name, node]));
    // Cables between devices that are no neighbours pass above a single row.
    let y = GAP.edge + (rows.length === 1 && rows[0].length > 2 ? GAP.cables : 0);
    cells.forEach((row, at) => {
        y = placeRow(boxes, row, { middle: width / 2, y, isAbove: at === 0 && rows.length > 1, nodes });
    });
    const end = cells.length ? y - GAP.levels + GAP.edge : y;
    const others = lab.nodes.filter((node) => !boxes.has(node.name));
    return { rows, boxes, width, height: placeOthers(boxes, others, width, end) };
}
