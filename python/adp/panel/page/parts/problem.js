// A sentence about something that went wrong.
import { html } from "../vendor/preact.js";

/** @param {{text: string | null}} props */
export function Problem({ text }) {
    return html`<p class="problem" role="alert" hidden=${!text}>${text}</p>`;
}
