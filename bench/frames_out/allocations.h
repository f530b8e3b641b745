/* Counts what this process takes from the heap: the calls of the C library's allocator are made here. */
#pragma once

/** Blocks that were taken so far, those that took another one's place included. */
unsigned long allocations(void);
