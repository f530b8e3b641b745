// The meters of the field processor.
import { html, useMemo } from "../vendor/preact.js";
import { useRates } from "../parts/fresh_rates.js";
import { Problem } from "../parts/problem.js";
import { useAnswer } from "../use.js";
import { Fill, bitRate, grouped } from "./bar.js";
import { WATCHED, by, command, member, number, passedAndDropped, withRates } from "./columns.js";
import { Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */

const RULE_WITH_METER = "adp_fp_add_entity_rule {submodule_type=30 qualify_num=1 action_num=1 "
    + "qualifies=[{type=6 data=020000000001 mask=ffffffffffff}] actions=[{type=53}]}";

/**
 * @param {Device} device
 * @param {import("../parts/fresh_rates").Rates} rates
 * @returns {import("../parts/table").Column[]}
 */
function columnsOf(device, rates) {
    return [
        number("meter", "Meter", { isHead: true }),
        number("rate", "Rate", { ...WATCHED, show: (row) => bitRate(row.rate) }),
        number("depth", "Burst", { ...WATCHED, show: (row) => `${grouped(row.depth)} octets` }),
        ...passedAndDropped(rates),
        member("entries", "Entries that name it", { ...WATCHED, value: (row) => row.entries.join(", ") || "none" }),
        command((row) => `${device.vdevctl} meters ${row.meter}`),
    ];
}

/** @param {{device: Device}} props */
export function Meters({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "meters" });
    const rates = useRates(answer, "meters", "meter", ["passed", "dropped"]);
    const rows = useMemo(() => withRates(answer?.meters, rates, "meter"), [answer, rates]);
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const note = html`
        <${Fill} count=${rows.length} capacity=${answer.capacity} what="meters" />
        <p>Preamble and gap are ${answer.counts_gap ? "counted" : "not counted"}.</p>
    `;
    return html`
        <${Problem} text=${error} />
        <${Part} title="Meters" isOnly note=${note} rows=${rows} columns=${columnsOf(device, rates)}
            keyOf=${by("meter")} commands=${[`${device.vdevctl} meters --rate 1s`]}
            empty="There are no meters. This rule has one, for frames of the station 02:00:00:00:00:01:"
            make=${adpsh(device, RULE_WITH_METER)} />
    `;
}
