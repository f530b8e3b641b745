// Reserved addresses, and the protocols whose frames go to the CPU.
import { html } from "../vendor/preact.js";
import { Problem } from "../parts/problem.js";
import { useAnswer } from "../use.js";
import { Fill } from "./bar.js";
import { WATCHED, by, command, member, number } from "./columns.js";
import { Part, adpsh } from "./part.js";

/** @typedef {import("../types").Device} Device */

const ALONE = "go to the CPU alone";
/** What can be on, by the answer's name for it, and the line that turns it on. */
const SWITCHES = [
    { name: "lacp", title: "LACP", what: ALONE, line: "adp_set_trap_lacp_packet 1 0 0 0" },
    { name: "oam", title: "OAM", what: ALONE, line: "adp_set_trap_eoam_packet 1 0 0 0" },
    { name: "lldp", title: "LLDP", what: ALONE, line: "adp_lldp_init" },
    { name: "bpdu", title: "BPDUs", what: ALONE, line: "adp_stg_init" },
    { name: "igmp", title: "IGMP", what: ALONE, line: "adp_switch_control_set ADP_CONTROL_IGMP 1" },
    { name: "mld", title: "MLD", what: ALONE, line: "adp_switch_control_set ADP_CONTROL_MLD 1" },
    { name: "reserved_multicast", title: "224.0.0.0/24", what: "go to the CPU, too",
        line: "adp_switch_control_set ADP_CONTROL_LOCAL_GROUPS 1" },
    { name: "attack_filter", title: "attacks", what: "are dropped", line: "adp_dos_attack_init" },
];

const ADDRESSES = [number("index", "Entry"), member("mac", "Address", { isHead: true, ...WATCHED })];

/**
 * @param {Device} device
 * @returns {import("../parts/table").Column[]}
 */
function switchColumns(device) {
    return [
        member("title", "Frames of", { isHead: true }),
        member("state", "Trap or filter", { ...WATCHED, value: (row) => (row.isOn ? "on" : "off") }),
        member("what", "They", { value: (row) => (row.isOn ? row.what : "are forwarded") }),
        command((row) => adpsh(device, row.line), "Turns it on"),
    ];
}

/** @param {{device: Device}} props */
export function Reserved({ device }) {
    const { answer, error } = useAnswer(device.name, { command: "reserved" });
    if (!answer) {
        return html`<${Problem} text=${error} />`;
    }
    const switches = SWITCHES.map((each) => ({ ...each, isOn: answer.traps[each.name] ?? answer[each.name] }));
    const note = html`
        <${Fill} count=${answer.reserved.length} capacity=${answer.capacity} />
        <p>Frames to these addresses go to the CPU alone.</p>
    `;
    return html`
        <${Problem} text=${error} />
        <${Part} title="Protocols and attacks" rows=${switches} columns=${switchColumns(device)} keyOf=${by("name")}
            note=${html`<p>While BPDUs are trapped, only a program on the CPU that runs spanning tree breaks loops.</p>`} />
        <${Part} title="Reserved addresses" note=${note} rows=${answer.reserved} columns=${ADDRESSES} search="Search"
            keyOf=${by("index")} commands=${[`${device.vdevctl} reserved`]}
            empty="There are none. This adds 01:80:c2:00:00:00 to 0f, and so traps BPDUs:"
            make=${adpsh(device, "l2_user_entry_add_all_bpdu")} />
    `;
}
