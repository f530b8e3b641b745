// The allocator, counted.
#include "bench/frames_out/allocations.h"

#include <stddef.h>
#include <stdlib.h>

/* The C library's allocator under its other names. */
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);

static unsigned long taken;

unsigned long allocations(void) {
    return taken;
}

void *malloc(size_t size) {
    taken++;
    return __libc_malloc(size);
}

void *calloc(size_t count, size_t size) {
    taken++;
    return __libc_calloc(count, size);
}

void *realloc(void *block, size_t size) {
    taken++;
    return __libc_realloc(block, size);
}
