// The MAC table: searched, sorted, with ages that count on.
import { html, useMemo } from "../vendor/preact.js";
import { addressOf, useAnswer, useTwoAnswers } from "../use.js";
import { portName } from "../parts/ports.js";
import { short } from "../rates.js";
import { Table } from "../parts/table.js";
import { Age, ageText } from "./age.js";
import { adpsh } from "./part.js";
import { Answered, Commands, Facts } from "./reading.js";

/** @typedef {{vid: number, mac: string, index: number, port: number, trunk: number, kind: string, static: boolean,
 *     drops_to: boolean, drops_from: boolean, age?: number}} Station */
/** @typedef {import("../parts/table").Column} Column */

const EVERY_SECONDS = 2;
/** Places behind a trunk sort after all ports. */
const TRUNKS = 1000;

/** @param {Station} row */
function keyOf(row) {
    return `${row.vid}-${row.mac}`;
}

/** @param {Station} row */
function placeText(row) {
    return row.trunk < 0 ? `port ${portName(row.port)}` : `trunk ${row.trunk} (group ${row.trunk + 1})`;
}

/** @param {Station} row */
function kindText(row) {
    const drops = [row.drops_to && "to it", row.drops_from && "from it"].filter((each) => each).join(" and ");
    return drops ? `filter: frames ${drops} are dropped` : row.kind;
}

/**
 * @param {string} device
 * @param {{read: number, isLive: boolean}} times when the answer came, by performance.now(), and whether ages count on
 * @param {string} chosen the key of the chosen row
 * @returns {Column[]}
 */
function columnsOf(device, times, chosen) {
    /** @param {Station} row */
    const address = (row) => html`
        <a class="mono" href=${addressOf("tables", device, "addresses", keyOf(row))}
            aria-current=${keyOf(row) === chosen ? "true" : null}>${row.mac}</a>
    `;
    return [
        {
            name: "mac", title: "Address", value: (row) => parseInt(row.mac.replaceAll(":", ""), 16),
            text: (row) => row.mac, show: address, isHead: true,
        },
        { name: "vlan", title: "VLAN", value: (row) => row.vid, text: (row) => `vlan ${row.vid}`, isNumber: true },
        {
            name: "place", title: "Behind", value: (row) => (row.trunk < 0 ? row.port : TRUNKS + row.trunk),
            text: placeText, show: placeText, isWatched: true,
        },
        { name: "kind", title: "Kind", value: kindText, isWatched: true },
        {
            name: "age", title: "Age", value: (row) => row.age ?? null, text: () => "", mark: () => "age",
            isNumber: true,
            show: (row) => (row.age === undefined ? "does not age" : html`<${Age} seconds=${row.age} ...${times} />`),
        },
        { name: "index", title: "Index", value: (row) => row.index, text: () => "", isNumber: true },
    ];
}

/**
 * How full the table is, and what became of the addresses.
 * @param {{answer: any}} props
 */
function Fill({ answer }) {
    const { before, now } = useTwoAnswers(answer);
    const used = answer.macs.length + answer.groups;
    const seconds = before ? now.time - before.time : 0;
    /** @param {string} count */
    const counted = (count) => {
        const rate = seconds > 0 ? (now[count] - before[count]) / seconds : 0;
        return `${answer[count]}${rate > 0 ? ` (${short(rate)}/s)` : ""}`;
    };
    return html`
        <${Facts} facts=${[
            ["Entries", html`
                <meter aria-label="Entries of the table" min="0" max=${answer.capacity} value=${used}></meter>
                ${` ${used} of ${answer.capacity}, ${answer.groups} of them groups`}
            `],
            ["Learned", counted("learned")],
            ["Moved", counted("moved")],
            ["Aged out", counted("aged")],
            ["Refused for lack of room", counted("refused")],
            ["Age time", answer.age_time === 0 ? "none: entries do not age" : ageText(answer.age_time)],
        ]} />
    `;
}

/** @param {{device: import("../types").Device, row: Station | undefined}} props */
function AddressCommands({ device, row }) {
    /** @type {[string, string][]} */
    const commands = row ? [
        ["Show it", `${device.vdevctl} macs --vlan ${row.vid} --mac ${row.mac}`],
        ["Ask the library", adpsh(device, `adp_get_mac_addr ${row.mac} ${row.vid}`)],
        ["Forget it in all VLANs", adpsh(device, `adp_del_mac_addr_by_mac ${row.mac} 1`)],
    ] : [
        ["Show the table", `${device.vdevctl} macs`],
        ["What is learned", `${device.vdevctl} watch learning`],
        ["Forget what was learned", adpsh(device, "adp_del_mac_by_lrntype 0")],
    ];
    return html`
        <section class="card" aria-label="Commands">
            <h3>${row ? html`<span class="mono">${row.mac}</span> in VLAN ${row.vid}` : "Commands"}</h3>
            <${Commands} commands=${commands} />
        </section>
    `;
}

/** @param {{device: import("../types").Device, answer: any, isLive: boolean, rest: string[]}} props */
function Stations({ device, answer, isLive, rest }) {
    const chosen = rest[0] ?? "";
    const read = useMemo(() => performance.now(), [answer]);
    const row = chosen && answer.macs.find((/** @type {Station} */ each) => keyOf(each) === chosen);
    return html`
        <${Fill} answer=${answer} />
        <${Table} caption=${`Addresses of ${device.name}`} rows=${answer.macs} keyOf=${keyOf} search="Search addresses"
            columns=${columnsOf(device.name, { read, isLive }, chosen)} empty="No address" />
        <${AddressCommands} device=${device} row=${row} />
    `;
}

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Addresses({ device, rest }) {
    const reading = useAnswer(device.name, { command: "macs" }, EVERY_SECONDS);
    return html`
        <${Answered} reading=${reading}>
            ${(/** @type {any} */ answer) => html`
                <${Stations} device=${device} answer=${answer} isLive=${!reading.error} rest=${rest} />
            `}
        <//>
    `;
}
