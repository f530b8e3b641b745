// The view "Topology": the devices, hosts and cables of a lab, and what is on the cables.
import { html, useEffect, useMemo, useRef, useState } from "../vendor/preact.js";
import { addressOf, usePanel } from "../use.js";
import { Table } from "../parts/table.js";
import { conditionsText } from "../parts/cable_form.js";
import { STATES, cablesNow } from "./cables.js";
import { CableDetails, DeviceDetails, HostDetails } from "./details.js";
import { layoutOf } from "./layout.js";
import { Legend, Picture } from "./picture.js";
import { useReadings } from "./readings.js";
import { wiresOf } from "./wires.js";

/** @typedef {import("../types").Lab} Lab */
/** @typedef {import("./cables.js").CableNow} CableNow */

const EVERY_SECONDS = 1;
const NARROWEST = 320;
const WIDEST = 1500;
const STEP = 40;

/**
 * The width of an element, in steps, so that the picture does not change with every pixel.
 * @returns {[{current: any}, number]}
 */
function useRoom() {
    const frame = useRef(/** @type {any} */ (null));
    const [room, setRoom] = useState(WIDEST);
    useEffect(() => {
        const observer = new ResizeObserver(([{ contentRect: { width } }]) =>
            setRoom(Math.min(WIDEST, Math.max(NARROWEST, Math.floor(width / STEP) * STEP))));
        observer.observe(frame.current);
        return () => observer.disconnect();
    }, []);
    return [frame, room];
}

/** @param {{lab: Lab, device: string, cables: CableNow[]}} props */
function Cables({ lab, device, cables }) {
    const link = (/** @type {CableNow} */ cable) => html`
        <a href=${addressOf("topology", device, "cable", cable.id)}>${cable.names[0]} to ${cable.names[1]}</a>
    `;
    const rate = (/** @type {"forth" | "back"} */ way) => (/** @type {CableNow} */ cable) =>
        (cable[way] === null ? "" : Math.round(cable[way] ?? 0));
    const columns = [
        { name: "cable", title: "Cable", value: (/** @type {CableNow} */ cable) => cable.id, show: link },
        { name: "state", title: "State", isWatched: true,
            value: (/** @type {CableNow} */ cable) => STATES[cable.state].title },
        { name: "forth", title: "Frames/s there", value: rate("forth"), isNumber: true },
        { name: "back", title: "Frames/s back", value: rate("back"), isNumber: true },
        { name: "conditions", title: "Conditions",
            value: (/** @type {CableNow} */ { conditions }) => (conditions ? conditionsText(conditions) : "") },
    ];
    return html`
        <${Table} caption=${`Cables of the lab ${lab.name}`} columns=${columns} rows=${cables}
            keyOf=${(/** @type {CableNow} */ cable) => cable.id} empty="The lab has no cables" />
    `;
}

/** @param {{lab: Lab, cables: CableNow[], kind: string, id: string, onClose: () => void}} props */
function Details({ lab, cables, kind, id, onClose }) {
    const cable = kind === "cable" && cables.find((each) => each.names.includes(id));
    const node = kind === "node" && lab.nodes.find((each) => each.name === id);
    const shared = { command: lab.command, onClose };
    return html`
        <section class="card topology-details" aria-label="Details" hidden=${!cable && !node}>
            ${cable && html`<${CableDetails} key=${id} cable=${cable} ...${shared} />`}
            ${node && node.kind === "adp" && html`<${DeviceDetails} key=${id} node=${node} ...${shared} />`}
            ${node && node.kind === "linux" &&
                html`<${HostDetails} key=${id} node=${node} others=${lab.nodes} ...${shared} />`}
        </section>
    `;
}

/** @param {{device: import("../types").Device, rest: string[]}} props */
export function Topology({ device, rest: [kind = "", id = ""] }) {
    const { devices, lab } = usePanel();
    return lab
        ? html`<${LabView} lab=${lab} devices=${devices} device=${device.name} kind=${kind} id=${id} />`
        : html`<p>These devices belong to no lab, so there is no topology to show.</p>`;
}

/**
 * The layout of a lab. It does not depend on addresses and states, which change.
 * @param {Lab} lab
 * @param {number} room
 */
function useLayout(lab, room) {
    const shape = JSON.stringify([lab.nodes.map((node) => [node.name, node.kind]), lab.cables]);
    const layout = useMemo(() => layoutOf(lab, room), [shape, room]);
    const wires = useMemo(() => wiresOf(lab, layout), [layout]);
    const nodes = new Map(lab.nodes.map((node) => [node.name, node]));
    const boxes = new Map([...layout.boxes.entries()].map(([name, box]) =>
        [name, { ...box, node: nodes.get(name) ?? box.node }]));
    return { nodes, layout: { ...layout, boxes }, wires };
}

/** @param {{lab: Lab, devices: import("../types").Device[], device: string, kind: string, id: string}} props */
function LabView({ lab, devices, device, kind, id }) {
    const names = devices.map((each) => each.name);
    const ports = useReadings(names, { command: "ports" }, EVERY_SECONDS);
    const bad = useReadings(names, { command: "cables" }, EVERY_SECONDS);
    const cables = cablesNow(lab, ports, bad);
    const [frame, room] = useRoom();
    const { nodes, layout, wires } = useLayout(lab, room);
    const isRunning = (/** @type {string} */ name) =>
        devices.find((each) => each.name === name)?.running ?? nodes.get(name)?.running ?? false;
    // The picture keeps the first one.
    const place = useRef(device);
    place.current = device;
    const onSelect = (/** @type {string} */ what, /** @type {string} */ which) => {
        location.hash = addressOf("topology", place.current, what, which);
    };
    const onClose = () => {
        location.hash = addressOf("topology", device);
        frame.current?.querySelector('[aria-pressed="true"]')?.focus();
    };
    return html`
        <h2>Topology</h2>
        <div class=${`topology-view ${kind ? "with-details" : ""}`}>
            <div class="topology-frame scroll" ref=${frame}>
                <${Picture} name=${lab.name} layout=${layout} wires=${wires} cables=${cables}
                    isRunning=${isRunning} selected=${`${kind} ${id}`} onSelect=${onSelect} />
            </div>
            <${Details} lab=${lab} cables=${cables} kind=${kind} id=${id} onClose=${onClose} />
            <div class="topology-list">
                <${Legend} />
                <${Cables} key=${ports.size + bad.size === 2 * names.length} lab=${lab} device=${device}
                    cables=${cables} />
            </div>
        </div>
    `;
}
