// Which devices of a lab stand in one row of the picture.

const LONGEST_ROW = 4;

/** @typedef {Map<string, Set<string>>} Neighbours of each device, in the order of the lab */

/**
 * The devices that are joined by cables, of each device.
 * @param {string[]} devices
 * @param {[string, string][]} pairs
 * @returns {Neighbours}
 */
export function neighboursOf(devices, pairs) {
    const neighbours = new Map(devices.map((name) => [name, new Set()]));
    for (const [one, other] of pairs) {
        if (one !== other) {
            neighbours.get(one)?.add(other);
            neighbours.get(other)?.add(one);
        }
    }
    return neighbours;
}

/**
 * How many cables away each device is that can be reached from some.
 * @param {Neighbours} neighbours
 * @param {string[]} starts
 * @returns {Map<string, number>}
 */
function distances(neighbours, starts) {
    const found = new Map(starts.map((name) => [name, 0]));
    for (const name of found.keys()) {
        for (const next of neighbours.get(name) ?? []) {
            if (!found.has(next)) {
                found.set(next, (found.get(name) ?? 0) + 1);
            }
        }
    }
    return found;
}

/**
 * The devices, those together that are connected.
 * @param {Neighbours} neighbours
 * @returns {string[][]}
 */
function componentsOf(neighbours) {
    const seen = new Set();
    const components = [];
    for (const name of neighbours.keys()) {
        if (!seen.has(name)) {
            const reached = distances(neighbours, [name]);
            components.push([...neighbours.keys()].filter((each) => reached.has(each)));
            reached.forEach((_, each) => seen.add(each));
        }
    }
    return components;
}

/**
 * The devices in the middle: from where no other is far away, and with the most neighbours among these.
 * @param {Neighbours} neighbours
 * @param {string[]} component
 */
function middleOf(neighbours, component) {
    const far = new Map(component.map((name) => [name, Math.max(...distances(neighbours, [name]).values())]));
    const nearest = component.filter((name) => far.get(name) === Math.min(...far.values()));
    const degree = (/** @type {string} */ name) => neighbours.get(name)?.size ?? 0;
    return nearest.filter((name) => degree(name) === Math.max(...nearest.map(degree)));
}

/**
 * Devices one after the other, each joined to the one before if there is such a one. An end of a chain comes first.
 * @param {Neighbours} neighbours
 * @param {string[]} component
 */
function wayAround(neighbours, component) {
    const way = [component.find((name) => neighbours.get(name)?.size === 1) ?? component[0]];
    while (way.length < component.length) {
        const left = component.filter((name) => !way.includes(name));
        way.push(left.find((name) => neighbours.get(way[way.length - 1])?.has(name)) ?? left[0]);
    }
    return way;
}

/**
 * Puts the devices of each row below those of the row above that they are joined to.
 * @param {Neighbours} neighbours
 * @param {string[][]} rows
 */
function inOrder(neighbours, rows) {
    return rows.reduce((/** @type {string[][]} */ done, row) => {
        const above = done[done.length - 1] ?? [];
        const place = (/** @type {string} */ name) => {
            const joined = above.flatMap((other, at) => (neighbours.get(name)?.has(other) ? [at + 0.5] : []));
            return joined.length ? joined.reduce((sum, at) => sum + at, 0) / joined.length : above.length / 2;
        };
        return [...done, [...row].sort((a, b) => place(a) - place(b))];
    }, []);
}

/**
 * The rows of devices that are connected: a short chain in one; a ring or a long chain in two rows that go around it;
 * others by how far they are from those in the middle.
 * @param {Neighbours} neighbours
 * @param {string[]} component
 * @returns {string[][]}
 */
function rowsOfComponent(neighbours, component) {
    const degrees = component.map((name) => neighbours.get(name)?.size ?? 0);
    const way = wayAround(neighbours, component);
    const isChain = Math.max(...degrees) <= 2 && Math.min(...degrees) < 2;
    if (isChain && component.length <= LONGEST_ROW) {
        return [way];
    }
    const middle = middleOf(neighbours, component);
    if (Math.max(...degrees) <= 2 || middle.length > component.length / 2) {
        const half = Math.floor(way.length / 2);
        return [way.slice(0, half), half === 1 ? way.slice(half) : way.slice(half).reverse()];
    }
    const away = distances(neighbours, middle);
    const rows = /** @type {string[][]} */ ([]);
    component.forEach((name) => (rows[away.get(name) ?? 0] ??= []).push(name));
    return inOrder(neighbours, rows);
}

/**
 * The rows of devices in the picture, from above.
 * @param {string[]} devices
 * @param {[string, string][]} pairs devices that a cable joins
 * @returns {string[][]}
 */
export function deviceRows(devices, pairs) {
    const neighbours = neighboursOf(devices, pairs);
    const rows = /** @type {string[][]} */ ([]);
    for (const component of componentsOf(neighbours)) {
        rowsOfComponent(neighbours, component).forEach((row, at) => (rows[at] ??= []).push(...row));
    }
    return rows;
}
