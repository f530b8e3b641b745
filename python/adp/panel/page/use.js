// Hooks: what a component of the page gets from the server and from the address.
import { createContext, useContext, useEffect, useRef, useState } from "./vendor/preact.js";

/** @typedef {import("./types").Reading} Reading */
/** @typedef {import("./types").Request} Request */
/** @typedef {import("./types").Place} Place */

/** @type {import("./vendor/preact").Context<import("./connection").Connection>} */
export const ConnectionContext = createContext(/** @type {any} */ (null));

export const useConnection = () => useContext(ConnectionContext);

/**
 * What the server has said of itself, its devices and the lab.
 * @returns {import("./types").Panel}
 */
export function usePanel() {
    return /** @type {import("./types").Panel} */ (useConnection().panel);
}

/**
 * The newest answer to a request, which is read again and again. Without a request nothing is read.
 * @param {string} device
 * @param {Request | null} request
 * @param {number} [every] seconds
 * @returns {Reading}
 */
export function useAnswer(device, request, every = 1) {
    const connection = useConnection();
    const key = JSON.stringify([device, request, every]);
    const [state, setState] = useState(/** @type {Reading & {key: string}} */ ({ key, answer: null, error: null }));
    useEffect(() => {
        if (request) {
            return connection.read(device, request, every, (reading) => setState({ key, ...reading }));
        }
    }, [key]);
    return state.key === key ? state : { answer: null, error: null };
}

/**
 * Hands the lines of a stream to `take` as long as there is a request.
 * @param {string} device
 * @param {Request | null} request
 * @param {(lines: any[]) => void} take
 * @returns {string | null} why it has ended, if it has
 */
export function useStream(device, request, take) {
    const connection = useConnection();
    const [problem, setProblem] = useState(/** @type {string | null} */ (null));
    const latest = useRef(take);
    latest.current = take;
    useEffect(() => {
        setProblem(null);
        if (request) {
            return connection.stream(device, request, (lines) => {
                setProblem(null);
                latest.current(lines);
            }, (error) => setProblem(error ?? "The stream has ended."));
        }
    }, [device, JSON.stringify(request)]);
    return problem;
}

/**
 * Two answers in turn, from which rates are made: the newest one and the one before.
 * @param {any} answer
 * @returns {{before: any, now: any}}
 */
export function useTwoAnswers(answer) {
    const held = useRef({ before: /** @type {any} */ (null), now: /** @type {any} */ (null) });
    if (answer !== held.current.now) {
        held.current = { before: answer && held.current.now, now: answer };
    }
    return held.current;
}

/** @returns {Place} */
function placeOfAddress() {
    const [view, device, ...rest] = location.hash.slice(1).split("/").map((part) => {
        try {
            return decodeURIComponent(part);
        } catch {
            return part;
        }
    });
    return { view: view || "front", device: device || "", rest };
}

/**
 * Where one is, by the address: `#view/device/rest`.
 * @returns {Place}
 */
export function usePlace() {
    const [place, setPlace] = useState(placeOfAddress);
    useEffect(() => {
        const changed = () => setPlace(placeOfAddress());
        addEventListener("hashchange", changed);
        return () => removeEventListener("hashchange", changed);
    }, []);
    return place;
}

/**
 * The address of a place.
 * @param {...(string | number)} parts view, device, rest
 */
export function addressOf(...parts) {
    return `#${parts.map(encodeURIComponent).join("/")}`;
}

/**
 * Does a request that changes something, and keeps the sentence if it is refused.
 * @param {string} device
 * @returns {{act: (request: Request) => Promise<boolean>, problem: string | null, isBusy: boolean}}
 */
export function useAction(device) {
    const connection = useConnection();
    const [state, setState] = useState({ problem: /** @type {string | null} */ (null), isBusy: false });
    /** @param {Request} request */
    const act = async (request) => {
        setState({ problem: null, isBusy: true });
        try {
            await connection.ask(device, request);
            setState({ problem: null, isBusy: false });
            return true;
        } catch (problem) {
            setState({ problem: /** @type {Error} */ (problem).message, isBusy: false });
            return false;
        }
    };
    return { act, ...state };
}
