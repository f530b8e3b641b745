// The table of multicast groups, and how ports forward to groups that are not in it.
import { html, useMemo, useState } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { portList, portName } from "../parts/ports.js";
import { useAnswer } from "../use.js";
import { Bar } from "./bar.js";
import { Choice, Part, adpsh, commandColumn } from "./part.js";
import { PortRow } from "./port_row.js";

/** @typedef {import("../types").Device} Device */

/** @param {any} row */
const keyOf = (row) => `${row.vid} ${row.mac}`;
/** @param {any} row */
const differs = (row) => !row.entries || !row.ipv4 || row.ipv4_miss !== "flood" || row.ipv6_miss !== "flood";

/** @param {Device} device @param {number[]} all @returns {import("../parts/table").Column[]} */
function groupColumns(device, all) {
    return [
        { name: "vid", title: "VLAN", value: (row) => row.vid, isNumber: true },
        { name: "mac", title: "Address", value: (row) => row.mac, isHead: true },
        { name: "ports", title: "Ports", value: (row) => portList(row.ports), isWatched: true },
        { name: "row", title: "As a row", value: (row) => row.ports.length, text: () => "",
            show: (row) => html`<${PortRow} ports=${row.ports} all=${all} />` },
        commandColumn((row) => `${device.vdevctl} mcast --vlan ${row.vid} --mac ${row.mac}`),
    ];
}

/** @type {import("../parts/table").Column[]} */
const PORT_COLUMNS = [
    { name: "port", title: "Port", value: (row) => row.port, show: (row) => portName(row.port), isHead: true },
    { name: "entries", title: "Groups of the table", value: (row) => (row.entries ? "used" : "ignored, all groups are flooded"), isWatched: true },
    { name: "ipv4", title: "IPv4 groups", value: (row) => (row.ipv4 ? "known" : "flooded"), isWatched: true },
    { name: "ipv4_miss", title: "Unknown IPv4 group", value: (row) => row.ipv4_miss, isWatched: true },
    { name: "ipv6_miss", title: "Unknown IPv6 group", value: (row) => row.ipv6_miss, isWatched: true },
];

/** @param {{answer: any}} props */
function Fill({ answer }) {
    const count = answer.mcast.length;
    return html`<p><${Bar} part=${count / answer.capacity} text=${`${count} of ${answer.capacity} groups`} name="Fill of the table" /></p>`;
}

/** @param {{device: Device, answer: any}} props */
function UnknownGroups({ device, answer }) {
    const [isAll, setAll] = useState(false);
    const note = html`
        <p>On the chip, groups of IPv4 are ${answer.ipv4 ? "known" : "unknown and flooded"}, groups of IPv6 are
            ${answer.ipv6 ? " known" : " unknown and flooded"}.</p>
        <${Choice} text="Also ports that use the table and flood to unknown groups" isOn=${isAll} onChange=${setAll} />
    `;
    const rows = useMemo(() => (isAll ? answer.ports : answer.ports.filter(differs)), [answer, isAll]);
    return html`
        <${Part} title="Ports and unknown groups" note=${note} rows=${rows} columns=${PORT_COLUMNS}
            keyOf=${(/** @type {any} */ row) => row.port}
            empty="All ports use the table and flood to unknown groups. With this they drop frames to unknown groups of IPv4:"
            make=${adpsh(device, "adp_control_ipmc_lookup_miss_action ADP_MCAST_MISS_DROP")} />
    `;
}

/** @param {{device: Device}} props */
export function Multicast({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "mcast" });
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const all = answer.ports.map((/** @type {any} */ row) => row.port);
    return html`
        <${Problem} text=${error} />
        <${Part} title="Multicast groups" note=${html`<${Fill} answer=${answer} />`} rows=${answer.mcast}
            columns=${groupColumns(device, all)} keyOf=${keyOf} search="Search" commands=${[`${device.vdevctl} mcast`]}
            empty="There are no groups. This makes one in VLAN 1, for the ports 1 to 3:"
            make=${adpsh(device, "adp_create_igmpsn_group 01:00:5e:01:02:03 1 [1,2,3]")} />
        <${UnknownGroups} device=${device} answer=${answer} />
    `;
}
