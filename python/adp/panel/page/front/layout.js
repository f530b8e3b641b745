// Where the parts of the face plate stand, in units that are about a pixel.

/** @typedef {import("./state.js").Face} Face */

/**
 * Where a port stands: its corner, and whether its jack is above or below its number. `line` counts the rows of ports.
 * @typedef {{port: number, x: number, y: number, width: number, isUpper: boolean, line: number}} Spot
 *
 * `vents` is what is left of the plate, if it is enough for slots; without ears the plate is in several rows.
 * @typedef {{width: number, height: number, hasEars: boolean, spots: Map<number, Spot>, name: {x: number, y: number},
 *     vents: {x: number, y: number, width: number, height: number} | null}} Layout
 */

/** Of a port: marks, number and lights, jack. */
export const CELL = { width: 54, wide: 70, marks: 20, label: 14, jack: 36, height: 70 };
const GAP = 12;
const EAR = 24;
const SIDE = 104;
const PAIR = 2 * CELL.height + 2;
const LEAST_SCALE = 0.8;
const MOST_SCALE = 1.4;
/** Columns stand together in blocks of so many. */
const BLOCK = 6;
const COLUMNS = [12, 10, 8, 6, 5, 4, 3, 2];
const LEAST_VENTS = 60;

/** @param {number} column */
function columnStart(column) {
    return column * CELL.width + Math.floor(column / BLOCK) * GAP;
}

/**
 * Ports in two rows, odd ones above and even ones below.
 * @param {Map<number, Spot>} spots
 * @param {number[]} ports
 * @param {{x: number, y: number, line: number, startOf: (column: number) => number, width: number}} where
 */
function setPair(spots, ports, { x, y, line, startOf, width }) {
    ports.forEach((port, index) => {
        const isUpper = index % 2 === 0;
        const top = isUpper ? y : y + CELL.height + 2;
        spots.set(port, { port, x: x + startOf(index >> 1), y: top, width, isUpper, line: isUpper ? line : line + 1 });
    });
}

/** @param {number} column */
const wideStart = (column) => column * CELL.wide;

/**
 * All in one row of pairs, with ears and vents.
 * @param {number[]} copper
 * @param {number[]} fibre
 * @param {boolean} hasCpu
 * @param {number} width of the place that there is
 * @returns {Layout}
 */
function oneRow(copper, fibre, hasCpu, width) {
    /** @type {Map<number, Spot>} */
    const spots = new Map();
    const y = GAP;
    const left = EAR + GAP;
    const first = left + SIDE + GAP;
    const columns = Math.ceil(copper.length / 2);
    const endOfCopper = first + (columns > 0 ? columnStart(columns - 1) + CELL.width : 0);
    const fibreWidth = Math.ceil(fibre.length / 2) * CELL.wide;
    const least = endOfCopper + (fibreWidth > 0 ? GAP + fibreWidth : 0) + GAP + EAR;
    const whole = Math.max(least, width / MOST_SCALE);
    const free = whole - least;
    if (hasCpu) {
        spots.set(0, { port: 0, x: left, y: y + CELL.height + 2, width: CELL.wide, isUpper: false, line: 1 });
    }
    setPair(spots, copper, { x: first, y, line: 0, startOf: columnStart, width: CELL.width });
    setPair(spots, fibre, { x: whole - EAR - GAP - fibreWidth, y, line: 0, startOf: wideStart, width: CELL.wide });
    return {
        width: whole, height: PAIR + 2 * GAP, hasEars: true, spots, name: { x: left, y },
        vents: free >= LEAST_VENTS ? { x: endOfCopper + GAP, y: y + 22, width: free - GAP, height: PAIR - 44 } : null,
    };
}

/**
 * As many rows of pairs as it takes; the CPU port and the fibre slots are in the last one.
 * @param {number[]} copper
 * @param {number[]} fibre
 * @param {boolean} hasCpu
 * @param {number} columns
 * @returns {Layout}
 */
function severalRows(copper, fibre, hasCpu, columns) {
    /** @type {Map<number, Spot>} */
    const spots = new Map();
    const width = columnStart(columns - 1) + CELL.width + 2 * GAP;
    let y = GAP + 22;
    let line = 0;
    for (let at = 0; at < copper.length; at += 2 * columns) {
        const ports = copper.slice(at, at + 2 * columns);
        setPair(spots, ports, { x: GAP, y, line, startOf: columnStart, width: CELL.width });
        y += PAIR + GAP;
        line += 2;
    }
    const others = [...(hasCpu ? [0] : []), ...fibre];
    const inLine = Math.max(1, Math.floor((width - 2 * GAP) / CELL.wide));
    others.forEach((port, index) => {
        const row = Math.floor(index / inLine);
        const fromRight = Math.min(others.length, (row + 1) * inLine) - index;
        const x = port === 0 ? GAP : width - GAP - fromRight * CELL.wide;
        const top = y + row * (CELL.height + GAP);
        spots.set(port, { port, x, y: top, width: CELL.wide, isUpper: true, line: line + row });
    });
    y += Math.ceil(others.length / inLine) * (CELL.height + GAP);
    return { width, height: y, hasEars: false, spots, name: { x: GAP, y: GAP - 4 }, vents: null };
}

/**
 * @param {Pick<Face, "port" | "isFibre">[]} faces
 * @param {number} width pixels
 * @returns {Layout}
 */
export function layoutOf(faces, width) {
    const copper = faces.filter((face) => face.port !== 0 && !face.isFibre).map((face) => face.port);
    const fibre = faces.filter((face) => face.port !== 0 && face.isFibre).map((face) => face.port);
    const hasCpu = faces.some((face) => face.port === 0);
    const wide = oneRow(copper, fibre, hasCpu, width);
    if (width / wide.width >= LEAST_SCALE) {
        return wide;
    }
    const most = Math.max(2, Math.ceil(copper.length / 2));
    const columns = COLUMNS.find((each) => each <= most && width / (columnStart(each) + 2 * GAP) >= LEAST_SCALE) ?? 2;
    return severalRows(copper, fibre, hasCpu, columns);
}

/**
 * The port that an arrow key leads to from a port; the same one at the edge.
 * @param {Map<number, Spot>} spots
 * @param {number} from
 * @param {string} key
 * @returns {number}
 */
export function neighbour(spots, from, key) {
    const all = [...spots.values()];
    const here = /** @type {Spot} */ (spots.get(from));
    const middle = (/** @type {Spot} */ spot) => spot.x + spot.width / 2;
    const inLine = all.filter((spot) => spot.line === here.line).sort((a, b) => a.x - b.x);
    if (key === "Home" || key === "End") {
        return (key === "Home" ? inLine[0] : inLine[inLine.length - 1]).port;
    }
    if (key === "ArrowLeft" || key === "ArrowRight") {
        const at = inLine.indexOf(here) + (key === "ArrowRight" ? 1 : -1);
        return (inLine[at] ?? here).port;
    }
    const way = key === "ArrowDown" ? 1 : -1;
    const beyond = all.filter((spot) => way * (spot.line - here.line) > 0);
    const far = (/** @type {Spot} */ spot) => Math.abs(middle(spot) - middle(here));
    beyond.sort((a, b) => way * (a.line - b.line) || far(a) - far(b));
    return (beyond[0] ?? here).port;
}
