// Ports as text.

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
