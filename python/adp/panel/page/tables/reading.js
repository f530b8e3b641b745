// What the tables share: the newest answer or why there is none, facts, and commands.
import { html } from "../vendor/preact.js";
import { Command } from "../parts/command.js";
import { Problem } from "../parts/problem.js";

/**
 * Shows what `children`, a function, makes of an answer, as soon as there is one.
 * @param {{reading: import("../types").Reading, children?: any}} props
 */
export function Answered({ reading, children }) {
    return html`
        <${Problem} text=${reading.error} />
        ${reading.answer ? children(reading.answer) : html`<p hidden=${reading.error}>Reading ...</p>`}
    `;
}

/** @param {{facts: [string, any][]}} props names and values */
export function Facts({ facts }) {
    return html`
        <dl class="facts">${facts.map(([name, value]) => html`<div><dt>${name}</dt><dd>${value}</dd></div>`)}</dl>
    `;
}

/** @param {{commands: [string, string][]}} props what each does, and the command */
export function Commands({ commands }) {
    return html`
        <dl class="command-list">
            ${commands.map(([about, text]) => html`<div><dt>${about}</dt><dd><${Command} text=${text} /></dd></div>`)}
        </dl>
    `;
}

/**
 * Letters with their names, as the cells of a matrix have them.
 * @param {{letters: [string, string, string][]}} props letter, class, name
 */
export function Legend({ letters }) {
    return html`
        <ul class="legend">
            ${letters.map(([letter, mark, name]) => html`
                <li><span class=${`letter ${mark}`}>${letter}</span> ${name}</li>
            `)}
        </ul>
    `;
}
