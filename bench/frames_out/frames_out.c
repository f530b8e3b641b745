/*
 * bench_frames_out WAY BYTES FRAMES BLOCKS: sends frames by a way of the library's, and the same frames as bare system
 * calls.
 *
 * FRAMES by the library and as many bare ones alternate, BLOCKS times; each is first every other time. A line for each
 * block has the nanoseconds of processor time of either, and those that have passed. Then both send once more, and the
 * last line has the library's allocations. Calls write(-1, ...) before, between and after them mark the system calls of
 * either in a trace.
 */
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "bench/frames_out/allocations.h"
#include "bench/frames_out/bare.h"
#include "bench/frames_out/ways.h"

enum { kArguments = 5, kShortestFrame = 60, kNanoseconds = 1000000000, kNowhere = -1 };

static const char kDeviceEnd[] = "cpu0";
static const uint8_t kHeader[] = {0x02, 0xBE, 0, 0, 0, 1, 0x02, 0xBE, 0, 0, 0, 2, 0x88, 0xB5};

struct run {
    const struct way *way;
    adp_tx_frame_t frame;
    struct tagged_frame ready;
    int socket;
    unsigned long frames;
};

struct moment {
    uint64_t passed;
    uint64_t spent;
};

static uint64_t read_clock(clockid_t clock) {
    struct timespec time;
    clock_gettime(clock, &time);
    return (uint64_t)time.tv_sec * kNanoseconds + (uint64_t)time.tv_nsec;
}

static struct moment now(void) {
    return (struct moment){read_clock(CLOCK_MONOTONIC), read_clock(CLOCK_THREAD_CPUTIME_ID)};
}

static bool send_ready(const struct run *run) {
    return run->way->single ? send_bare_on_own_socket(&run->ready) : send_bare(run->socket, &run->ready);
}

/* The library sends the same bytes as the bare calls. */
static bool learn_frame(struct run *run) {
    struct tagged_frame again;
    const int ears = listen_on(kDeviceEnd);
    const bool same = ears >= 0 && send_by(run->way, &run->frame) && take_frame(ears, &run->ready) &&
                      run->ready.length == run->frame.length + kTagBytes && send_ready(run) &&
                      take_frame(ears, &again) && again.length == run->ready.length &&
                      memcmp(again.bytes, run->ready.bytes, again.length) == 0;
    close(ears);
    return same;
}

static bool send_by_library(const struct run *run) {
    bool sent = true;
    for (unsigned long i = 0; i < run->frames; i++)
        sent &= send_by(run->way, &run->frame);
    return sent;
}

static bool send_all_bare(const struct run *run) {
    bool sent = true;
    for (unsigned long i = 0; i < run->frames; i++)
        sent &= send_ready(run);
    return sent;
}

/* Fails on purpose: it is only a mark. */
static bool mark(const char *text) {
    return write(kNowhere, text, strlen(text)) < 0;
}

static bool timed(bool (*send)(const struct run *), const struct run *run, struct moment *duration) {
    const struct moment began = now();
    const bool sent = send(run);
    const struct moment ended = now();
    *duration = (struct moment){ended.passed - began.passed, ended.spent - began.spent};
    return sent;
}

static bool take_turns(const struct run *run, unsigned long blocks) {
    struct moment library = {0, 0};
    struct moment bare = {0, 0};
    bool sent = true;
    for (unsigned long i = 0; sent && i < blocks; i++) {
        if (i % 2 == 0)
            sent = timed(send_by_library, run, &library) && timed(send_all_bare, run, &bare);
        else
            sent = timed(send_all_bare, run, &bare) && timed(send_by_library, run, &library);
        printf("%llu %llu %llu %llu\n", (unsigned long long)library.spent, (unsigned long long)bare.spent,
               (unsigned long long)library.passed, (unsigned long long)bare.passed);
    }
    return sent;
}

static bool count_both(const struct run *run) {
    fflush(stdout);
    const unsigned long before = allocations();
    bool done = mark("library") && send_by_library(run);
    const unsigned long taken = allocations() - before;
    done = done && mark("bare") && send_all_bare(run) && mark("end");
    printf("allocations %lu\n", taken);
    return done;
}

int main(int argc, char **argv) {
    static uint8_t bytes[kLongestFrame];
    static struct run run;
    const unsigned long size = argc == kArguments ? strtoul(argv[2], NULL, 10) : 0;

    run.way = argc == kArguments ? find_way(argv[1]) : NULL;
    if (run.way == NULL || size < kShortestFrame || size > kLongestFrame) {
        fprintf(stderr, "usage: bench_frames_out WAY BYTES FRAMES BLOCKS\n");
        return 2;
    }
    memcpy(bytes, kHeader, sizeof kHeader);
    run.frame = (adp_tx_frame_t){.frame = bytes, .length = (uint32_t)size};
    run.frames = strtoul(argv[3], NULL, 10);
    run.socket = open_packet_socket();
    if (run.socket < 0 || !prepare_ways() || !learn_frame(&run)) {
        fprintf(stderr, "bench_frames_out: '%s' does not send what it should on eth0\n", argv[1]);
        return 1;
    }
    if (!take_turns(&run, strtoul(argv[4], NULL, 10)) || !count_both(&run)) {
        fprintf(stderr, "bench_frames_out: a frame was not sent\n");
        return 1;
    }
    return 0;
}
