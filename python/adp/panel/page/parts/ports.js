// Ports, and other numbers, as text.

/**
 * A port's name.
 * @param {number} port
 */
export function portName(port) {
    return port === 0 ? "cpu" : String(port);
}

/**
 * Ports as vdevctl writes them: cpu,1-4,7.
 * @param {number[]} ports in ascending order
 */
export function portList(ports) {
    const parts = [];
    for (let at = 0; at < ports.length; at++) {
        const first = ports[at];
        while (first !== 0 && ports[at + 1] === ports[at] + 1) {
            at++;
        }
        parts.push(first === ports[at] ? portName(first) : `${first}-${ports[at]}`);
    }
    return parts.join(",") || "none";
}

/**
 * Ports as adpsh takes a set of them: {0,1-4,7}.
 * @param {number[]} ports in ascending order
 */
export function portSet(ports) {
    return `{${ports.length === 0 ? "" : portList(ports).replace("cpu", "0")}}`;
}

/**
 * The numbers of a text such as 1-4,7 or cpu; null if it is not one.
 * @param {string} text
 * @returns {Set<number> | null}
 */
export function numbersOf(text) {
    const numbers = new Set();
    for (const part of text.split(",").map((each) => each.trim().replace(/^cpu$/, "0")).filter((each) => each)) {
        const found = /^(\d{1,4})(?:\s*-\s*(\d{1,4}))?$/.exec(part);
        if (!found) {
            return null;
        }
        for (let number = Number(found[1]); number <= Number(found[2] ?? found[1]); number++) {
            numbers.add(number);
        }
    }
    return numbers;
}
