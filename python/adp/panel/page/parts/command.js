// A command that a person can copy.
import { html, useState } from "../vendor/preact.js";

const SAID_MILLISECONDS = 2000;

/** @param {{text: string, name?: string}} props `name` is the button's text */
export function CopyButton({ text, name = "Copy" }) {
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
        <button type="button" onClick=${copy} title=${text} aria-label=${`Copy the command ${text}`}>${name}</button>
        <span role="status">${said}</span>
    `;
}

/** @param {{text: string}} props */
export function Command({ text }) {
    return html`<span class="command"><code>${text}</code> <${CopyButton} text=${text} /></span>`;
}
