// The rules of the field processor with their hits, their counters, and what becomes of frames that no rule matches.
import { html, useMemo, useState } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { portName } from "../parts/ports.js";
import { useRates } from "../parts/fresh_rates.js";
import { short } from "../rates.js";
import { useAnswer } from "../use.js";
import { Bar, RateBar, grouped, mostOf } from "./bar.js";
import { Choice, Part, adpsh, commandColumn } from "./part.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {import("../parts/table").Column} Column */

const MISS = ["nothing", "are dropped", "go to the CPU, too", "go to the CPU alone"];

/** @param {any[]} rows @param {string} none */
const textsOf = (rows, none) => rows.map((row) => row.text).join(", ") || none;
/** @param {any} row */
const stateOf = (row) => `${row.installed ? (row.changed ? "changed" : "installed") : "staged"}${row.part === "whole" ? "" : `, ${row.part} half`}`;

/**
 * The entries in the order in which they are asked, with their rates and what their counters and meters say.
 * @param {any} answer @param {any} meters @param {Map<any, Record<string, number>>} rates
 */
function rowsOf(answer, meters, rates) {
    const meterOf = new Map((meters?.meters ?? []).map((/** @type {any} */ meter) => [meter.meter, meter]));
    const rows = answer.fields.map((/** @type {any} */ row) => ({
        ...row,
        rate: rates.get(row.entry)?.matches,
        meters: row.actions.filter((/** @type {any} */ each) => each.action === "meter")
            .map((/** @type {any} */ each) => meterOf.get(each.value)).filter((/** @type {any} */ meter) => meter),
    }));
    return rows.sort((/** @type {any} */ a, /** @type {any} */ b) => a.group - b.group || b.priority - a.priority || a.entry - b.entry);
}

/** @param {any} row */
const meterText = (row) => row.meters.map((/** @type {any} */ meter) =>
    `meter ${meter.meter}: ${short(1000 * meter.rate)}bit/s, ${grouped(meter.dropped)} dropped`).join("; ");

/** @param {any} row */
function Hits(row) {
    const isHit = row.rate > 0;
    return html`${grouped(row.matches)} <span class=${isHit ? "hit" : "hit off"}>${isHit ? "hit" : ""}</span>`;
}

/** @param {Device} device @param {number} most the highest rate @returns {Column[]} */
function ruleColumns(device, most) {
    return [
        { name: "group", title: "Group", value: (row) => row.group, isNumber: true },
        { name: "priority", title: "Priority", value: (row) => row.priority, isNumber: true, isWatched: true },
        { name: "entry", title: "Entry", value: (row) => row.entry, isNumber: true, isHead: true },
        { name: "matches", title: "Hits", value: (row) => row.matches, show: Hits, isNumber: true },
        { name: "rate", title: "Hits per second", value: (row) => row.rate ?? 0, show: (row) => html`<${RateBar} rate=${row.rate} most=${most} />` },
        { name: "qualifiers", title: "Matches", value: (row) => textsOf(row.qualifiers, "all"), isWatched: true },
        { name: "actions", title: "Actions", value: (row) => textsOf(row.actions, "nothing"), isWatched: true },
        { name: "meters", title: "Meters", value: meterText },
        { name: "state", title: "State", value: stateOf, isWatched: true },
        commandColumn((row) => `${device.vdevctl} fields --entry ${row.entry}`),
    ];
}

/** @param {{device: Device, answer: any, meters: any}} props */
function RuleTable({ device, answer, meters }) {
    const [isHit, setHit] = useState(false);
    const rates = useRates(answer, "fields", "entry", ["matches"]);
    const rows = useMemo(() => rowsOf(answer, meters, rates), [answer, meters, rates]);
    const keep = useMemo(() => (isHit ? (/** @type {any} */ row) => row.matches > 0 : null), [isHit]);
    const count = answer.fields.length;
    const note = html`
        <p><${Bar} part=${count / answer.capacity} text=${`${count} of ${answer.capacity} entries`} name="Fill of the table" /></p>
        <p>In each group the rule with the highest priority acts; groups act side by side.</p>
        <${Choice} text="Only rules with hits" isOn=${isHit} onChange=${setHit} />
    `;
    return html`
        <${Part} title="Rules" note=${note} rows=${rows} columns=${ruleColumns(device, mostOf(rates, "matches"))}
            keyOf=${(/** @type {any} */ row) => row.entry} keep=${keep} search="Search" sort=${{ name: "group", isUp: true }}
            commands=${[`${device.vdevctl} fields`, `${device.vdevctl} fields --nonzero --rate 1s`]}
            empty="There are no rules. This one gives frames from port 1 the DSCP 46:"
            make=${adpsh(device, "adp_add_remark_rule {rule_id=1 port_bitmap=[0,1] remark_kind=2 remark_value=46 rule_form=7}")} />
    `;
}

/** @param {any} answer @param {number} counter */
function entriesOf(answer, counter) {
    const names = (/** @type {any} */ each) => each.action === "count" && each.value === counter;
    return answer.fields.filter((/** @type {any} */ row) => row.actions.some(names)).map((/** @type {any} */ row) => row.entry);
}

/** @param {{answer: any}} props */
function Counters({ answer }) {
    const rates = useRates(answer, "counters", "counter", ["frames", "octets"]);
    const rows = useMemo(() => answer.counters.map((/** @type {any} */ row) => ({
        ...row, entries: entriesOf(answer, row.counter).join(", ") || "none", ...{ rate: rates.get(row.counter) } })), [answer, rates]);
    const [frames, octets] = [mostOf(rates, "frames"), mostOf(rates, "octets")];
    /** @type {Column[]} */
    const columns = [
        { name: "counter", title: "Counter", value: (row) => row.counter, isNumber: true, isHead: true },
        { name: "frames", title: "Frames", value: (row) => row.frames, show: (row) => grouped(row.frames), isNumber: true },
        { name: "frame_rate", title: "Frames per second", value: (row) => row.rate?.frames ?? 0, show: (row) => html`<${RateBar} rate=${row.rate?.frames} most=${frames} />` },
        { name: "octets", title: "Octets", value: (row) => row.octets, show: (row) => grouped(row.octets), isNumber: true },
        { name: "octet_rate", title: "Octets per second", value: (row) => row.rate?.octets ?? 0, show: (row) => html`<${RateBar} rate=${row.rate?.octets} most=${octets} />` },
        { name: "entries", title: "Entries that count", value: (row) => row.entries },
    ];
    return html`
        <${Part} title="Counters" rows=${rows} columns=${columns} keyOf=${(/** @type {any} */ row) => row.counter}
            empty="No counter has counted. A rule with the action count does." />
    `;
}

/** @param {{device: Device, answer: any}} props */
function Misses({ device, answer }) {
    /** @type {Column[]} */
    const columns = [
        { name: "port", title: "Port", value: (row) => row.port, show: (row) => portName(row.port), isHead: true },
        { name: "action", title: "Its frames that no rule matches", value: (row) => MISS[row.action] ?? `action ${row.action}`, isWatched: true },
    ];
    return html`
        <${Part} title="Miss actions" rows=${answer.miss_actions} columns=${columns} keyOf=${(/** @type {any} */ row) => row.port}
            empty="Frames that no rule matches go their way on all ports. With this those of port 7 are dropped:"
            make=${adpsh(device, "adp_fp_lookupMissAct_set 7 ADP_FP_MISS_DROP")} />
    `;
}

/** @param {{device: Device}} props */
export function Rules({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "fields" });
    const { answer: meters } = useAnswer(device.name, { command: "meters" });
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    return html`
        <${Problem} text=${error} />
        <${RuleTable} device=${device} answer=${answer} meters=${meters} />
        <${Counters} answer=${answer} />
        <${Misses} device=${device} answer=${answer} />
    `;
}
