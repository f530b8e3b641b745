/* Counts what this process takes from the heap: the calls of the C library's allocator are made here. */
#ifndef BENCH_FRAMES_OUT_ALLOCATIONS_H
#define BENCH_FRAMES_OUT_ALLOCATIONS_H

/** Blocks that were taken so far, those that took another one's place included. */
unsigned long allocations(void);

#endif
