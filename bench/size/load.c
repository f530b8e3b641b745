// load FIRST SECOND ROUNDS: loads two libraries in turn. Prints the median nanoseconds of each, first with names bound
// when they are called and then with all bound at once: "lazy FIRST SECOND", "now FIRST SECOND".
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#define LIBRARIES 2
#define MOST_ROUNDS 10000
#define NANOSECONDS 1000000000ll

static int64_t now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * NANOSECONDS + time.tv_nsec;
}

/** The time it takes; a library that stays loaded could not be loaded again. */
static int64_t load_once(const char *path, int mode) {
    const int64_t before = now();
    void *library = dlopen(path, mode | RTLD_LOCAL);
    const int64_t after = now();
    if (library == NULL || dlclose(library) != 0 || dlopen(path, mode | RTLD_NOLOAD) != NULL) {
        fprintf(stderr, "%s cannot be loaded and unloaded\n", path);
        exit(EXIT_FAILURE);
    }
    return after - before;
}

static int compare(const void *left, const void *right) {
    const int64_t a = *(const int64_t *)left;
    const int64_t b = *(const int64_t *)right;
    return (a > b) - (a < b);
}

static void measure(const char *name, int mode, char *paths[LIBRARIES], size_t rounds) {
    static int64_t times[LIBRARIES][MOST_ROUNDS];
    for (size_t round = 0; round < rounds; ++round) {
        for (size_t library = 0; library < LIBRARIES; ++library) {
            times[library][round] = load_once(paths[library], mode);
        }
    }
    printf("%s", name);
    for (size_t library = 0; library < LIBRARIES; ++library) {
        qsort(times[library], rounds, sizeof times[library][0], compare);
        printf(" %lld", (long long)times[library][rounds / 2]);
    }
    puts("");
}

int main(int argc, char **argv) {
    const unsigned long rounds = argc == LIBRARIES + 2 ? strtoul(argv[LIBRARIES + 1], NULL, 10) : 0;
    if (rounds == 0 || rounds > MOST_ROUNDS) {
        fputs("usage: load FIRST SECOND ROUNDS\n", stderr);
        return EXIT_FAILURE;
    }
    measure("lazy", RTLD_LAZY, argv + 1, rounds);
    measure("now", RTLD_NOW, argv + 1, rounds);
    return EXIT_SUCCESS;
}
