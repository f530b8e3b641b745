// The table of multicast groups, and how ports forward to groups that are not in it.
import { html, useMemo, useState } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { portList } from "../parts/ports.js";
import { useAnswer } from "../use.js";
import { Fill } from "./bar.js";
import { PORT_HEAD, WATCHED, by, command, member, number } from "./columns.js";
import { Choice, Part, adpsh } from "./part.js";
import { PortRow } from "./port_row.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {import("../parts/table").Column} Column */

/** @param {any} row */
const keyOf = (row) => `${row.vid} ${row.mac}`;
/** @param {any} row */
const differs = (row) => !row.entries || !row.ipv4 || row.ipv4_miss !== "flood" || row.ipv6_miss !== "flood";

/**
 * @param {Device} device
 * @param {number[]} all ports
 * @returns {Column[]}
 */
function groupColumns(device, all) {
    const row = (/** @type {any} */ group) => html`<${PortRow} ports=${group.ports} all=${all} />`;
    return [
        number("vid", "VLAN"),
        member("mac", "Address", { isHead: true }),
        member("ports", "Ports", { ...WATCHED, value: (group) => portList(group.ports) }),
        member("row", "As a row", { value: (group) => group.ports.length, text: () => "", show: row }),
        command((group) => `${device.vdevctl} mcast --vlan ${group.vid} --mac ${group.mac}`),
    ];
}

/** @type {Column[]} */
const PORT_COLUMNS = [
    PORT_HEAD,
    member("entries", "The table is", { ...WATCHED, value: (row) => (row.entries ? "used" : "not used") }),
    member("ipv4", "Groups of IPv4 are", { ...WATCHED, value: (row) => (row.ipv4 ? "known" : "flooded") }),
    member("ipv4_miss", "Unknown group of IPv4", WATCHED),
    member("ipv6_miss", "Unknown group of IPv6", WATCHED),
];

/** @param {{device: Device, answer: any}} props */
function UnknownGroups({ device, answer }) {
    const [isAll, setAll] = useState(false);
    const rows = useMemo(() => (isAll ? answer.ports : answer.ports.filter(differs)), [answer, isAll]);
    const known = (/** @type {boolean} */ isKnown) => (isKnown ? "known" : "not known and flooded");
    const note = html`
        <p>On the chip, groups of IPv4 are ${known(answer.ipv4)}, and groups of IPv6 are ${known(answer.ipv6)}.</p>
        <${Choice} text="Also ports that flood to unknown groups" isOn=${isAll} onChange=${setAll} />
    `;
    return html`
        <${Part} title="Ports and unknown groups" note=${note} rows=${rows} columns=${PORT_COLUMNS} keyOf=${by("port")}
            empty="All ports use the table and flood to unknown groups. With this they drop frames to those of IPv4:"
            make=${adpsh(device, "adp_control_ipmc_lookup_miss_action ADP_MCAST_MISS_DROP")} />
    `;
}

/** @param {{device: Device}} props */
export function Multicast({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "mcast" });
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    return html`
        <${Problem} text=${error} />
        <${Part} title="Groups" rows=${answer.mcast} columns=${groupColumns(device, answer.ports.map(by("port")))}
            note=${html`<${Fill} count=${answer.mcast.length} capacity=${answer.capacity} what="groups" />`}
            keyOf=${keyOf} search="Search" commands=${[`${device.vdevctl} mcast`]}
            empty="There are no groups. This makes one in VLAN 1, for the ports 1 to 3:"
            make=${adpsh(device, "adp_create_igmpsn_group 01:00:5e:01:02:03 1 [1,2,3]")} />
        <${UnknownGroups} device=${device} answer=${answer} />
    `;
}
