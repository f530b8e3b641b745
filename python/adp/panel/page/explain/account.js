// An account of a frame's way as what the drawing and the lists show: stages, and ports of one fate.
import { portName } from "../parts/ports.js";

/** @typedef {{step: string, text?: string, [member: string]: any}} Step */
/** @typedef {{port: number, fate: "sent" | "queued" | "not", text?: string, [member: string]: any}} Row */
/** @typedef {{port: number, steps: Step[], ports: Row[], mirrors: Row[], time?: number, drop?: string, vid?: number}} Account */
/** @typedef {{kind: "sent" | "queued" | "lost" | "not" | "none", mark: string, text: string}} Mark */
/**
 * `passed`: with a decision; `quiet`: passed, nothing was to be decided; `dropped`, `cpu`: the way ends there; `after`: not
 * reached.
 * @typedef {{name: string, title: string, state: "passed" | "quiet" | "dropped" | "cpu" | "after", texts: string[]}} Stage
 */

/** The stages in their order, and the steps of each. */
const STAGES = [
    { name: "in", title: "In", steps: ["in", "ingress_limit"] },
    { name: "cpu_tag", title: "Switch tag", steps: ["cpu_tag"], isOfCpu: true },
    { name: "header", title: "Header", steps: ["header", "attack_filter"] },
    { name: "vlan", title: "VLAN", steps: ["vlan"] },
    { name: "priority", title: "Priority", steps: ["priority"] },
    { name: "rules", title: "Rules", steps: ["rule", "no_rule", "meter", "changed"] },
    { name: "traps", title: "Traps", steps: [] },
    { name: "member", title: "Member", steps: ["member"] },
    { name: "spanning_tree", title: "Spanning tree", steps: ["spanning_tree"] },
    { name: "source", title: "Source", steps: ["source"] },
    { name: "snooping", title: "Snooping", steps: [] },
    { name: "destination", title: "Destination", steps: ["destination"] },
    { name: "storm", title: "Storm limit", steps: ["storm_limit"] },
    { name: "way", title: "Way", steps: ["way"] },
    { name: "egress", title: "Egress", steps: [] },
];

/** Where a frame is given to the CPU alone, by the reason. */
const CPU_STAGES = new Map([["unknown_source", "source"], ["snooped", "snooping"], ["unknown_group", "way"]]);

/** Where a frame is dropped, if that is a later stage than its last step. */
const DROP_STAGES = new Map([
    ["runt", "header"], ["no_switch_tag", "cpu_tag"], ["vlan_missing", "member"], ["not_member", "member"],
    ["learn_limit", "source"], ["unknown_source", "source"], ["filtered", "source"], ["same_port", "egress"],
    ["egress_not_member", "egress"], ["egress_down", "egress"], ["stp_egress", "egress"], ["isolated", "egress"],
    ["no_destination", "egress"],
]);

/** @param {string} name */
const indexOf = (name) => STAGES.findIndex((stage) => stage.name === name);

/**
 * Where a step stands.
 * @param {Step} step
 * @param {number} last the stage of the step before
 */
function stageOf(step, last) {
    if (step.step === "cpu_alone") {
        return indexOf(CPU_STAGES.get(step.reason) ?? "traps");
    }
    if (step.step === "dropped") {
        const named = step.reason.startsWith("dos_") ? "header" : DROP_STAGES.get(step.reason);
        return named && indexOf(named) > last ? indexOf(named) : last;
    }
    return STAGES.findIndex((stage) => stage.steps.includes(step.step));
}

/** @param {Step} step */
export const textOf = (step) => step.text ?? step.step;

/** @param {Account} account */
export function isLeaving(account) {
    return account.ports.some((row) => row.fate !== "not");
}

/** @param {Stage["state"]} state @param {string} step @returns {Stage["state"]} */
function stateAfter(state, step) {
    return step === "dropped" ? "dropped" : step === "cpu_alone" ? "cpu" : state === "dropped" ? state : "passed";
}

/**
 * The stages of a frame's way. A directed frame leaves behind the header, without the stages between.
 * @param {Account} account
 * @returns {Stage[]}
 */
export function stagesOf(account) {
    const isDirected = account.steps.some((step) => step.step === "way" && step.way === "directed");
    /** @type {Stage[]} */
    const stages = STAGES.map(({ name, title }) => ({ name, title, state: "after", texts: [] }));
    let last = 0;
    for (const step of account.steps) {
        last = Math.max(last, stageOf(step, last));
        stages[last].texts.push(textOf(step));
        stages[last].state = stateAfter(stages[last].state, step.step);
    }
    const leaves = isLeaving(account) && stages[last].state === "passed";
    if (leaves) {
        last = indexOf("egress");
        stages[last].state = "passed";
    }
    for (const stage of stages.slice(0, last + 1)) {
        stage.state = stage.state === "after" && !isDirected ? "quiet" : stage.state;
    }
    const isOfCpu = account.port === 0;
    return stages.filter((_, index) => isOfCpu || !STAGES[index].isOfCpu);
}

/**
 * Rows with the same text together, in the order of the first of them. A port that a dropped frame was not for has no reason
 * of its own.
 * @param {Account} account
 * @param {boolean} areSent
 * @returns {{text: string, fate: string, rows: Row[]}[]}
 */
export function groupsOf(account, areSent) {
    const groups = new Map();
    for (const row of account.ports) {
        const isMeant = (row.fate !== "not") === areSent && !(account.drop && row.reason === "not_wanted");
        if (isMeant) {
            const text = row.text ?? row.reason ?? row.form;
            groups.set(text, groups.get(text) ?? { text, fate: row.fate, rows: [] });
            groups.get(text).rows.push(row);
        }
    }
    return [...groups.values()];
}

/**
 * Whether a copy was made for the port and then lost.
 * @param {Row} row
 */
export const isLost = (row) => row.fate === "not" && row.form !== undefined;

/**
 * What is written at a port: of one that sends the form of its copy, of one that does not the letter of its reason, but
 * nothing if the frame is not for it.
 * @param {Account} account
 * @returns {Map<number, Mark>}
 */
export function marksOf(account) {
    const reasons = groupsOf(account, false).filter(({ rows }) => rows[0].reason !== "not_wanted");
    const letters = new Map(reasons.map(({ text }, index) => [text, String.fromCharCode(97 + index)]));
    /** @type {Map<number, Mark>} */
    const marks = new Map();
    for (const row of account.ports) {
        const text = row.text ?? row.reason ?? row.form;
        if (row.fate === "not") {
            const mark = letters.get(text) ?? "";
            marks.set(row.port, { kind: isLost(row) ? "lost" : mark ? "not" : "none", mark, text });
        } else {
            marks.set(row.port, { kind: row.fate, mark: FORM_MARKS.get(row.form) ?? "=", text });
        }
    }
    return marks;
}

const FORM_MARKS = new Map([["untagged", "U"], ["tagged", "T"], ["for_cpu", "R"]]);

/**
 * In a few words, what became of a frame.
 * @param {Account} account
 */
export function outcomeOf(account) {
    const sent = account.ports.filter((row) => row.fate !== "not").map((row) => row.port);
    const lost = account.ports.filter(isLost).map((row) => `port ${portName(row.port)} ${row.reason}`);
    return { drop: account.drop ?? null, sent, lost };
}
