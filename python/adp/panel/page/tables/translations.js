// What is done to VLAN tags: translations, double tags, VLANs of subnets, and each port's tag type.
import { html, useMemo } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { portName } from "../parts/ports.js";
import { useAnswer } from "../use.js";
import { Bar, grouped } from "./bar.js";
import { Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {import("../parts/table").Column} Column */

const PLAIN_TPID = 0x8100;

/** @type {Column} */
const PORT = { name: "port", title: "Port", value: (row) => row.port, show: (row) => portName(row.port) };
/** @type {Column} */
const PRIORITY = { name: "priority", title: "Priority", value: (row) => row.priority ?? "kept", isWatched: true };

/** @param {string} from @param {string} to @returns {Column[]} */
function vlanColumns(from, to) {
    return [
        PORT,
        { name: "vid", title: from, value: (row) => row.vid, isNumber: true, isHead: true },
        { name: "new_vid", title: to, value: (row) => row.new_vid, isNumber: true, isWatched: true },
        PRIORITY,
    ];
}

/** @param {number} address */
const dotted = (address) => [24, 16, 8, 0].map((bits) => (address >>> bits) & 0xff).join(".");
/** @param {any} row */
const subnetOf = (row) => `${dotted(row.address)}/${row.mask === 0 ? 0 : 32 - Math.log2(2 ** 32 - row.mask)}`;

/** @type {Column[]} */
const SUBNETS = [
    PORT,
    { name: "subnet", title: "Untagged packets of", value: subnetOf, isHead: true },
    { name: "vid", title: "VLAN", value: (row) => row.vid, isNumber: true, isWatched: true },
    PRIORITY,
];

/** @type {Column[]} */
const TAGS = [
    { ...PORT, isHead: true },
    { name: "mode", title: "Double tags", value: (row) => ({ off: "off", internal: "towards the provider", external: "towards the customer" })[
        /** @type {"off" | "internal" | "external"} */ (row.mode)] ?? row.mode, isWatched: true },
    { name: "tpid", title: "Tag type", value: (row) => `0x${row.tpid.toString(16).padStart(4, "0")}`, isWatched: true },
];

/** The tables of VLANs, and lines that fill them. A translation names its port by the chip's number: 4 is user port 1. */
const TABLES = [
    { name: "ingress", title: "Ingress translations", columns: vlanColumns("VLAN in the tag", "VLAN inside"),
        empty: "None. This takes the tagged VLAN 300 for VLAN 100 at port 1 (4 is its number on the chip):",
        line: "adp_vlan_translate_add 0 4 0 300 100 ADP_KEEP_PRIORITY" },
    { name: "egress", title: "Egress translations", columns: vlanColumns("VLAN inside", "VLAN in the tag"),
        empty: "None. This tags VLAN 100 as 300 at port 1 (4 is its number on the chip):",
        line: "adp_vlan_translate_egress_add 0 4 100 300 ADP_KEEP_PRIORITY" },
    { name: "double_tags", title: "Double-tag entries", columns: vlanColumns("Customer's VLAN", "Service's VLAN"),
        empty: "None. This puts the customer's VLAN 40 at port 6 into the service's VLAN 200:",
        line: "adp_vlan_dtag_add 0 6 0 40 200 ADP_KEEP_PRIORITY" },
];

/** @param {any} row */
const keyOf = (row) => `${row.port} ${row.vid}`;

/** @param {{count: number, capacity: number}} props */
function Fill({ count, capacity }) {
    return count > 0 && html`<p><${Bar} part=${count / capacity} text=${`${grouped(count)} of ${grouped(capacity)} entries`} name="Fill of the table" /></p>`;
}

/** @param {{device: Device}} props */
export function Translations({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "translations" });
    const tagged = useMemo(() => (answer?.ports ?? []).filter((/** @type {any} */ row) => row.mode !== "off" || row.tpid !== PLAIN_TPID), [answer]);
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    return html`
        <${Problem} text=${error} />
        ${TABLES.map(({ name, title, columns, empty, line }) => html`
            <${Part} key=${name} title=${title} rows=${answer[name]} columns=${columns} keyOf=${keyOf} empty=${empty}
                note=${html`<${Fill} count=${answer[name].length} capacity=${answer.capacity} />`} make=${adpsh(device, line)} />
        `)}
        <${Part} title="Subnets" rows=${answer.subnets} columns=${SUBNETS} keyOf=${(/** @type {any} */ row) => `${row.port} ${subnetOf(row)}`}
            note=${html`<${Fill} count=${answer.subnets.length} capacity=${answer.subnet_capacity} />`}
            empty="None. This puts untagged packets of 192.0.2.0/24 at port 1 (4 is its number on the chip) into VLAN 200:"
            make=${adpsh(device, "adp_vlan_ip4_add 4 0xC0000200 0xFFFFFF00 200 ADP_KEEP_PRIORITY 0")} />
        <${Part} title="Ports with double tags or another tag type" rows=${tagged} columns=${TAGS} keyOf=${(/** @type {any} */ row) => row.port}
            empty="All ports have one tag of the type 0x8100. This makes port 6 one of a customer:"
            make=${adpsh(device, "adp_double_tag_set 6 ADP_DOUBLE_TAG_CUSTOMER")} commands=${[`${device.vdevctl} translations`]} />
    `;
}
