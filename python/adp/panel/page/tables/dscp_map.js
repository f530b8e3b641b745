// The DSCP map, with a row for eight DSCPs.
import { html } from "../vendor/preact.js";

const EIGHT = [0, 1, 2, 3, 4, 5, 6, 7];

/**
 * At power-on a DSCP stays, and its priority is an eighth of it.
 * @param {any} row
 */
const isMapped = (row) => row.mapped !== row.dscp || row.priority !== row.dscp >> 3;

/** @param {{row: any}} props */
function Cell({ row }) {
    const becomes = row.mapped !== row.dscp && html`<span class="becomes"> →${row.mapped}</span>`;
    return html`
        <td class=${isMapped(row) ? "mapped" : null} title=${`DSCP ${row.dscp}`}>${row.priority}${becomes}</td>
    `;
}

/** @param {{rows: any[]}} props the 64 rows of the map */
export function DscpMap({ rows }) {
    return html`
        <section class="part" aria-label="DSCP map">
            <h3>DSCP map</h3>
            <div class="note">
                <p>The priority of each DSCP on ports that trust it, and behind an arrow the DSCP that the packet leaves
                    with, if it is another. A DSCP is the number of its row and that of its column together. Those that are
                    not as at power-on have a frame.</p>
            </div>
            <div class="scroll matrix" tabindex="0" role="region" aria-label="DSCP map">
                <table>
                    <caption>Priority of each DSCP</caption>
                    <thead><tr>
                        <th scope="col">DSCP</th>
                        ${EIGHT.map((low) => html`<th scope="col">+${low}</th>`)}
                    </tr></thead>
                    <tbody>
                        ${EIGHT.map((high) => html`
                            <tr>
                                <th scope="row">${8 * high}</th>
                                ${EIGHT.map((low) => html`<${Cell} row=${rows[8 * high + low]} />`)}
                            </tr>
                        `)}
                    </tbody>
                </table>
            </div>
        </section>
    `;
}
