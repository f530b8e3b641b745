// Makes every call and its floor once, each through measure(), so that the instructions of each can be counted. A call
// is made once before, uncounted: the library and the drivers do some things only the first time, and their state is
// then as it was when the call was recorded.
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include "bench/calls/cases.h"
#include "bench/calls/state.h"
#include "bench/measure.h"

/** Replaces that of the C library: the library's pauses cost time, but no instructions. */
int usleep(useconds_t microseconds) {
    (void)microseconds;
    return 0;
}

static int is_right(const struct bench_case *one, long result) {
    const int good = one->result == SOME_ADDRESS ? result != 0
                                                 : one->result == ANY_RESULT || (int32_t)result == (int32_t)one->result;
    if (!good) {
        fprintf(stderr, "calls: %s gives %ld, not %ld\n", one->name, result, one->result);
    }
    return good;
}

static int make(const struct bench_case *one, long (*how)(long (*)(void))) {
    const int is_up = bring_up() == 0;
    one->prepare();
    one->before();
    return is_up && is_right(one, how(one->call));
}

int main(void) {
    int failures = 0;
    for (unsigned index = 0; index < bench_case_count; ++index) {
        const struct bench_case *one = &bench_cases[index];
        failures += !make(one, warm_up);
        failures += !make(one, measure);
        one->prepare();
        measure(one->floor);
    }
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
