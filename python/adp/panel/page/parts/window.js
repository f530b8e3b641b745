// Which rows of a long table are in sight of its frame, so that only they are in the document.
import { useEffect, useLayoutEffect, useRef, useState } from "../vendor/preact.js";

/** Up to so many rows are all in the document. */
const ALL = 150;
/** Rows beyond the frame's edges, so that scrolling finds them there. */
const BEYOND = 8;
const ROW_HEIGHT = 30;

/**
 * @param {HTMLElement | null} frame
 * @param {number} height of a row
 */
function sightOf(frame, height) {
    const first = Math.floor((frame?.scrollTop ?? 0) / height);
    return { first, last: first + Math.ceil((frame?.clientHeight ?? 600) / height) };
}

/**
 * The frame's part of `count` rows: those from `first` up to, but not with, `last`; `height` is a row's.
 * @param {number} count
 */
export function useWindow(count) {
    const frame = useRef(/** @type {HTMLElement | null} */ (null));
    const height = useRef(ROW_HEIGHT);
    const [sight, setSight] = useState(() => sightOf(null, ROW_HEIGHT));
    const isWhole = count <= ALL;
    const look = () => setSight((old) => {
        const now = sightOf(frame.current, height.current);
        return now.first === old.first && now.last === old.last ? old : now;
    });
    useLayoutEffect(() => {
        const row = frame.current?.querySelector("tbody.rows tr");
        height.current = row?.getBoundingClientRect().height || ROW_HEIGHT;
        if (!isWhole) {
            look();
        }
    });
    useEffect(() => {
        addEventListener("resize", look);
        return () => removeEventListener("resize", look);
    }, []);
    return {
        frame,
        look: isWhole ? null : look,
        isWhole,
        first: isWhole ? 0 : Math.max(0, Math.min(sight.first, count) - BEYOND),
        last: isWhole ? count : Math.min(count, sight.last + BEYOND),
        height: height.current,
    };
}
