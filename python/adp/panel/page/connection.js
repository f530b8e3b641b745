// The connection to the server: single requests, readings that are repeated, and streams. It comes back by itself.

/** @typedef {import("./types").Request} Request */
/** @typedef {import("./types").Reading} Reading */
/** @typedef {import("./types").Panel} Panel */

const AGAIN_MILLISECONDS = 1000;
const LOST = "The connection to the panel's server is lost.";

export class Connection {
    /** @type {WebSocket | null} */
    #socket = null;
    #next = 1;
    /**
     * What the server is asked for, by its id.
     * @type {Map<number, {message: object, take: (message: any) => void, isOnce: boolean}>}
     */
    #open = new Map();
    /** @type {string} */
    #url;
    /** @type {Panel | null} */
    panel = null;
    isConnected = false;
    /**
     * Called when `panel` or `isConnected` have changed.
     * @type {() => void}
     */
    onChange = () => {};

    /** @param {string} url */
    constructor(url) {
        this.#url = url;
        this.#connect();
    }

    #connect() {
        const socket = new WebSocket(this.#url);
        socket.onopen = () => {
            this.#socket = socket;
            this.isConnected = true;
            this.#open.forEach((each) => this.#send(each.message));
            this.onChange();
        };
        socket.onmessage = (event) => this.#take(JSON.parse(event.data));
        socket.onclose = () => {
            this.#socket = null;
            this.isConnected = false;
            for (const [id, each] of [...this.#open]) {
                if (each.isOnce) {
                    this.#open.delete(id);
                }
                each.take({ error: LOST });
            }
            this.onChange();
            setTimeout(() => this.#connect(), AGAIN_MILLISECONDS);
        };
    }

    /** @param {any} message */
    #take(message) {
        if (message.panel) {
            this.panel = message.panel;
            this.onChange();
            return;
        }
        const each = this.#open.get(message.id);
        if (each?.isOnce) {
            this.#open.delete(message.id);
        }
        each?.take(message);
    }

    /** @param {object} message */
    #send(message) {
        this.#socket?.send(JSON.stringify(message));
    }

    /**
     * @param {object} message
     * @param {(message: any) => void} take
     * @param {boolean} isOnce
     */
    #request(message, take, isOnce) {
        const id = this.#next++;
        const each = { message: { id, ...message }, take, isOnce };
        this.#open.set(id, each);
        this.#send(each.message);
        return () => {
            if (this.#open.delete(id)) {
                this.#send({ id, stop: true });
            }
        };
    }

    /**
     * The answer to one request. It fails with an Error whose message is a sentence.
     * @param {string} device
     * @param {Request} request
     * @returns {Promise<any>}
     */
    ask(device, request) {
        return new Promise((resolve, reject) => {
            if (!this.isConnected) {
                reject(new Error(LOST));
                return;
            }
            /** @param {any} message */
            const take = (message) => (message.error ? reject(new Error(message.error)) : resolve(message.answer));
            this.#request({ device, ask: request }, take, true);
        });
    }

    /**
     * Answers to a request whenever they have changed; returns what ends it.
     * @param {string} device
     * @param {Request} request
     * @param {number} every seconds
     * @param {(reading: Reading) => void} take
     * @returns {() => void}
     */
    read(device, request, every, take) {
        /** @type {any} */
        let answer = null;
        return this.#request({ device, read: request, every }, (message) => {
            answer = message.answer ?? answer;
            take({ answer, error: message.error ?? null });
        }, false);
    }

    /**
     * Lines until it is ended; returns what ends it.
     * @param {string} device
     * @param {Request} request
     * @param {(lines: any[]) => void} take
     * @param {(error: string | null) => void} [onEnd] after the last line; the stream begins again if the server comes back
     * @returns {() => void}
     */
    stream(device, request, take, onEnd) {
        return this.#request({ device, stream: request }, (message) => {
            if (message.lines) {
                take(message.lines);
            } else {
                onEnd?.(message.error ?? null);
            }
        }, false);
    }
}
