// Long work in slices, so that the page answers and paints meanwhile.

const SLICE_MILLISECONDS = 8;
const PIECE = 100;

/**
 * Hands each item to `take`, and yields now and then.
 * @template T
 * @param {Iterable<T>} items
 * @param {(item: T) => void} take
 * @returns {Generator<void, void>}
 */
export function* visit(items, take) {
    let left = PIECE;
    for (const item of items) {
        take(item);
        if (--left === 0) {
            left = PIECE;
            yield;
        }
    }
}

/**
 * Does all of the work at once.
 * @template T
 * @param {Generator<void, T>} work
 * @returns {T}
 */
export function atOnce(work) {
    for (;;) {
        const step = work.next();
        if (step.done) {
            return step.value;
        }
    }
}

/**
 * Does the work in slices of some milliseconds, and then hands its result to `done`.
 * @template T
 * @param {Generator<void, T>} work
 * @param {(result: T) => void} done
 */
export function inSlices(work, done) {
    const end = performance.now() + SLICE_MILLISECONDS;
    do {
        const step = work.next();
        if (step.done) {
            done(step.value);
            return;
        }
    } while (performance.now() < end);
    setTimeout(() => inSlices(work, done));
}
