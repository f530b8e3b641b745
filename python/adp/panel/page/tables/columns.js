// Columns that several tables have.
import { html } from "../vendor/preact.js";
import { CopyButton } from "../parts/command.js";
import { portName } from "../parts/ports.js";
import { RateBar, grouped, mostOf } from "./bar.js";

/** @typedef {import("../parts/table").Column} Column */
/** @typedef {import("../parts/fresh_rates").Rates} Rates */

/**
 * The rows' keys, by a member.
 * @param {string} name
 * @returns {(row: any) => any}
 */
export const by = (name) => (row) => row[name];

/**
 * A member of the rows.
 * @param {string} name
 * @param {string} title
 * @param {Partial<Column>} [more]
 * @returns {Column}
 */
export const member = (name, title, more) => ({ name, title, value: by(name), ...more });

/**
 * A number of the rows that is set or found, not counted.
 * @param {string} name
 * @param {string} title
 * @param {Partial<Column>} [more]
 */
export const number = (name, title, more) => member(name, title, { isNumber: true, ...more });

/**
 * A count of the rows, which may be large.
 * @param {string} name
 * @param {string} title
 * @param {Partial<Column>} [more]
 */
export const count = (name, title, more) => number(name, title, { show: (row) => grouped(row[name]), ...more });

/**
 * What is counted per second, by the rows' member `rates`.
 * @param {string} name of the count
 * @param {string} title
 * @param {number} most the highest rate of the table
 * @returns {Column}
 */
export function perSecond(name, title, most) {
    return {
        name: `${name} per second`,
        title,
        value: (row) => row.rates?.[name] ?? null,
        text: () => "",
        show: (row) => html`<${RateBar} rate=${row.rates?.[name]} most=${most} />`,
    };
}

/**
 * The frames that passed something and those that were dropped, with their rates.
 * @param {Rates} rates
 */
export function passedAndDropped(rates) {
    const most = Math.max(mostOf(rates, "passed"), mostOf(rates, "dropped"));
    return [
        count("passed", "Frames passed"),
        perSecond("passed", "Passed per second", most),
        count("dropped", "Frames dropped"),
        perSecond("dropped", "Dropped per second", most),
    ];
}

/**
 * @param {any[] | undefined} rows
 * @param {Rates} rates
 * @param {string} key the member that names a row
 */
export function withRates(rows, rates, key) {
    return (rows ?? []).map((row) => ({ ...row, rates: rates.get(row[key]) }));
}

/** @type {Column} */
export const PORT = { name: "port", title: "Port", value: by("port"), show: (row) => portName(row.port) };
/** @type {Column} */
export const PORT_HEAD = { ...PORT, isHead: true };

/** A change of the value is marked. */
export const WATCHED = { isWatched: true };

/**
 * A command for each row.
 * @param {(row: any) => string} commandOf
 * @param {string} [title]
 * @returns {Column}
 */
export function command(commandOf, title = "Command") {
    const show = (/** @type {any} */ row) => html`<${CopyButton} text=${commandOf(row)} />`;
    return { name: "command", title, value: () => null, text: () => "", show };
}
