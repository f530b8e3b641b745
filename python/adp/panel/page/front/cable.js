// A port's cable: pull it, plug it in, make it a bad one or a good one.
import { html } from "../vendor/preact.js";
import { useAction, usePanel } from "../use.js";
import { CableForm } from "../parts/cable_form.js";
import { Problem } from "../parts/problem.js";
import { titleOf } from "./words.js";

/** @param {{device: import("../types").Device, row: any}} props `row` is the port's of `ports` */
export function Cable({ device, row }) {
    const { read_only } = usePanel();
    const { act, problem, isBusy } = useAction(device.name);
    const { port } = row;
    const isRunning = device.running ? "" : `${device.name} is not running.`;
    const reason = read_only ? "The panel is read-only, so cables cannot be changed here." : isRunning;
    return html`
        <section class="front-cable" aria-label=${`Cable of ${titleOf(port)}`}>
            <h3>Cable</h3>
            <p>${row.pulled ? "Pulled" : row.present ? "Plugged in" : "No interface, so no cable"}.</p>
            <p class="front-reason" hidden=${!reason}>${reason}</p>
            <button type="button" class="front-pull" disabled=${reason || isBusy}
                onClick=${() => act({ command: row.pulled ? "plug" : "pull", port })}>
                ${row.pulled ? "Plug the cable in" : "Pull the cable"}
            </button>
            <${CableForm} device=${device.name} port=${port} />
            <${Problem} text=${problem} />
        </section>
    `;
}
