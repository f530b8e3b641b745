// Reserved addresses, and the protocols whose frames go to the CPU.
import { html } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { useAnswer } from "../use.js";
import { Bar } from "./bar.js";
import { Part, adpsh, commandColumn } from "./part.js";

/** @typedef {import("../types").Device} Device */
/** @typedef {import("../parts/table").Column} Column */

/** What can be on, where the answer has it, and the line that turns it on. */
const SWITCHES = [
    { name: "lacp", title: "LACP", what: "to the CPU alone", line: "adp_set_trap_lacp_packet 1 0 0 0" },
    { name: "oam", title: "OAM", what: "to the CPU alone", line: "adp_set_trap_eoam_packet 1 0 0 0" },
    { name: "lldp", title: "LLDP", what: "to the CPU alone", line: "adp_lldp_init" },
    { name: "bpdu", title: "BPDUs", what: "to the CPU alone", line: "adp_stg_init" },
    { name: "igmp", title: "IGMP", what: "to the CPU alone", line: "adp_switch_control_set ADP_CONTROL_IGMP 1" },
    { name: "mld", title: "MLD", what: "to the CPU alone", line: "adp_switch_control_set ADP_CONTROL_MLD 1" },
    { name: "reserved_multicast", title: "224.0.0.0/24", what: "to the CPU as well", line: "adp_switch_control_set ADP_CONTROL_LOCAL_GROUPS 1" },
    { name: "attack_filter", title: "Attacks", what: "dropped", line: "adp_dos_attack_init" },
];

/** @type {Column[]} */
const ADDRESSES = [
    { name: "index", title: "Entry", value: (row) => row.index, isNumber: true },
    { name: "mac", title: "Address", value: (row) => row.mac, isHead: true, isWatched: true },
];

/** @param {Device} device @returns {Column[]} */
function switchColumns(device) {
    return [
        { name: "title", title: "Frames", value: (row) => row.title, isHead: true },
        { name: "state", title: "State", value: (row) => (row.isOn ? "on" : "off"), show: (row) => (row.isOn ? html`<b>on</b>` : "off"), isWatched: true },
        { name: "what", title: "They are", value: (row) => (row.isOn ? row.what : "forwarded") },
        { ...commandColumn((row) => adpsh(device, row.line)), title: "Command that turns it on" },
    ];
}

/** @param {{device: Device}} props */
export function Reserved({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "reserved" });
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const switches = SWITCHES.map((each) => ({ ...each, isOn: answer.traps[each.name] ?? answer[each.name] }));
    const count = answer.reserved.length;
    const note = html`
        <p><${Bar} part=${count / answer.capacity} text=${`${count} of ${answer.capacity} entries`} name="Fill of the table" /></p>
        <p>Frames to these addresses go to the CPU alone.</p>
    `;
    return html`
        <${Problem} text=${error} />
        <${Part} title="Traps and filters" rows=${switches} columns=${switchColumns(device)} empty="" keyOf=${(/** @type {any} */ row) => row.name}
            note=${html`<p>BPDUs that are trapped need a program that runs spanning tree: without one nobody breaks loops.</p>`} />
        <${Part} title="Reserved addresses" note=${note} rows=${answer.reserved} columns=${ADDRESSES} search="Search"
            keyOf=${(/** @type {any} */ row) => row.index} commands=${[`${device.vdevctl} reserved`]}
            empty="There are none. This lists 01:80:c2:00:00:00 to 0f:" make=${adpsh(device, "l2_user_entry_add_all_bpdu")} />
    `;
}
