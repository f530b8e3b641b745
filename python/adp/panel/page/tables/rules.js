// The rules of the field processor with their hits, their counters, and what becomes of frames that no rule matches.
import { html, useMemo, useState } from "../vendor/preact.js";
import { useRates } from "../parts/fresh_rates.js";
import { Problem } from "../parts/problem.js";
import { useAnswer } from "../use.js";
import { Fill, bitRate, grouped, mostOf } from "./bar.js";
import { PORT_HEAD, WATCHED, by, command, count, member, number, perSecond, withRates } from "./columns.js";
import { Choice, Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {import("../parts/table").Column} Column */
/** @typedef {import("../parts/fresh_rates").Rates} Rates */

const MISS = ["go their way", "are dropped", "go to the CPU, too", "go to the CPU alone"];
const RULE_OF_PORT_1 = "adp_add_remark_rule {rule_id=1 port_bitmap=[0,1] remark_kind=2 remark_value=46 rule_form=7}";

/**
 * @param {any[]} rows
 * @param {string} none
 */
const textsOf = (rows, none) => rows.map(by("text")).join(", ") || none;

/** @param {any} row */
function stateOf(row) {
    const state = row.installed ? (row.changed ? "changed" : "installed") : "staged";
    return row.part === "whole" ? state : `${state}, ${row.part} half`;
}

/**
 * What an action names: the values of the actions of a kind.
 * @param {any} row
 * @param {string} action
 * @returns {number[]}
 */
function namedBy(row, action) {
    return row.actions.filter((/** @type {any} */ each) => each.action === action).map(by("value"));
}

/**
 * The entries with their rates and meters; in a group the one that acts first comes first.
 * @param {any} answer
 * @param {any} meters the answer with the meters, if there is one yet
 * @param {Rates} rates
 */
function rowsOf(answer, meters, rates) {
    const known = new Map((meters?.meters ?? []).map((/** @type {any} */ meter) => [meter.meter, meter]));
    const meterText = (/** @type {number} */ number) => {
        const meter = known.get(number);
        return meter && `meter ${number}: ${bitRate(meter.rate)}, ${grouped(meter.dropped)} dropped`;
    };
    return withRates(answer.fields, rates, "entry")
        .map((row) => ({ ...row, meters: namedBy(row, "meter").map(meterText).filter((text) => text).join("; ") }))
        .sort((a, b) => a.group - b.group || b.priority - a.priority || a.entry - b.entry);
}

/** @param {any} row */
function Hits(row) {
    const isHit = row.rates?.matches > 0;
    return html`${grouped(row.matches)} <span class=${isHit ? "hit" : "hit off"}>${isHit ? "hit" : ""}</span>`;
}

/**
 * @param {Device} device
 * @param {Rates} rates
 * @returns {Column[]}
 */
function ruleColumns(device, rates) {
    return [
        number("group", "Group"),
        number("priority", "Priority", WATCHED),
        number("entry", "Entry", { isHead: true }),
        count("matches", "Hits", { show: Hits }),
        perSecond("matches", "Hits per second", mostOf(rates, "matches")),
        member("qualifiers", "Matches", { ...WATCHED, value: (row) => textsOf(row.qualifiers, "all") }),
        member("actions", "Actions", { ...WATCHED, value: (row) => textsOf(row.actions, "nothing") }),
        member("meters", "Meters"),
        member("state", "State", { ...WATCHED, value: stateOf }),
        command((row) => `${device.vdevctl} fields --entry ${row.entry}`),
    ];
}

/** @param {{device: Device, answer: any, meters: any}} props */
function Entries({ device, answer, meters }) {
    const [isHit, setHit] = useState(false);
    const rates = useRates(answer, "fields", "entry", ["matches"]);
    const rows = useMemo(() => rowsOf(answer, meters, rates), [answer, meters, rates]);
    const keep = useMemo(() => (isHit ? (/** @type {any} */ row) => row.matches > 0 : null), [isHit]);
    const note = html`
        <${Fill} count=${rows.length} capacity=${answer.capacity} />
        <p>In each group the rule with the highest priority acts. Groups act side by side.</p>
        <${Choice} text="Only rules with hits" isOn=${isHit} onChange=${setHit} />
    `;
    return html`
        <${Part} title="Entries" note=${note} rows=${rows} columns=${ruleColumns(device, rates)} keyOf=${by("entry")}
            keep=${keep} search="Search"
            commands=${[`${device.vdevctl} fields`, `${device.vdevctl} fields --nonzero --rate 1s`]}
            empty="There are no rules. This one gives packets from port 1 the DSCP 46:"
            make=${adpsh(device, RULE_OF_PORT_1)} />
    `;
}

/** @param {{answer: any}} props */
function Counters({ answer }) {
    const rates = useRates(answer, "counters", "counter", ["frames", "octets"]);
    const rows = useMemo(() => withRates(answer.counters, rates, "counter"), [answer, rates]);
    const countedBy = (/** @type {any} */ row) =>
        answer.fields.filter((/** @type {any} */ rule) => namedBy(rule, "count").includes(row.counter)).map(by("entry"));
    const columns = [
        number("counter", "Counter", { isHead: true }),
        count("frames", "Frames"),
        perSecond("frames", "Frames per second", mostOf(rates, "frames")),
        count("octets", "Octets"),
        perSecond("octets", "Octets per second", mostOf(rates, "octets")),
        member("entries", "Entries that count", { value: (row) => countedBy(row).join(", ") || "none" }),
    ];
    return html`
        <${Part} title="Counters" rows=${rows} columns=${columns} keyOf=${by("counter")}
            empty="No counter has counted. A rule with the action 'count' does." />
    `;
}

const MISS_COLUMNS = [
    PORT_HEAD,
    member("action", "Frames that no rule matches", { ...WATCHED, value: (row) => MISS[row.action] }),
];

/** @param {{device: Device}} props */
export function Rules({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "fields" });
    const { answer: meters } = useAnswer(device.name, { command: "meters" });
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    return html`
        <${Problem} text=${error} />
        <${Entries} device=${device} answer=${answer} meters=${meters} />
        <${Counters} answer=${answer} />
        <${Part} title="Miss actions" rows=${answer.miss_actions} columns=${MISS_COLUMNS} keyOf=${by("port")}
            empty="Frames that no rule matches go their way on all ports. With this those of port 7 are dropped:"
            make=${adpsh(device, "adp_fp_lookupMissAct_set 7 ADP_FP_MISS_DROP")} />
    `;
}
