// The spanning-tree groups as a matrix: a row for each, a column with the state of each port.
import { html, useMemo } from "../vendor/preact.js";
import { addressOf, useAnswer } from "../use.js";
import { portList, portName } from "../parts/ports.js";
import { Table } from "../parts/table.js";
import { adpsh } from "./part.js";
import { Answered, Commands, Facts, Legend } from "./reading.js";

/** The states by the member of the answer that lists their ports; the number is that of a driver call. */
const STATES = [
    { name: "forwarding", letter: "F", number: 4 },
    { name: "learning", letter: "L", number: 3 },
    { name: "listening", letter: "l", number: 2 },
    { name: "blocking", letter: "B", number: 1 },
    { name: "disabled", letter: "D", number: 0 },
];

/** @typedef {{group: any, states: Map<number, typeof STATES[0]>}} Row */

/**
 * VLANs as vdevctl writes them.
 * @param {[number, number][]} ranges
 */
function vlanText(ranges) {
    return ranges.map(([first, last]) => (first === last ? first : `${first}-${last}`)).join(",") || "none";
}

/**
 * @param {number} port
 * @returns {import("../parts/table").Column}
 */
function portColumn(port) {
    const name = port === 0 ? "CPU port" : `port ${port}`;
    return {
        name: `port${port}`,
        title: portName(port),
        about: name,
        value: (row) => row.states.get(port)?.letter ?? "",
        label: (row) => `group ${row.group.group}, ${name}: ${row.states.get(port)?.name ?? "no state"}`,
        mark: (row) => row.states.get(port)?.name ?? "",
        isLetter: true,
        isWatched: true,
    };
}

/**
 * @param {string} device
 * @param {number[]} ports
 * @param {number} chosen
 * @returns {import("../parts/table").Column[]}
 */
function columnsOf(device, ports, chosen) {
    /** @param {Row} row */
    const name = ({ group }) => html`
        <a href=${addressOf("tables", device, "spanning-tree", group.group)}
            aria-current=${group.group === chosen ? "true" : null}>${group.group}</a>
        ${group.default && html` <span class="is-default">default</span>`}
    `;
    return [
        { name: "group", title: "Group", value: (row) => row.group.group, show: name, isHead: true },
        ...ports.map(portColumn),
        {
            name: "vlans",
            title: "VLANs",
            value: (row) => vlanText(row.group.vlans),
            show: ({ group }) => html`<span class="cut" title=${vlanText(group.vlans)}>${vlanText(group.vlans)}</span>`,
            isWatched: true,
        },
    ];
}

/** @param {{device: import("../types").Device, group: any}} props */
function Chosen({ device, group }) {
    const vid = group.vlans[0]?.[0];
    /** @type {[string, string][]} */
    const commands = [
        ["Show it", `${device.vdevctl} groups --group ${group.group}`],
        ["Block port 1 in it", adpsh(device, `adp_set_port_mstp_state ${group.group} 1 1`)],
    ];
    if (!group.default) {
        const lines = [`adp_create_mstp_instance ${group.group}`, vid && `adp_add_msti_member ${group.group} ${vid}`];
        commands.push(["Create it", adpsh(device, ...lines.filter((line) => line))]);
    }
    return html`
        <section class="card" aria-label=${`Group ${group.group}`}>
            <h3>Group ${group.group}${group.default && ", the default group"}</h3>
            <${Facts} facts=${[
                ["VLANs", vlanText(group.vlans)],
                ...STATES.filter(({ name }) => group[name].length > 0).map(({ name }) => [name, portList(group[name])]),
            ]} />
            <${Commands} commands=${commands} />
        </section>
    `;
}

/** @param {{device: import("../types").Device, answer: any, rest: string[]}} props */
function Groups({ device, answer, rest }) {
    /** @type {Row[]} */
    const rows = useMemo(() => answer.groups.map((/** @type {any} */ group) => ({
        group,
        states: new Map(STATES.flatMap((state) => (
            group[state.name].map((/** @type {number} */ port) => [port, state])
        ))),
    })), [answer]);
    const ports = [...rows[0].states.keys()].sort((a, b) => a - b);
    const chosen = (rows.find(({ group }) => group.group === Number(rest[0] ?? "-1")) ?? rows[0]).group;
    return html`
        <${Legend} letters=${STATES.map(({ name, letter, number }) => [letter, name, `${name} (state ${number})`])} />
        <${Table} caption=${`Spanning-tree groups of ${device.name} (at most ${answer.capacity}) and their ports`}
            rows=${rows} keyOf=${(/** @type {Row} */ row) => row.group.group}
            columns=${columnsOf(device.name, ports, chosen.group)} />
        <${Chosen} device=${device} group=${chosen} />
    `;
}

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function SpanningTree({ device, rest }) {
    const reading = useAnswer(device.name, { command: "groups" }, 0.5);
    return html`
        <${Answered} reading=${reading}>
            ${(/** @type {any} */ answer) => html`<${Groups} device=${device} answer=${answer} rest=${rest} />`}
        <//>
    `;
}
