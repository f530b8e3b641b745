// Storm limits and ingress limits.
import { html, useMemo } from "../vendor/preact.js";
import { useRates } from "../parts/fresh_rates.js";
import { Problem } from "../parts/problem.js";
import { portName } from "../parts/ports.js";
import { short } from "../rates.js";
import { useAnswer } from "../use.js";
import { Bar, bitRate, grouped } from "./bar.js";
import { PORT_HEAD, WATCHED, by, command, member, number, passedAndDropped, withRates } from "./columns.js";
import { Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {import("../parts/table").Column} Column */

/** @param {string} type of frames */
const wordsOf = (type) => type.replaceAll("_", " ");

/** @param {any} row */
function limitText(row) {
    return row.rate === 0 ? "none" : row.counts === "frames" ? `${short(row.rate)} frames/s` : bitRate(row.rate);
}

/** @param {any} row */
function stateText(row) {
    const words = [row.exceeded && "exceeded", !row.enabled && "off", !row.in_joint && "not in joint"];
    return words.filter((word) => word).join(", ");
}

/** @param {any} row what is left in its bucket */
function Level(row) {
    if (row.depth === undefined) {
        return "-";
    }
    const text = `${grouped(row.level)} of ${grouped(row.depth)} ${row.counts}`;
    return html`<${Bar} part=${row.level / row.depth} text=${text} mayBeFull />`;
}

/**
 * @param {Device} device
 * @param {import("../parts/fresh_rates").Rates} rates
 * @returns {Column[]}
 */
function limitColumns(device, rates) {
    return [
        number("rate", "Limit", { ...WATCHED, show: limitText, text: limitText }),
        number("level", "Left in the bucket", { text: () => "", show: Level }),
        ...passedAndDropped(rates),
        command((row) => `${device.vdevctl} storm ${portName(row.port)}`),
    ];
}

/** @type {Column[]} */
const STORM_COLUMNS = [
    PORT_HEAD,
    member("type", "Frames", { value: (row) => wordsOf(row.type) }),
    member("state", "State", { ...WATCHED, value: stateText, mark: (row) => (row.exceeded ? "exceeded" : "") }),
];

/**
 * The answer with keys for the rows.
 * @param {any} answer
 */
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
function useLimits(answer, table) {
    const rates = useRates(answer, table, "key", ["passed", "dropped"]);
    const rows = useMemo(() => withRates(answer?.[table], rates, "key"), [answer, rates]);
    return { rates, rows };
}

/** @param {{device: Device}} props */
export function Storm({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "storm" });
    const tables = useMemo(() => answer && keyed(answer), [answer]);
    const storm = useLimits(tables, "storm");
    const ingress = useLimits(tables, "ingress");
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const counted = Object.entries(answer.counting).map(([type, what]) => `${wordsOf(type)} in ${what}`).join(", ");
    return html`
        <${Problem} text=${error} />
        <${Part} title="Storm limits of ports" rows=${storm.rows} keyOf=${by("key")}
            note=${html`<p>Counted: ${counted}. Joint is the limit of all three types together.</p>`}
            columns=${[...STORM_COLUMNS, ...limitColumns(device, storm.rates)]}
            commands=${[`${device.vdevctl} storm --rate 1s`]}
            empty="No port has a storm limit. This lets 500 kbit/s of broadcasts in at port 2:"
            make=${adpsh(device, "adp_set_storm_control 0 2 ADP_STORM_BROADCAST 500 0")} />
        <${Part} title="Ingress limits" rows=${ingress.rows} keyOf=${by("key")}
            columns=${[PORT_HEAD, ...limitColumns(device, ingress.rates)]}
            empty="No port has an ingress limit. This lets 5 Mbit/s in at port 1:"
            make=${adpsh(device, "adp_set_ingress_limit 0 1 5000 0")} />
    `;
}
