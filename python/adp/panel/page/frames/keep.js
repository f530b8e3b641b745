// The frames that are kept: the newest ones, in bounded numbers, with what was missed between them.

export const MOST_FRAMES = 2000;
const ARP = 0x0806;
const TYPES = new Map([
    [0x0800, "IPv4"], [ARP, "ARP"], [0x86dd, "IPv6"], [0x88cc, "LLDP"], [0x8809, "LACP"], [0x88f7, "PTP"], [0x8874, "switch tag"],
]);
const LEAST_TYPE = 0x600;

/**
 * A row of the list: a frame, or how many frames are not there.
 * @typedef {{id: number, account: import("../explain/account.js").Account | null, gap: string | null}} Entry
 */

/**
 * The name of a type, or its number.
 * @type {(type: number) => string}
 */
export const typeName = (type) =>
    TYPES.get(type) ?? (type < LEAST_TYPE ? "802.3" : `0x${type.toString(16).padStart(4, "0")}`);

/** The types that a person can name. */
export const TYPE_NUMBERS = new Map([...TYPES].map(([number, name]) => [name.toLowerCase(), number]));

export class Keep {
    /**
     * The newest first.
     * @type {Entry[]}
     */
    entries = [];
    seen = 0;
    missed = 0;
    /**
     * How many passed since the list stands still, or null while it does not.
     * @type {number | null}
     */
    passed = null;
    #next = 1;

    /** @param {any[]} lines of the stream */
    take(lines) {
        /** @type {Entry[]} */
        const fresh = [];
        for (const line of lines) {
            if (line.missed !== undefined) {
                this.missed += line.missed;
                fresh.push(this.#entry(null, `${line.missed} frames missed: they came faster than they were taken`));
            } else if (line.steps) {
                this.seen++;
                fresh.push(this.#entry(line, null));
            }
        }
        if (this.passed !== null) {
            this.passed += fresh.reduce((sum, entry) => sum + (entry.account ? 1 : 0), 0);
            return;
        }
        this.#add(fresh);
    }

    /** @param {Entry[]} fresh the oldest first */
    #add(fresh) {
        this.entries = [...fresh.slice(-MOST_FRAMES).reverse(), ...this.entries].slice(0, MOST_FRAMES);
    }

    /** @param {any} account @param {string | null} gap @returns {Entry} */
    #entry(account, gap) {
        return { id: this.#next++, account, gap };
    }

    pause() {
        this.passed = 0;
    }

    goOn() {
        if (this.passed) {
            this.#add([this.#entry(null, `${this.passed} frames passed while the list stood still`)]);
        }
        this.passed = null;
    }

    clear() {
        this.entries = [];
        this.seen = 0;
        this.missed = 0;
        this.passed = this.passed === null ? null : 0;
    }
}

/**
 * What the list shows of a frame.
 * @param {import("../explain/account.js").Account} account
 */
export function summaryOf(account) {
    const header = account.steps.find((step) => step.step === "header");
    const priority = [...account.steps].reverse().find((step) => step.priority !== undefined)?.priority;
    return {
        time: account.time ?? 0,
        port: account.port,
        source: header?.source ?? "",
        destination: header?.destination ?? "",
        vlan: account.vid === undefined ? "" : String(account.vid),
        priority: priority === undefined ? "" : String(priority),
        type: header ? typeName(header.type) : "",
        octets: account.steps[0]?.octets ?? "",
    };
}
