// The VLANs as a matrix: a row for each, a column for each port.
import { html, useCallback, useMemo, useState } from "../vendor/preact.js";
import { addressOf, useAnswer } from "../use.js";
import { numbersOf, portList, portName, portSet } from "../parts/ports.js";
import { Problem } from "../parts/problem.js";
import { Table } from "../parts/table.js";
import { adpsh } from "./part.js";
import { Answered, Commands, Facts, Legend } from "./reading.js";

/** @typedef {{vid: number, default: boolean, members: number[], untagged: number[]}} Vlan */
/**
 * A VLAN with its ports as bits: members, untagged ones, and those that have it as their PVID.
 * @typedef {{vlan: Vlan, members: number, untagged: number, pvid: number}} Row
 */

/** @param {number[]} ports */
function bitsOf(ports) {
    return ports.reduce((bits, port) => bits | (1 << port), 0);
}

/** @param {number} bits @param {number} port */
function has(bits, port) {
    return ((bits >> port) & 1) === 1;
}

/** @param {Row} row @param {number} port */
function letterOf(row, port) {
    return has(row.members, port) ? (has(row.untagged, port) ? "U" : "T") : "";
}

const NAMES = { U: "untagged", T: "tagged", "": "not a member" };
const MARKS = { U: "untagged", T: "tagged", "": "" };

/**
 * @param {number} port
 * @param {boolean} isHidden
 * @returns {import("../parts/table").Column}
 */
function portColumn(port, isHidden) {
    const isPvid = (/** @type {Row} */ row) => has(row.pvid, port);
    const about = port === 0 ? "CPU port" : `port ${port}`;
    return {
        name: `port${port}`,
        title: portName(port),
        about,
        value: (row) => `${letterOf(row, port)}${isPvid(row) ? "P" : ""}`,
        show: (row) => html`${letterOf(row, port) || "·"}${isPvid(row) && html`<sup>P</sup>`}`,
        label: (row) => `VLAN ${row.vlan.vid}, ${about}: ${NAMES[letterOf(row, port)]}` +
            `${isPvid(row) ? ", PVID of the port" : ""}`,
        mark: (row) => `${MARKS[letterOf(row, port)]}${isPvid(row) ? " pvid" : ""}`,
        isLetter: true,
        isWatched: true,
        isHidden,
    };
}

/**
 * @param {string} device
 * @param {number[]} ports
 * @param {Set<number>} shown the ports that are; without any all are
 * @param {number} chosen
 * @returns {import("../parts/table").Column[]}
 */
function columnsOf(device, ports, shown, chosen) {
    /** @param {Row} row */
    const name = ({ vlan }) => html`
        <a href=${addressOf("tables", device, "vlans", vlan.vid)}
            aria-current=${vlan.vid === chosen ? "true" : null}>${vlan.vid}</a>
        ${vlan.default && html` <span class="is-default">default</span>`}
    `;
    return [
        {
            name: "vlan", title: "VLAN", value: (row) => row.vlan.vid, text: (row) => `${row.vlan.vid} default`,
            show: name, isHead: true,
        },
        ...ports.map((port) => portColumn(port, shown.size > 0 && !shown.has(port))),
    ];
}

/** @param {{device: import("../types").Device, row: Row, ports: number[]}} props */
function Chosen({ device, row, ports }) {
    const { vid, members, untagged, default: isDefault } = row.vlan;
    const set = `adp_vlan_port_set ${vid} ${portSet(members)} ${portSet(untagged)}`;
    /** @type {[string, string][]} */
    const commands = [
        ["Show it", `${device.vdevctl} vlans ${vid}`],
        ["Its addresses", `${device.vdevctl} macs --vlan ${vid}`],
        ["Make it as it is", adpsh(device, ...(isDefault ? [] : [`adp_vlan_create ${vid}`]), set)],
    ];
    if (!isDefault) {
        commands.push(["Destroy it", adpsh(device, `adp_vlan_destroy ${vid}`)]);
    }
    return html`
        <section class="card" aria-label=${`VLAN ${vid}`}>
            <h3>VLAN ${vid}${isDefault && ", the default VLAN"}</h3>
            <${Facts} facts=${[
                ["Members", portList(members)],
                ["Untagged", portList(untagged)],
                ["PVID of", portList(ports.filter((port) => has(row.pvid, port)))],
            ]} />
            <${Commands} commands=${commands} />
        </section>
    `;
}

/** @param {{label: string, value: string, onValue: (value: string) => void, example: string}} props */
function Numbers({ label, value, onValue, example }) {
    return html`
        <label>${label}
            <input value=${value} placeholder=${example} autocomplete="off"
                aria-invalid=${numbersOf(value) ? null : "true"}
                onInput=${(/** @type {any} */ event) => onValue(event.target.value)} />
        </label>
    `;
}

/** What is to be shown, by two fields: VLANs, and ports. */
function useFilter() {
    const [vlanText, setVlans] = useState("");
    const [portText, setPorts] = useState("");
    const vlans = numbersOf(vlanText) ?? new Set();
    const ports = numbersOf(portText) ?? new Set();
    const isWrong = !numbersOf(vlanText) || !numbersOf(portText);
    const bits = bitsOf([...ports].filter((port) => port < 32));
    const keep = useCallback(
        (/** @type {Row} */ row) => (vlans.size === 0 || vlans.has(row.vlan.vid)) &&
            (ports.size === 0 || (row.members & bits) !== 0),
        [vlanText, portText],
    );
    const fields = html`
        <div class="matrix-filter">
            <${Numbers} label="VLANs" value=${vlanText} onValue=${setVlans} example="100-199,4094" />
            <${Numbers} label="Ports" value=${portText} onValue=${setPorts} example="1-4,cpu" />
        </div>
        <${Problem} text=${isWrong ? "Numbers are written as 3, 1-4 or 1-4,7; cpu is the CPU port." : null} />
    `;
    return { keep, ports, fields };
}

/**
 * @param {{device: import("../types").Device, vlans: Vlan[], portRows: {port: number, pvid: number}[],
 *     rest: string[]}} props
 */
function Matrix({ device, vlans, portRows, rest }) {
    const pvids = portRows.map(({ port, pvid }) => `${port} ${pvid}`).join();
    const { keep, ports: shown, fields } = useFilter();
    const rows = useMemo(() => {
        /** @type {Map<number, number>} */
        const bits = new Map();
        portRows.forEach(({ port, pvid }) => bits.set(pvid, (bits.get(pvid) ?? 0) | (1 << port)));
        return vlans.map((vlan) => (
            { vlan, members: bitsOf(vlan.members), untagged: bitsOf(vlan.untagged), pvid: bits.get(vlan.vid) ?? 0 }
        ));
    }, [vlans, pvids]);
    const ports = portRows.map(({ port }) => port);
    const chosen = rows.find(({ vlan }) => vlan.vid === Number(rest[0])) ?? rows[0];
    const lost = portRows.filter(({ pvid }) => !vlans.some((vlan) => vlan.vid === pvid));
    return html`
        ${lost.map(({ port, pvid }) => html`
            <p class="warning">
                Port ${portName(port)} has the PVID ${pvid}, a VLAN that does not exist: its untagged frames are
                dropped.
            </p>
        `)}
        ${fields}
        <${Legend} letters=${[
            ["T", "tagged", "tagged"], ["U", "untagged", "untagged"], ["·", "", "not a member"],
            ["P", "pvid", "PVID of the port"],
        ]} />
        <${Table} caption=${`VLANs of ${device.name} and their ports`} rows=${rows} keep=${keep}
            keyOf=${(/** @type {Row} */ row) => row.vlan.vid}
            columns=${columnsOf(device.name, ports, shown, chosen?.vlan.vid)} />
        ${chosen && html`<${Chosen} device=${device} row=${chosen} ports=${ports} />`}
    `;
}

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Vlans({ device, rest }) {
    const vlans = useAnswer(device.name, { command: "vlans" });
    const ports = useAnswer(device.name, { command: "ports" });
    const both = { answer: vlans.answer && ports.answer, error: vlans.error ?? ports.error };
    return html`
        <${Answered} reading=${both}>
            ${() => html`
                <${Matrix} device=${device} vlans=${vlans.answer.vlans} portRows=${ports.answer.ports} rest=${rest} />
            `}
        <//>
    `;
}
