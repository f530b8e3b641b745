// The trunks: their members, which of them are used, and what each carries.
import { html } from "../vendor/preact.js";
import { useAnswer } from "../use.js";
import { useRates } from "../parts/fresh_rates.js";
import { portList, portName } from "../parts/ports.js";
import { Table } from "../parts/table.js";
import { RateBar } from "./bar.js";
import { adpsh } from "./part.js";
import { Answered, Commands, Facts } from "./reading.js";

/**
 * @typedef {{trunk: number, group: number, members: number[], standby: number[], balance: number,
 *     manager?: number}} Trunk
 */
/** @typedef {{trunk: Trunk, port: number, state: string, link: boolean, sent?: number, received?: number}} Member */

const HASH = new Map([[0x50, "source"], [0x60, "destination"], [0x70, "source and destination"]]);

/** @param {Trunk} trunk */
function portsOf(trunk) {
    return [...new Set([...trunk.members, ...trunk.standby])].sort((a, b) => a - b);
}

/** @param {number} balance */
function balanceText(balance) {
    const what = balance <= 3 ? "MAC addresses" : "IP addresses and ports, else MAC addresses";
    return `${balance}: ${what}`;
}

/**
 * @param {Trunk[]} trunks
 * @param {{answer: any, rates: Map<number, Record<string, number>>}} read the answer about ports, and frames per second
 * @returns {Member[]}
 */
function membersOf(trunks, { answer, rates }) {
    const isUp = new Map(answer.ports.map((/** @type {any} */ row) => [row.port, row.up]));
    return trunks.flatMap((trunk) => portsOf(trunk).map((port) => {
        const link = isUp.get(port) === true;
        const state = trunk.standby.includes(port) ? "standby" : link ? "active" : "no link";
        const rate = rates.get(port);
        return { trunk, port, state, link, sent: rate?.tx_frames, received: rate?.rx_frames };
    }));
}

/**
 * @param {"sent" | "received"} name
 * @param {string} title
 * @param {Member[]} members
 * @returns {import("../parts/table").Column}
 */
function rateColumn(name, title, members) {
    const most = Math.max(...members.map((each) => each[name] ?? 0));
    return {
        name,
        title,
        value: (row) => row[name] ?? null,
        show: (row) => html`<${RateBar} rate=${row[name]} most=${most} />`,
    };
}

/**
 * @param {Member[]} members
 * @returns {import("../parts/table").Column[]}
 */
function memberColumns(members) {
    /** @param {Member} row */
    const share = (row) => {
        const all = members.filter((each) => each.trunk === row.trunk).reduce((sum, each) => sum + (each.sent ?? 0), 0);
        return all > 0 ? Math.round((100 * (row.sent ?? 0)) / all) : null;
    };
    return [
        {
            name: "member", title: "Member", value: (row) => row.port, show: (row) => `port ${portName(row.port)}`,
            isHead: true,
        },
        { name: "group", title: "Group", value: (row) => row.trunk.group, isNumber: true, isWatched: true },
        {
            name: "state", title: "State", value: (row) => row.state, isWatched: true,
            show: (row) => html`<span class=${`state-name ${row.state.replace(" ", "-")}`}>${row.state}</span>`,
        },
        { name: "link", title: "Link", value: (row) => (row.link ? "up" : "down"), isWatched: true },
        rateColumn("sent", "Sent frames/s", members),
        {
            name: "share", title: "Share", value: share, isNumber: true,
            show: (row) => (share(row) === null ? "–" : `${share(row)} %`),
        },
        rateColumn("received", "Received frames/s", members),
    ];
}

/**
 * @param {Trunk[]} trunks
 * @returns {import("../parts/table").Column[]}
 */
function groupColumns(trunks) {
    const members = (/** @type {Trunk} */ row) => portList([...row.members].sort((a, b) => a - b));
    const manager = (/** @type {Trunk} */ row) => row.manager ?? null;
    return [
        { name: "group", title: "Group", value: (row) => row.group, isHead: true },
        { name: "trunk", title: "Trunk", value: (row) => row.trunk, isNumber: true },
        { name: "members", title: "Members", value: members, isWatched: true },
        { name: "standby", title: "Standby", value: (row) => portList(row.standby), isWatched: true },
        {
            name: "balance", title: "Balancing mode, and what its hash includes", isWatched: true,
            value: (row) => balanceText(row.balance),
        },
        {
            name: "manager", title: "Manager", value: manager, isWatched: true,
            isHidden: trunks.every((trunk) => trunk.manager === undefined),
        },
    ];
}

/** @param {{device: import("../types").Device, answer: any, members: Member[]}} props */
function Trunk({ device, answer, members }) {
    const { trunks, hash, traps } = answer;
    return html`
        <${Facts} facts=${[
            [
                "The hash takes the flow's",
                `${HASH.get(hash) ?? "unknown ends"} (switch control 136: 0x${hash.toString(16)})`,
            ],
            ["LACP frames", traps.lacp ? "go to the CPU alone" : "are forwarded"],
        ]} />
        <${Table} caption=${`Aggregation groups of ${device.name}`} rows=${trunks} columns=${groupColumns(trunks)}
            keyOf=${(/** @type {Trunk} */ row) => row.trunk} empty="No group" />
        <${Table} caption="Members of the groups" rows=${members} columns=${memberColumns(members)}
            keyOf=${(/** @type {Member} */ row) => `${row.trunk.trunk} ${row.port}`} empty="No member" />
        <section class="card" aria-label="Commands">
            <h3>Commands</h3>
            <${Commands} commands=${[
                ["Show them", `${device.vdevctl} trunks`],
                [
                    "Group 1 of the ports 1 and 2",
                    adpsh(device, "adp_create_agg_group agg1", "adp_add_agg_member agg1 [1, 2]"),
                ],
                ["Balance by IP addresses", adpsh(device, "adp_set_agg_loadbalance agg1 6")],
            ]} />
        </section>
    `;
}

/** @param {{device: import("../types").Device}} props */
export function Trunks({ device }) {
    const reading = useAnswer(device.name, { command: "trunks" }, 0.5);
    const ports = useAnswer(device.name, { command: "ports" }, 0.5);
    const counters = useAnswer(device.name, { command: "counters" }, 1);
    const rates = useRates(counters.answer, "counters", "port", ["tx_frames", "rx_frames"]);
    const both = { answer: reading.answer && ports.answer, error: reading.error ?? ports.error ?? counters.error };
    return html`
        <${Answered} reading=${both}>
            ${() => html`
                <${Trunk} device=${device} answer=${reading.answer}
                    members=${membersOf(reading.answer.trunks, { answer: ports.answer, rates })} />
            `}
        <//>
    `;
}
