// Counts per second, from two answers of a device.

/**
 * What was counted per second between two answers, a row each, by the row's key. A count that was cleared meanwhile counts
 * whole, as `vdevctl --rate` shows it.
 * @param {{before: any, now: any}} answers each with the device's `time`
 * @param {string} table the member that has the rows
 * @param {string} key the member that names a row
 * @param {string[]} counts
 * @returns {Map<any, Record<string, number>>}
 */
export function ratesOf({ before, now }, table, key, counts) {
    const rates = new Map();
    const seconds = before ? now.time - before.time : 0;
    if (!(seconds > 0)) {
        return rates;
    }
    const earlier = new Map(before[table].map((/** @type {any} */ row) => [row[key], row]));
    for (const row of now[table]) {
        const old = earlier.get(row[key]);
        const rate = (/** @type {string} */ count) => {
            const difference = row[count] - (old?.[count] ?? 0);
            return (difference < 0 ? row[count] : difference) / seconds;
        };
        rates.set(row[key], Object.fromEntries(counts.map((count) => [count, rate(count)])));
    }
    return rates;
}

/**
 * A number with a unit's prefix: 1.2 k, 45 M.
 * @param {number} value
 */
export function short(value) {
    const prefixes = ["", " k", " M", " G", " T"];
    let index = 0;
    while (value >= 1000 && index < prefixes.length - 1) {
        value /= 1000;
        index++;
    }
    return `${index === 0 || value >= 100 ? Math.round(value) : value.toFixed(1)}${prefixes[index]}`;
}
