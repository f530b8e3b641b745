// Readings of several devices at a time.
import { useEffect, useState } from "../vendor/preact.js";
import { useConnection } from "../use.js";

const TOGETHER_MILLISECONDS = 60;

/**
 * The newest two answers of each device. When `error` is set, they are older.
 * @typedef {Map<string, {before: any, now: any, error: string | null}>} Readings
 */

/**
 * The answers of devices to one request, which is made again and again. Those that come at about the same time are shown
 * together.
 * @param {string[]} devices
 * @param {import("../types").Request} request
 * @param {number} every seconds
 * @returns {Readings}
 */
export function useReadings(devices, request, every) {
    const connection = useConnection();
    const [readings, setReadings] = useState(/** @type {Readings} */ (new Map()));
    useEffect(() => {
        let newest = /** @type {Readings} */ (new Map());
        /** @type {ReturnType<typeof setTimeout> | undefined} */
        let timer;
        const show = () => {
            timer = undefined;
            setReadings(newest);
        };
        const ends = devices.map((name) => connection.read(name, request, every, ({ answer, error }) => {
            const last = newest.get(name);
            const before = answer === last?.now ? last?.before : last?.now;
            newest = new Map(newest).set(name, { before: before ?? null, now: answer, error });
            timer ??= setTimeout(show, TOGETHER_MILLISECONDS);
        }));
        return () => {
            clearTimeout(timer);
            ends.forEach((end) => end());
        };
    }, [JSON.stringify([devices, request, every])]);
    return readings;
}
