// What is seen at each port: link, speed and marks, from the device's answers.
import { markOf, sortedMarks } from "./marks.js";
import { barredPorts, linkWords, titleOf } from "./words.js";

/** @typedef {import("./marks.js").Mark} Mark */

/**
 * A port as it is seen. `hasPlug` says that a cable is in it; `in` and `out` are levels of activity.
 * @typedef {{port: number, name: string, isFibre: boolean, isUp: boolean, speed: number, isPresent: boolean,
 *     isEnabled: boolean, hasPlug: boolean, marks: Mark[], in: number, out: number}} Face
 *
 * The newest answers of a device; those that have not come yet are null.
 * @typedef {{ports: any, trunks: any, groups: any, mirrors: any, cables: any}} Answers
 */

/** The states of spanning tree that do not forward, with letter and words. */
const STATES = {
    blocking: { letter: "B", text: "blocked by spanning tree" },
    listening: { letter: "Li", text: "listening in spanning tree" },
    learning: { letter: "Le", text: "learning in spanning tree" },
    disabled: { letter: "D", text: "disabled by spanning tree" },
};

const MOST_LEVEL = 7;

/**
 * The level of an activity light: 0 without frames, then one for each power of ten.
 * @param {number} rate frames per second
 */
export function levelOf(rate) {
    return rate > 0 ? Math.min(MOST_LEVEL, Math.max(1, 1 + Math.floor(Math.log10(rate)))) : 0;
}

/**
 * A port's states in the spanning-tree groups that have VLANs.
 * @param {number} port
 * @param {any} groups the answer to `groups`
 * @returns {{group: number, state: string}[]}
 */
export function treeStates(port, groups) {
    const used = (groups?.groups ?? []).filter((/** @type {any} */ each) => each.vlans.length > 0);
    return used.map((/** @type {any} */ each) => ({
        group: each.group,
        state: Object.keys(STATES).find((state) => each[state].includes(port)) ?? "forwarding",
    }));
}

/**
 * @param {number} port
 * @param {any} groups
 * @returns {Mark[]}
 */
function treeMarks(port, groups) {
    const states = treeStates(port, groups);
    const held = states.filter((each) => each.state !== "forwarding");
    if (held.length === 0) {
        return [];
    }
    const { letter, text } = STATES[/** @type {keyof typeof STATES} */ (held[0].state)];
    const isHollow = held.length < states.length;
    const where = held.map((each) => each.group).join(", ");
    return [markOf("blocked", isHollow ? `${text} in group ${where} only` : text, { letter, isHollow })];
}

/**
 * @param {number} port
 * @param {any} trunks
 * @returns {Mark[]}
 */
function trunkMarks(port, trunks) {
    return (trunks?.trunks ?? []).flatMap((/** @type {any} */ trunk) => {
        const { trunk: number, group } = trunk;
        if (trunk.members.includes(port)) {
            return [markOf("trunk", `trunk ${number} (group ${group})`, { letter: `T${number}` })];
        }
        return trunk.standby.includes(port)
            ? [markOf("standby", `standby in trunk ${number} (group ${group})`, { letter: `S${number}`, isHollow: true })]
            : [];
    });
}

/**
 * @param {number} port
 * @param {any} mirrors
 * @returns {Mark[]}
 */
function mirrorMarks(port, mirrors) {
    const sessions = mirrors?.mirrors ?? [];
    const isOff = (/** @type {any} */ session) => !mirrors.enabled || session.disabled;
    const off = (/** @type {any[]} */ found) => (found.every(isOff) ? " (mirroring is off)" : "");
    const has = (/** @type {string} */ way) => (/** @type {any} */ session) => session[way].includes(port);
    const sources = sessions.filter((/** @type {any} */ each) => has("ingress")(each) || has("egress")(each));
    const ends = sessions.filter((/** @type {any} */ each) => each.destination === port || each.flow === port);
    /** @type {Mark[]} */
    const marks = [];
    if (sources.length > 0) {
        const ways = [sources.some(has("ingress")) ? ["in"] : [], sources.some(has("egress")) ? ["out"] : []].flat();
        const words = `mirrored ${ways.join(" and ")}${off(sources)}`;
        marks.push(markOf("mirrored", words, { isHollow: sources.every(isOff) }));
    }
    if (ends.length > 0) {
        marks.push(markOf("copies", `mirror destination${off(ends)}`, { isHollow: ends.every(isOff) }));
    }
    return marks;
}

/**
 * @param {any} row
 * @param {any[]} rows
 * @returns {Mark[]}
 */
function portMarks(row, rows) {
    const isClosed = row.learning === 0 || row.learning === 8;
    return [
        !row.enabled && markOf("disabled", "disabled"),
        row.pulled && markOf("pulled", "cable pulled"),
        isClosed && markOf("unauthorised", "unauthorised", { letter: String(row.learning) }),
        row.loopback !== 0 && markOf("looped", "in loopback"),
        barredPorts(row, rows).length > 0 && markOf("isolated", "isolated"),
    ].filter((mark) => mark !== false);
}

/**
 * The ports as they are seen.
 * @param {Answers} answers
 * @param {Map<number, Record<string, number>>} rates of each port, with `rx_frames` and `tx_frames`
 * @param {Set<number>} dropping ports that drop or lose frames now
 * @returns {Face[]}
 */
export function facesOf(answers, rates, dropping) {
    const rows = answers.ports.ports;
    const bad = new Set((answers.cables?.cables ?? []).map((/** @type {any} */ each) => each.port));
    return rows.map((/** @type {any} */ row) => {
        const { port } = row;
        const marks = sortedMarks([
            ...portMarks(row, rows),
            ...treeMarks(port, answers.groups),
            ...trunkMarks(port, answers.trunks),
            ...mirrorMarks(port, answers.mirrors),
            ...(bad.has(port) ? [markOf("bad", "bad cable")] : []),
            ...(dropping.has(port) ? [markOf("dropping", "drops frames now")] : []),
        ]);
        const rate = rates.get(port);
        return {
            port,
            isFibre: row.medium === "fibre",
            isUp: row.up,
            speed: row.speed,
            isPresent: row.present,
            isEnabled: row.enabled,
            hasPlug: row.present && !row.pulled,
            marks,
            in: levelOf(rate?.rx_frames ?? 0),
            out: levelOf(rate?.tx_frames ?? 0),
            name: [titleOf(port), linkWords(row), ...marks.map((mark) => mark.text)].join(", "),
        };
    });
}

/**
 * What has changed at the links, in words.
 * @param {Face[]} before
 * @param {Face[]} now
 * @returns {string[]}
 */
export function linkChanges(before, now) {
    const old = new Map(before.map((face) => [face.port, face]));
    return now.flatMap((face) => {
        const was = old.get(face.port);
        if (!was || (was.isUp === face.isUp && was.hasPlug === face.hasPlug)) {
            return [];
        }
        const why = face.marks.find((mark) => mark.kind === "pulled" || mark.kind === "disabled")?.text;
        const words = face.isUp ? "link up" : why ?? (face.isPresent ? "link down" : "its interface is gone");
        return [`${titleOf(face.port)}: ${words}`];
    });
}

/** What the summary counts, by the kind of a mark. */
const COUNTED = {
    pulled: "with a pulled cable", bad: "with a bad cable", disabled: "disabled", blocked: "held by spanning tree",
    unauthorised: "unauthorised", dropping: "dropping frames now",
};

/**
 * What the plate shows, in a sentence.
 * @param {Face[]} faces
 */
export function summaryOf(faces) {
    const users = faces.filter((face) => face.port !== 0);
    const gone = users.filter((face) => !face.isPresent).length;
    const parts = Object.entries(COUNTED).map(([kind, words]) => ({
        count: users.filter((face) => face.marks.some((mark) => mark.kind === kind)).length, words,
    }));
    const told = [{ count: gone, words: "without an interface" }, ...parts].filter(({ count }) => count > 0);
    const up = users.filter((face) => face.isUp).length;
    const words = [`${up} of ${users.length} ports have a link`, ...told.map((each) => `${each.count} ${each.words}`)];
    return `${words.join("; ")}.`;
}
