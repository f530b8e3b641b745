// The newest calls of a device, as the stream tells them, and which of them are asked for.
import { useRef, useState } from "../vendor/preact.js";
import { useStream } from "../use.js";

export const MOST_KEPT = 1000;

/**
 * A call as `adptrace show --json` tells it. `microseconds` is null if it did not return.
 * @typedef {{at: number, process: number, thread: number, text: string, failed: boolean, microseconds: number | null,
 *     within: Call[], left_out?: number}} Call
 * One that the program made itself, with its place in the list.
 * @typedef {Call & {recording: string, key: number, hasFailure: boolean}} ListedCall
 * What is known of a recording.
 * @typedef {{name: string, state: string, problem: string | null}} Recording
 * The newest call stands first.
 * @typedef {{calls: ListedCall[], recordings: Map<string, Recording>, missed: number, hasBegun: boolean}} Newest
 */

/** @returns {Newest} */
const nothing = () => ({ calls: [], recordings: new Map(), missed: 0, hasBegun: false });

/** @param {Call} call @returns {boolean} */
const hasFailure = (call) => call.failed || call.within.some(hasFailure);

/**
 * @param {Newest} old
 * @param {any[]} lines
 * @param {() => number} nextKey
 * @returns {Newest}
 */
function withLines(old, lines, nextKey) {
    const recordings = new Map(old.recordings);
    const calls = [];
    let missed = old.missed;
    for (const line of lines) {
        if (line.text !== undefined) {
            calls.unshift({ ...line, key: nextKey(), hasFailure: hasFailure(line) });
        } else if (line.missed) {
            missed += line.missed;
        } else if (line.recording) {
            recordings.set(line.recording, { name: line.recording, state: line.state ?? "ended", problem: line.problem ?? null });
        }
    }
    return { calls: [...calls, ...old.calls].slice(0, MOST_KEPT), recordings, missed, hasBegun: true };
}

/**
 * @param {string} device
 * @returns {{newest: Newest, problem: string | null}}
 */
export function useNewestCalls(device) {
    const [newest, setNewest] = useState(nothing);
    const next = useRef(0);
    const problem = useStream(device, { command: "calls" }, (lines) => {
        // A stream begins, also anew, with no lines; the newest calls follow.
        setNewest((old) => withLines(lines.length ? old : nothing(), lines, () => next.current++));
    });
    return { newest, problem };
}

/** @param {Call} call @param {string} text @returns {boolean} */
function has(call, text) {
    return call.text.toLowerCase().includes(text) || call.within.some((each) => has(each, text));
}

/**
 * @param {ListedCall[]} calls
 * @param {{text: string, isFailed: boolean}} filter a text of the call, of one within it, or of the recording's name
 */
export function chosen(calls, { text, isFailed }) {
    const wanted = text.trim().toLowerCase();
    return calls.filter((call) => (!isFailed || call.hasFailure) &&
        (!wanted || has(call, wanted) || call.recording.toLowerCase().includes(wanted)));
}
