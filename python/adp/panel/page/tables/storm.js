// Storm limits and ingress limits.
import { html, useMemo } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { portName } from "../parts/ports.js";
import { useRates } from "../parts/fresh_rates.js";
import { short } from "../rates.js";
import { useAnswer } from "../use.js";
import { Bar, RateBar, grouped, mostOf } from "./bar.js";
import { Part, adpsh, commandColumn } from "./part.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {import("../parts/table").Column} Column */

const COUNTS = ["passed", "dropped"];

/** @param {any} row */
function limitText(row) {
    return row.rate === 0 ? "none" : row.counts === "frames" ? `${short(row.rate)} frames/s` : `${short(1000 * row.rate)}bit/s`;
}

/** @param {any} row */
function stateText(row) {
    return [row.exceeded && "exceeded", !row.enabled && "off", !row.in_joint && "not in joint"].filter((word) => word).join(", ");
}

/** @param {any} row what is left in its bucket */
function Level(row) {
    return row.depth === undefined ? "-"
        : html`<${Bar} part=${row.level / row.depth} text=${`${grouped(row.level)} of ${grouped(row.depth)} ${row.counts}`} mayBeFull />`;
}

/** @param {Map<any, Record<string, number>>} rates @returns {Column[]} */
function limitColumns(rates) {
    const most = Math.max(mostOf(rates, "passed"), mostOf(rates, "dropped"));
    return [
        { name: "rate", title: "Limit", value: (row) => row.rate, show: limitText, text: limitText, isNumber: true, isWatched: true },
        { name: "level", title: "Left in the bucket", value: (row) => row.level ?? null, text: () => "", show: Level },
        { name: "passed", title: "Frames passed", value: (row) => row.passed, show: (row) => grouped(row.passed), isNumber: true },
        { name: "passing", title: "Passed per second", value: (row) => row.rates?.passed ?? 0, text: () => "", show: (row) => html`<${RateBar} rate=${row.rates?.passed} most=${most} />` },
        { name: "dropped", title: "Frames dropped", value: (row) => row.dropped, show: (row) => grouped(row.dropped), isNumber: true },
        { name: "dropping", title: "Dropped per second", value: (row) => row.rates?.dropped ?? 0, text: () => "", show: (row) => html`<${RateBar} rate=${row.rates?.dropped} most=${most} />` },
    ];
}

/** @type {Column} */
const PORT = { name: "port", title: "Port", value: (row) => row.port, show: (row) => portName(row.port), isHead: true };

/** @param {any} row */
const keyOf = (row) => row.key;

/** @param {any} answer */
function keyed(answer) {
    return {
        time: answer.time,
        storm: answer.storm.map((/** @type {any} */ row) => ({ ...row, key: `${row.port} ${row.type}` })),
        ingress: answer.ingress.map((/** @type {any} */ row) => ({ ...row, key: row.port })),
    };
}

/**
 * The rows of a table, each with its rates.
 * @param {any} answer
 * @param {string} table
 */
function useRows(answer, table) {
    const rates = useRates(answer, table, "key", COUNTS);
    const rows = useMemo(() => (answer?.[table] ?? []).map((/** @type {any} */ row) => ({ ...row, rates: rates.get(row.key) })), [answer, rates]);
    return { rates, rows };
}

/** @param {{device: Device}} props */
export function Storm({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "storm" });
    const flat = useMemo(() => answer && keyed(answer), [answer]);
    const storm = useRows(flat, "storm");
    const ingress = useRows(flat, "ingress");
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const counted = Object.entries(answer.counting).map(([type, what]) => `${type.replace("_", " ")} in ${what}`).join(", ");
    const command = commandColumn((row) => `${device.vdevctl} storm ${row.port}`);
    /** @type {Column[]} */
    const columns = [PORT, { name: "type", title: "Frames", value: (row) => row.type.replace("_", " ") },
        { name: "state", title: "State", value: stateText, mark: (row) => (row.exceeded ? "exceeded" : ""), isWatched: true }, ...limitColumns(storm.rates), command];
    return html`
        <${Problem} text=${error} />
        <${Part} title="Storm limits" note=${html`<p>Counted: ${counted}. Joint is the limit of all three types together.</p>`} rows=${storm.rows}
            columns=${columns} keyOf=${keyOf} commands=${[`${device.vdevctl} storm --rate 1s`]}
            empty="No port has a storm limit. This lets 500 kbit/s of broadcasts in at port 2:"
            make=${adpsh(device, "adp_set_storm_control 0 2 ADP_STORM_BROADCAST 500 0")} />
        <${Part} title="Ingress limits" rows=${ingress.rows} columns=${[PORT, ...limitColumns(ingress.rates), command]} keyOf=${keyOf}
            empty="No port has an ingress limit. This lets 5 Mbit/s in at port 1:" make=${adpsh(device, "adp_set_ingress_limit 0 1 5000 0")} />
    `;
}
