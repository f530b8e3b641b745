// The page: a heading with the devices, a list of views, and the view that the address names.
import { html, render, useEffect, useErrorBoundary, useState } from "./vendor/preact.js";
import { Connection } from "./connection.js";
import { ConnectionContext, addressOf, usePanel, usePlace } from "./use.js";
import { Front } from "./front/front.js";
import { Topology } from "./topology/topology.js";
import { Tables } from "./tables/tables.js";
import { Frames } from "./frames/frames.js";
import { Explain } from "./explain/explain.js";
import { Calls } from "./calls/calls.js";
import { Problem } from "./parts/problem.js";
import { ThemeButton } from "./parts/theme.js";

/** @typedef {import("./types").Place} Place */
/** @typedef {import("./types").Device} Device */

/** The views, in the order of the list. A view of one device gets it and the rest of the address. */
const VIEWS = [
    { name: "front", title: "Front", show: Front },
    { name: "topology", title: "Topology", show: Topology, isOfLab: true },
    { name: "tables", title: "Tables", show: Tables },
    { name: "frames", title: "Frames", show: Frames },
    { name: "explain", title: "Explain", show: Explain },
    { name: "calls", title: "Calls", show: Calls },
];

/** @param {{view: any, device: Device, place: Place}} props */
function Devices({ view, device, place }) {
    const { devices } = usePanel();
    if (devices.length < 2 || view.isOfLab) {
        return null;
    }
    return html`
        <nav class="devices" aria-label="Devices">
            ${devices.map((each) => html`
                <a href=${addressOf(place.view, each.name, ...place.rest.slice(0, 1))}
                    aria-current=${each.name === device.name ? "true" : null}>
                    ${each.name}${each.running ? "" : html` <span class="gone">gone</span>`}
                </a>
            `)}
        </nav>
    `;
}

/** @param {{view: any, device: Device}} props */
function Views({ view, device }) {
    const { lab } = usePanel();
    const shown = VIEWS.filter((each) => lab || !each.isOfLab);
    return html`
        <nav class="views" aria-label="Views">
            ${shown.map((each) => html`
                <a href=${addressOf(each.name, device.name)} aria-current=${each === view ? "page" : null}>${each.title}</a>
            `)}
        </nav>
    `;
}

/** @param {{isConnected: boolean, device: Device, view: any}} props */
function State({ isConnected, device, view }) {
    const text = !isConnected
        ? "The panel's server is gone. The page comes back with it; a server that is started anew has another address."
        : device.running || view.isOfLab ? "" : `${device.name} is not running. What you see is old; it comes back by itself.`;
    return html`<p class="state" role="status" hidden=${!text}>${text}</p>`;
}

/**
 * A view. If a device answers what the view does not understand, the rest of the page goes on.
 * @param {{view: any, device: Device, rest: string[]}} props
 */
function Shown({ view, device, rest }) {
    const [error, goOn] = useErrorBoundary();
    useEffect(() => {
        if (error) {
            goOn();
        }
    }, [rest.join("/")]);
    if (error) {
        return html`
            <${Problem} text=${`This view does not understand what the device has answered (${error.message}).`} />
            <button type="button" onClick=${goOn}>Show it again</button>
        `;
    }
    return html`<${view.show} device=${device} rest=${rest} />`;
}

/** @param {{isConnected: boolean}} props */
function Page({ isConnected }) {
    const panel = usePanel();
    const place = usePlace();
    const view = VIEWS.find((each) => each.name === place.view && (panel.lab || !each.isOfLab)) ?? VIEWS[0];
    const device = panel.devices.find((each) => each.name === place.device) ?? panel.devices[0];
    useEffect(() => {
        document.title = `${view.title}${view.isOfLab ? "" : `, ${device.name}`} - adp front panel`;
    }, [view, device.name]);
    return html`
        <a class="skip" href="#main" onClick=${skip}>To the content</a>
        <header>
            <h1>${panel.lab ? `Lab ${panel.lab.name}` : "adp"}</h1>
            <${Views} view=${view} device=${device} />
            ${panel.read_only && html`<span class="badge">read-only</span>`}
            <${ThemeButton} />
        </header>
        <${Devices} view=${view} device=${device} place=${place} />
        <${State} isConnected=${isConnected} device=${device} view=${view} />
        <main id="main" tabindex="-1">
            <${Shown} key=${`${view.name} ${view.isOfLab ? "" : device.name}`} view=${view} device=${device} rest=${place.rest} />
        </main>
    `;
}

/**
 * The address must stay that of the view.
 * @param {Event} event
 */
function skip(event) {
    event.preventDefault();
    document.getElementById("main")?.focus();
}

/** @param {{connection: Connection}} props */
function Root({ connection }) {
    const [state, setState] = useState({ panel: connection.panel, isConnected: connection.isConnected });
    useEffect(() => {
        connection.onChange = () => setState({ panel: connection.panel, isConnected: connection.isConnected });
        connection.onChange();
    }, [connection]);
    if (!state.panel) {
        return html`<p class="state" role="status">Connecting to the panel's server ...</p>`;
    }
    return html`
        <${ConnectionContext.Provider} value=${connection}><${Page} isConnected=${state.isConnected} /><//>
    `;
}

const address = new URL("socket", document.baseURI);
address.protocol = address.protocol.replace("http", "ws");
const connection = new Connection(address.href);
render(html`<${Root} connection=${connection} />`, /** @type {HTMLElement} */ (document.getElementById("page")));
