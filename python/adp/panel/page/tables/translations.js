// What is done to VLAN tags: translations, double tags, VLANs of subnets, and each port's tag type.
import { html, useMemo } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { useAnswer } from "../use.js";
import { Fill } from "./bar.js";
import { PORT, PORT_HEAD, WATCHED, by, member, number } from "./columns.js";
import { Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */

const PLAIN_TPID = 0x8100;
const MODES = { off: "off", internal: "towards the provider", external: "towards the customer" };

/** @param {any} row */
const modeOf = (row) => MODES[/** @type {keyof typeof MODES} */ (row.mode)] ?? row.mode;

const PRIORITY = member("priority", "Priority", { ...WATCHED, value: (row) => row.priority ?? "kept" });

/**
 * @param {string} from
 * @param {string} to
 */
function vlanColumns(from, to) {
    return [PORT, number("vid", from, { isHead: true }), number("new_vid", to, WATCHED), PRIORITY];
}

/** @param {number} address */
const dotted = (address) => [24, 16, 8, 0].map((bits) => (address >>> bits) & 0xff).join(".");
/** @param {any} row whose mask is a run of bits */
const subnetOf = (row) => `${dotted(row.address)}/${32 - Math.log2(2 ** 32 - row.mask)}`;

const SUBNETS = [
    PORT,
    member("subnet", "Untagged packets of", { value: subnetOf, isHead: true }),
    number("vid", "VLAN", WATCHED),
    PRIORITY,
];

const TAGS = [
    PORT_HEAD,
    member("mode", "Double tags", { ...WATCHED, value: modeOf }),
    member("tpid", "Tag type", { ...WATCHED, value: (row) => `0x${row.tpid.toString(16).padStart(4, "0")}` }),
];

/** The tables of VLANs, and lines that fill them. A translation names its port by the chip's number. */
const TABLES = [
    { name: "ingress", title: "Ingress translations", columns: vlanColumns("VLAN in the tag", "VLAN inside"),
        empty: "None. This takes a tagged VLAN 300 for VLAN 100 at port 1, which is port 4 of the chip:",
        line: "adp_vlan_translate_add 0 4 0 300 100 ADP_KEEP_PRIORITY" },
    { name: "egress", title: "Egress translations", columns: vlanColumns("VLAN inside", "VLAN in the tag"),
        empty: "None. This tags VLAN 100 as 300 at port 1, which is port 4 of the chip:",
        line: "adp_vlan_translate_egress_add 0 4 100 300 ADP_KEEP_PRIORITY" },
    { name: "double_tags", title: "Double-tag entries", columns: vlanColumns("Customer's VLAN", "Service's VLAN"),
        empty: "None. This puts the customer's VLAN 40 at port 6 into the service's VLAN 200:",
        line: "adp_vlan_dtag_add 0 6 0 40 200 ADP_KEEP_PRIORITY" },
];

/** @param {any} row */
const isTagged = (row) => row.mode !== "off" || row.tpid !== PLAIN_TPID;

/** @param {{device: Device}} props */
export function Translations({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "translations" });
    const tagged = useMemo(() => answer?.ports.filter(isTagged), [answer]);
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    return html`
        <${Problem} text=${error} />
        ${TABLES.map(({ name, title, columns, empty, line }) => html`
            <${Part} key=${name} title=${title} rows=${answer[name]} columns=${columns} empty=${empty}
                make=${adpsh(device, line)} keyOf=${(/** @type {any} */ row) => `${row.port} ${row.vid}`}
                note=${html`<${Fill} count=${answer[name].length} capacity=${answer.capacity} />`} />
        `)}
        <${Part} title="Subnets" rows=${answer.subnets} columns=${SUBNETS}
            keyOf=${(/** @type {any} */ row) => `${row.port} ${subnetOf(row)}`}
            note=${html`<${Fill} count=${answer.subnets.length} capacity=${answer.subnet_capacity} />`}
            empty="None. This puts untagged packets of 192.0.2.0/24 at port 1, port 4 of the chip, into VLAN 200:"
            make=${adpsh(device, "adp_vlan_ip4_add 4 0xC0000200 0xFFFFFF00 200 ADP_KEEP_PRIORITY 0")} />
        <${Part} title="Ports with double tags or another tag type" rows=${tagged} columns=${TAGS} keyOf=${by("port")}
            empty="All ports have single tags of the type 0x8100. This makes port 6 one of a customer:"
            make=${adpsh(device, "adp_double_tag_set 6 ADP_DOUBLE_TAG_CUSTOMER")}
            commands=${[`${device.vdevctl} translations`]} />
    `;
}
