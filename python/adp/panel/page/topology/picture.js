// The picture of a lab: its nodes and cables, each a button.
import { html, useMemo } from "../vendor/preact.js";
import { short } from "../rates.js";
import { STATES, cableText } from "./cables.js";

/** @typedef {import("./cables.js").CableNow} CableNow */
/** @typedef {import("./layout.js").Box} Box */
/** @typedef {import("./wires.js").Wire} Wire */
/** @typedef {import("./wires.js").Tab} Tab */

const TAB = { high: 14, port: 22, interface: 40 };
const THINNEST = 1.2;
const THICKEST = 6;
const MOST_LETTERS = 15;

/**
 * What a button does, by mouse and by keyboard. The texts of the picture are no part of it: its name says more.
 * @param {() => void} act
 */
const button = (act) => ({
    role: "button",
    tabindex: 0,
    onClick: act,
    onKeyDown: (/** @type {KeyboardEvent} */ event) => {
        if (event.key === "Enter" || event.key === " ") {
            event.preventDefault();
            act();
        }
    },
});

/** @param {string} text */
const cut = (text) => (text.length > MOST_LETTERS ? `${text.slice(0, MOST_LETTERS - 1)}…` : text);

/**
 * @param {Tab} tab
 * @param {boolean} isPort
 */
const tabPlace = (tab, isPort) => {
    const wide = isPort ? TAB.port : TAB.interface;
    const x = tab.side === "left" ? tab.x - wide : tab.side === "right" ? tab.x : tab.x - wide / 2;
    const y = tab.side === "top" ? tab.y - TAB.high : tab.side === "bottom" ? tab.y : tab.y - TAB.high / 2;
    return { x, y, wide };
};

/**
 * Dashes that move along a cable, thicker the more frames there are.
 * @param {{wire: Wire, rate: number | null, isForth: boolean}} props
 */
function Lane({ wire, rate, isForth }) {
    if (!rate) {
        return null;
    }
    const thick = Math.min(THICKEST, THINNEST + Math.log10(1 + rate));
    const side = isForth ? 1 : -1;
    return html`
        <path class=${`lane ${isForth !== wire.isTurned ? "onward" : "backward"}`} d=${wire.path}
            transform=${`translate(${side * wire.shift.x} ${side * wire.shift.y})`} style=${{ strokeWidth: thick }} />
    `;
}

/**
 * The rates of a cable, each with an arrow in its direction: ↓ 1.2 k ↑ 300.
 * @param {CableNow} cable
 * @param {Wire} wire
 */
function loadText({ forth, back }, { tabs: [one, other], isLevel }) {
    if (!forth && !back) {
        return "";
    }
    const arrows = isLevel ? ["→", "←"] : ["↓", "↑"];
    const isOnward = isLevel ? one.x < other.x : one.y < other.y;
    const [there, here] = isOnward ? arrows : arrows.reverse();
    return `${there} ${short(forth ?? 0)} ${here} ${short(back ?? 0)}`;
}

/** @param {{cable: CableNow, wire: Wire, isSelected: boolean, onSelect: () => void}} props */
function CableShape({ cable, wire, isSelected, onSelect }) {
    const { state, ends } = cable;
    const { mark, path } = wire;
    const isUp = state === "up" || state === "bad";
    const text = isUp ? loadText(cable, wire) : STATES[state].title;
    const tabs = wire.tabs.map((tab, at) => ({
        name: String(ends[at].port ?? ends[at].interface).slice(0, 6),
        ...tabPlace(tab, ends[at].port !== null),
    }));
    return useMemo(() => html`
        <g class=${`cable is-${state}`}>
            <g ...${button(onSelect)} aria-pressed=${isSelected ? "true" : "false"} aria-label=${cableText(cable)}>
                <path class="halo" d=${path} />
                <path class="line" d=${path} />
                ${isUp && html`
                    <${Lane} wire=${wire} rate=${cable.forth} isForth=${true} />
                    <${Lane} wire=${wire} rate=${cable.back} isForth=${false} />
                `}
                ${tabs.map(({ x, y, wide }) => html`
                    <rect class="tab" x=${x} y=${y} width=${wide} height=${TAB.high} rx="2" />
                `)}
                ${STATES[state].sign && html`<circle class="mark" cx=${mark.x} cy=${mark.y} r="8" />`}
            </g>
            <g aria-hidden="true">
                ${tabs.map(({ x, y, wide, name }) => html`
                    <text class="tab-name" x=${x + wide / 2} y=${y + TAB.high - 3.5}>${name}</text>
                `)}
                <text class="sign" x=${mark.x} y=${mark.y + 4.5}>${STATES[state].sign}</text>
                <text class=${`load ${wire.text.anchor}`} x=${wire.text.x} y=${wire.text.y}>${text}</text>
            </g>
        </g>
    `, [wire, state, cable.forth, cable.back, isSelected]);
}

/** @param {{box: Box, isRunning: boolean, isSelected: boolean, onSelect: () => void}} props */
function NodeShape({ box: { node, x, y, width, height }, isRunning, isSelected, onSelect }) {
    const isDevice = node.kind === "adp";
    const addresses = isDevice ? "" : node.addresses.join(", ") || "no address";
    const state = isRunning ? "running" : "gone";
    const more = node.addresses.length > 1 ? ` +${node.addresses.length - 1}` : "";
    const second = isDevice || !isRunning ? state : cut(`${node.addresses[0] ?? "no address"}${more}`);
    return useMemo(() => html`
        <g class=${`node ${isDevice ? "device" : "host"} is-${state}`}>
            <g ...${button(onSelect)} aria-pressed=${isSelected ? "true" : "false"}
                aria-label=${`${isDevice ? "Device" : "Host"} ${node.name}, ${state}${addresses && `, ${addresses}`}`}>
                <rect class="box" x=${x} y=${y} width=${width} height=${height} rx=${isDevice ? 5 : 12} />
            </g>
            <g aria-hidden="true">
                <text class="name" x=${x + width / 2} y=${y + height / 2 - 3}>${cut(node.name)}</text>
                <text class="about" x=${x + width / 2} y=${y + height / 2 + 14}>${second}</text>
            </g>
        </g>
    `, [x, y, width, state, addresses, isSelected]);
}

/**
 * @param {{name: string, layout: {width: number, height: number, boxes: Map<string, Box>}, wires: Wire[],
 *     cables: CableNow[], isRunning: (node: string) => boolean, selected: string,
 *     onSelect: (kind: string, id: string) => void}} props
 *     `selected` is a kind and an id
 */
export function Picture({ name, layout, wires, cables, isRunning, selected, onSelect }) {
    const { width, height, boxes } = layout;
    return html`
        <svg class="topology" viewBox=${`0 0 ${width} ${height}`} role="group"
            aria-label=${`Picture of the lab ${name}`}
            style=${{ width: `${width}px`, minWidth: `${width * 0.8}px` }}>
            ${cables.map((cable, at) => html`
                <${CableShape} key=${`cable ${cable.id}`} cable=${cable} wire=${wires[at]}
                    isSelected=${selected === `cable ${cable.id}`} onSelect=${() => onSelect("cable", cable.id)} />
            `)}
            ${[...boxes.values()].map((box) => html`
                <${NodeShape} key=${`node ${box.node.name}`} box=${box} isRunning=${isRunning(box.node.name)}
                    isSelected=${selected === `node ${box.node.name}`}
                    onSelect=${() => onSelect("node", box.node.name)} />
            `)}
        </svg>
    `;
}

/** What the lines and marks mean. */
export function Legend() {
    const shown = /** @type {(keyof typeof STATES)[]} */ (["up", "bad", "pulled", "down", "gone"]);
    return html`
        <ul class="topology-legend" aria-label="What the lines mean">
            ${shown.map((state) => html`
                <li><svg viewBox="0 0 44 18" width="44" height="18" aria-hidden="true" class=${`cable is-${state}`}>
                    <path class="line" d="M 2 9 L 42 9" />
                    ${STATES[state].sign && html`
                        <circle class="mark" cx="22" cy="9" r="8" />
                        <text class="sign" x="22" y="13.5">${STATES[state].sign}</text>
                    `}
                </svg> ${STATES[state].title}</li>
            `)}
            <li><svg viewBox="0 0 44 18" width="44" height="18" aria-hidden="true">
                <path class="lane onward" d="M 2 9 L 42 9" style=${{ strokeWidth: 3 }} />
            </svg> frames, thicker for more; numbers are frames per second</li>
        </ul>
    `;
}
