// Makes every call and its floor, each through measure(), so that whoever counts this process's instructions finds what
// each costs below it: calls [TIMES].
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include "bench/calls/cases.h"
#include "bench/calls/state.h"
#include "bench/measure.h"

/** What the library and the C library do only once has been done before anything is counted. */
#define WARM_UPS 1

/** In place of the C library's: the library's pauses of half a second cost time, but no instructions. */
int usleep(useconds_t microseconds) {
    (void)microseconds;
    return 0;
}

static int prepare(const struct bench_case *one) {
    const int failed = bring_up();
    one->prepare();
    return failed;
}

static int is_right(const struct bench_case *one, long result) {
    const int good = one->result == kSomeAddress ? result != 0
                     : one->result == kAnyResult || (int32_t)result == (int32_t)one->result;
    if (!good) {
        fprintf(stderr, "calls: %s gives %ld, not %ld\n", one->name, result, one->result);
    }
    return good;
}

static int run(const struct bench_case *one, long times) {
    int failures = 0;
    for (long turn = -WARM_UPS; turn < times; ++turn) {
        failures += prepare(one) != 0;
        failures += !is_right(one, turn < 0 ? warm_up(one->call) : measure(one->call));
    }
    for (long turn = -WARM_UPS; turn < times; ++turn) {
        failures += prepare(one) != 0;
        (void)(turn < 0 ? warm_up(one->floor) : measure(one->floor));
    }
    return failures;
}

int main(int count, char **arguments) {
    const long times = count > 1 ? strtol(arguments[1], NULL, 10) : 1;
    int failures = times < 1;
    for (unsigned index = 0; index < bench_case_count; ++index) {
        failures += run(&bench_cases[index], times);
    }
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
