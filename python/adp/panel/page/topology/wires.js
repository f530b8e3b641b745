// The way of each cable in the picture, from a tab at one node to a tab at the other.
import { GAP, GUTTER_CABLE, TAB_SPACE, isBeside } from "./layout.js";

/** @typedef {import("./layout.js").Box} Box */
/** @typedef {{x: number, y: number}} Point */
/**
 * Where a cable ends: `side` of the node, as a direction.
 * @typedef {Point & {side: "top" | "bottom" | "left" | "right"}} Tab
 */
/**
 * A cable's way: `path` for SVG, which begins at the second end if `isTurned`, and the places of its mark and of its
 * text, which begins, is centred or ends there. `shift` parts the lanes of its directions.
 * @typedef {{path: string, isTurned: boolean, tabs: [Tab, Tab], mark: Point, isLevel: boolean, shift: Point,
 *     text: Point & {anchor: "start" | "middle" | "end"}}} Wire
 */

const TAB_IN_HOST = 24;
const HOST_TAB_SPACE = 46;
const MARK_AWAY = 26;
const HALF_TAB = 24;
const LANE = 3;
const SHARES = [0.5, 0.64, 0.36, 0.78, 0.22, 0.57, 0.43];
const CLEAR = 18;

const isHost = (/** @type {Box} */ box) => box.node.kind !== "adp";
const middleOf = (/** @type {Box} */ box) => ({ x: box.x + box.width / 2, y: box.y + box.height / 2 });
const outOf = (/** @type {Tab} */ tab) => (tab.side === "bottom" ? 1 : -1);

/** The x at which a cable comes to a node from the row of another. */
const approach = (/** @type {Box} */ box) =>
    isHost(box) ? box.x + box.width + (box.row ? GUTTER_CABLE * box.row : -TAB_IN_HOST) : middleOf(box).x;

/**
 * @param {Box} own
 * @param {Box} other
 * @param {string[][]} rows
 * @returns {"top" | "bottom" | "left" | "right"}
 */
function sideOf(own, other, rows) {
    if (isHost(own)) {
        return own.toHosts === "bottom" ? "top" : "bottom";
    }
    if (isHost(other)) {
        return own.toHosts;
    }
    if (isBeside(rows, own.node.name, other.node.name)) {
        return middleOf(own).x < middleOf(other).x ? "right" : "left";
    }
    if (own.y === other.y) {
        return own.toHosts === "bottom" ? "top" : "bottom";
    }
    return own.y < other.y ? "bottom" : "top";
}

/**
 * @param {Box} box
 * @param {"top" | "bottom" | "left" | "right"} side
 * @param {number} at
 * @param {number} count
 * @returns {Tab}
 */
function tabOf(box, side, at, count) {
    const along = (at - (count - 1) / 2) * TAB_SPACE;
    if (side === "left" || side === "right") {
        return { side, x: box.x + (side === "left" ? 0 : box.width), y: middleOf(box).y + along };
    }
    const x = isHost(box) ? box.x + box.width - TAB_IN_HOST - at * HOST_TAB_SPACE : middleOf(box).x + along;
    return { side, x, y: box.y + (side === "top" ? 0 : box.height) };
}

/**
 * The tabs of all cables, two each.
 * @param {import("../types").Lab} lab
 * @param {Map<string, Box>} boxes
 * @param {string[][]} rows
 * @returns {[Tab, Tab][]}
 */
function tabsOf(lab, boxes, rows) {
    /** @type {Map<string, {box: Box, side: any, ends: {cable: number, end: number, from: number}[]}>} */
    const groups = new Map();
    lab.cables.forEach(({ ends }, cable) => ends.forEach(({ node }, end) => {
        const [box, other] = [node, ends[1 - end].node].map((name) => /** @type {Box} */ (boxes.get(name)));
        const side = sideOf(box, other, rows);
        const key = `${side} ${node}`;
        groups.set(key, groups.get(key) ?? { box, side, ends: [] });
        groups.get(key)?.ends.push({ cable, end, from: side === "left" || side === "right" ? 0 : approach(other) });
    }));
    const tabs = lab.cables.map(() => /** @type {any} */ ([null, null]));
    for (const { box, side, ends } of groups.values()) {
        ends.sort((a, b) => a.from - b.from || a.cable - b.cable || a.end - b.end);
        ends.forEach(({ cable, end }, at) => (tabs[cable][end] = tabOf(box, side, at, ends.length)));
    }
    return tabs;
}

/** @param {(number | string)[]} parts */
const pathOf = (...parts) =>
    parts.map((part) => (typeof part === "number" ? Math.round(part * 10) / 10 : part)).join(" ");

/**
 * From a device to one of its hosts. A host of a further row is reached through the gutter beside the ones before.
 * @param {Tab} from
 * @param {Tab} to
 * @param {Box} host
 */
function hostPath(from, to, host) {
    const out = outOf(from);
    if (host.row === 0) {
        const half = (to.y - from.y) / 2;
        return pathOf("M", from.x, from.y, "C", from.x, from.y + half, to.x, to.y - half, to.x, to.y);
    }
    const x = approach(host);
    const first = from.y + out * GAP.cables;
    const turn = to.y - out * MARK_AWAY;
    const bend = (out * GAP.cables) / 2;
    return pathOf("M", from.x, from.y, "C", from.x, from.y + bend, x, first - bend, x, first,
        "L", x, turn, "C", x, turn + (out * MARK_AWAY) / 2, to.x, turn, to.x, to.y);
}

/**
 * A curve between two tabs, and the point of it at a share of the way.
 * @param {Tab} from
 * @param {Tab} to
 * @param {number} share
 */
function curve(from, to, share) {
    const isLevel = from.side === "right" || from.side === "left";
    const bend = from.side === to.side ? 40 + Math.abs(from.x - to.x) * 0.1 : Math.abs(from.y - to.y) / 2;
    const [a, b] = isLevel
        ? [(2 * from.x + to.x) / 3, (from.x + 2 * to.x) / 3].map((x, at) => ({ x, y: at ? to.y : from.y }))
        : [from, to].map((tab) => ({ x: tab.x, y: tab.y + outOf(tab) * bend }));
    const at = (/** @type {"x" | "y"} */ axis) =>
        (1 - share) ** 3 * from[axis] + 3 * (1 - share) ** 2 * share * a[axis] +
        3 * (1 - share) * share ** 2 * b[axis] + share ** 3 * to[axis];
    return { path: pathOf("M", from.x, from.y, "C", a.x, a.y, b.x, b.y, to.x, to.y),
        mark: { x: at("x"), y: at("y") }, isLevel: isLevel || from.side === to.side };
}

/**
 * The text of a cable between devices.
 * @param {{mark: Point, isLevel: boolean}} curve
 * @returns {Wire["text"]}
 */
function textAt({ mark, isLevel }) {
    return isLevel
        ? { x: mark.x, y: mark.y - 11, anchor: "middle" }
        : { x: mark.x + 14, y: mark.y + 4, anchor: "start" };
}

/**
 * The curve of a cable between devices whose mark is on none of the marks that are there.
 * @param {[Tab, Tab]} tabs
 * @param {Point[]} marks
 */
function clearCurve([from, to], marks) {
    const curves = SHARES.map((share) => curve(from, to, share));
    const away = (/** @type {Point} */ one, /** @type {Point} */ other) => Math.hypot(one.x - other.x, one.y - other.y);
    return curves.find(({ mark }) => marks.every((each) => away(each, mark) > CLEAR)) ?? curves[0];
}

/**
 * @param {import("../types").Lab} lab
 * @param {{boxes: Map<string, Box>, rows: string[][]}} layout
 * @returns {Wire[]} one for each cable of the lab
 */
export function wiresOf(lab, { boxes, rows }) {
    const tabs = tabsOf(lab, boxes, rows);
    const marks = /** @type {Point[]} */ ([]);
    return lab.cables.map(({ ends }, at) => {
        const own = ends.map((end) => /** @type {Box} */ (boxes.get(end.node)));
        const hostAt = own.findIndex(isHost);
        const [from, to] = hostAt === 0 ? [tabs[at][1], tabs[at][0]] : tabs[at];
        if (hostAt >= 0 && !own.every(isHost) && from.side !== to.side) {
            return { tabs: tabs[at], path: hostPath(from, to, own[hostAt]), isTurned: hostAt === 0, isLevel: false,
                shift: { x: LANE, y: 0 }, mark: { x: to.x, y: to.y + outOf(to) * MARK_AWAY },
                text: { x: to.x - HALF_TAB, y: to.y + (to.side === "top" ? -3 : 11), anchor: "end" } };
        }
        const found = clearCurve(tabs[at], marks);
        marks.push(found.mark);
        const shift = found.isLevel ? { x: 0, y: LANE } : { x: LANE, y: 0 };
        return { tabs: tabs[at], ...found, isTurned: false, shift, text: textAt(found) };
    });
}
