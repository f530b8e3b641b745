// A command that a person can copy.
import { html, useState } from "../vendor/preact.js";

const SAID_MILLISECONDS = 2000;

/** @param {{text: string}} props */
export function Command({ text }) {
    const [said, setSaid] = useState("");
    const copy = async () => {
        try {
            await navigator.clipboard.writeText(text);
            setSaid("Copied");
        } catch {
            setSaid("Not copied: the browser does not allow it");
        }
        setTimeout(() => setSaid(""), SAID_MILLISECONDS);
    };
    return html`
        <span class="command">
            <code>${text}</code>
            <button type="button" onClick=${copy} aria-label=${`Copy the command ${text}`}>Copy</button>
            <span role="status">${said}</span>
        </span>
    `;
}
