// Readings of several devices at a time.
import { useEffect, useState } from "../vendor/preact.js";
import { useConnection } from "../use.js";

/**
 * The newest two answers of each device. When `error` is set, they are older.
 * @typedef {Map<string, {before: any, now: any, error: string | null}>} Readings
 */

/**
 * The answers of devices to one request, which is made again and again.
 * @param {string[]} devices
 * @param {import("../types").Request} request
 * @param {number} every seconds
 * @returns {Readings}
 */
export function useReadings(devices, request, every) {
    const connection = useConnection();
    const [readings, setReadings] = useState(/** @type {Readings} */ (new Map()));
    useEffect(() => {
        setReadings(new Map());
        const ends = devices.map((name) => connection.read(name, request, every, ({ answer, error }) =>
            setReadings((old) => {
                const last = old.get(name);
                const before = answer === last?.now ? last?.before : last?.now;
                return new Map(old).set(name, { before: before ?? null, now: answer, error });
            })));
        return () => ends.forEach((end) => end());
    }, [JSON.stringify([devices, request, every])]);
    return readings;
}
