// The meters of the field processor.
import { html, useMemo } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { useRates } from "../parts/fresh_rates.js";
import { short } from "../rates.js";
import { useAnswer } from "../use.js";
import { Bar, RateBar, grouped, mostOf } from "./bar.js";
import { Part, adpsh, commandColumn } from "./part.js";

/** @typedef {import("../types").Device} Device */

/** @param {Device} device @param {Map<any, Record<string, number>>} rates @returns {import("../parts/table").Column[]} */
function columnsOf(device, rates) {
    const most = Math.max(mostOf(rates, "passed"), mostOf(rates, "dropped"));
    return [
        { name: "meter", title: "Meter", value: (row) => row.meter, isNumber: true, isHead: true },
        { name: "rate", title: "Rate", value: (row) => row.rate, show: (row) => `${short(1000 * row.rate)}bit/s`, isNumber: true, isWatched: true },
        { name: "depth", title: "Burst", value: (row) => row.depth, show: (row) => `${grouped(row.depth)} octets`, isNumber: true, isWatched: true },
        { name: "passed", title: "Frames passed", value: (row) => row.passed, show: (row) => grouped(row.passed), isNumber: true },
        { name: "passing", title: "Passed per second", value: (row) => row.rates?.passed ?? 0, show: (row) => html`<${RateBar} rate=${row.rates?.passed} most=${most} />` },
        { name: "dropped", title: "Frames dropped", value: (row) => row.dropped, show: (row) => grouped(row.dropped), isNumber: true },
        { name: "dropping", title: "Dropped per second", value: (row) => row.rates?.dropped ?? 0, show: (row) => html`<${RateBar} rate=${row.rates?.dropped} most=${most} />` },
        { name: "entries", title: "Entries that name it", value: (row) => row.entries.join(", ") || "none", isWatched: true },
        commandColumn((row) => `${device.vdevctl} meters ${row.meter}`),
    ];
}

/** @param {{device: Device}} props */
export function Meters({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "meters" });
    const rates = useRates(answer, "meters", "meter", ["passed", "dropped"]);
    const rows = useMemo(() => (answer?.meters ?? []).map((/** @type {any} */ row) => ({ ...row, rates: rates.get(row.meter) })), [answer, rates]);
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const note = html`
        <p><${Bar} part=${rows.length / answer.capacity} text=${`${rows.length} of ${answer.capacity} meters`} name="Fill of the table" /></p>
        <p>Preamble and gap are ${answer.counts_gap ? "counted" : "not counted"}.</p>
    `;
    return html`
        <${Problem} text=${error} />
        <${Part} title="Meters" note=${note} rows=${rows} columns=${columnsOf(device, rates)} keyOf=${(/** @type {any} */ row) => row.meter}
            commands=${[`${device.vdevctl} meters --rate 1s`]}
            empty="There are no meters. This rule has one, for the frames of the station 02:00:00:00:00:01:"
            make=${adpsh(device, "adp_fp_add_entity_rule {submodule_type=30 qualify_num=1 action_num=1 qualifies=[{type=6 data=020000000001 mask=ffffffffffff}] actions=[{type=53}]}")} />
    `;
}
