/* Counts the allocations of this process: it replaces the calls of the C library's allocator. */
#pragma once

/** Allocations so far, reallocations included. */
unsigned long allocations(void);
