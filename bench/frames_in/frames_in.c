// Receives frames by both calls, and moves the same bytes by memmove(), each through measure().
#include <adp/adp.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "bench/calls/state.h"
#include "bench/measure.h"

#define ADDRESS_BYTES 12
#define TAG_BYTES 6
#define FCS_BYTES 4
#define LARGEST 1514
// A port in the middle of the map, in no group.
#define INTERFACE 13
#define PHYSICAL 16

static const unsigned char kHead[] = {
    0x02, 0,    0,    0,   0, 1,        0x02, 0, 0, 0, 0, 2, /* addresses */
    0x88, 0x74, 0,    0,   0, PHYSICAL,                      /* the switch tag */
    0x81, 0,    0,    100,                                   /* VLAN 100 */
    0x08, 0,    0x45, 0,   0, 46,                            /* IPv4, without options */
};

static union {
    unsigned char bytes[LARGEST + TAG_BYTES + FCS_BYTES];
    unsigned long long align;
} frame;
static uint32_t size;
static adp_rx_frame_t parsed;
static uint8_t *out_frame;
static uint16_t out_length;
static uint8_t out_flag;
static adp_intf_t out_interface;

/** Restores the frame before each of the calls, which change it in place. */
static void take(uint32_t wanted) {
    size = wanted;
    memset(frame.bytes, 0x5A, sizeof frame.bytes);
    memcpy(frame.bytes, kHead, sizeof kHead);
    memset(&parsed, 0, sizeof parsed);
    parsed.frame = frame.bytes;
    parsed.length = size + TAG_BYTES + FCS_BYTES;
    parsed.vlan_tag = frame.bytes + ADDRESS_BYTES + TAG_BYTES;
    out_interface = 0;
}

/** Whether the tag has been removed. */
static int is_stripped(void) {
    return memcmp(frame.bytes, kHead, ADDRESS_BYTES) == 0 &&
           memcmp(frame.bytes + ADDRESS_BYTES, kHead + ADDRESS_BYTES + TAG_BYTES,
                  sizeof kHead - ADDRESS_BYTES - TAG_BYTES) == 0;
}

static int is_received(long status) {
    return status == ADP_OK && is_stripped() && out_length == size && out_interface == INTERFACE;
}

static int is_parsed(long status) {
    return status == ADP_OK && is_stripped() && parsed.length == size && parsed.intf == INTERFACE &&
           parsed.ipv4_header == frame.bytes + ADDRESS_BYTES + TAG_BYTES;
}

static int is_moved(long status) {
    return status == 0 && is_stripped();
}

/** The measured functions for frames of one size. */
#define FRAMES_OF(SIZE)                                                                                                \
    static long receive_##SIZE(void) {                                                                                 \
        return adp_receive_frame(frame.bytes, &out_frame, (SIZE) + TAG_BYTES, &out_length, &out_flag, &out_interface); \
    }                                                                                                                  \
    static long parse_##SIZE(void) {                                                                                   \
        return __adp_receive_frame(&parsed, 0);                                                                        \
    }                                                                                                                  \
    static long parse_checked_##SIZE(void) {                                                                           \
        return __adp_receive_frame(&parsed, 1);                                                                        \
    }                                                                                                                  \
    static long move_##SIZE(void) {                                                                                    \
        memmove(frame.bytes + ADDRESS_BYTES, frame.bytes + ADDRESS_BYTES + TAG_BYTES, (SIZE)-ADDRESS_BYTES);           \
        return 0;                                                                                                      \
    }

FRAMES_OF(64)
FRAMES_OF(512)
FRAMES_OF(1514)

static const struct {
    const char *name;
    uint32_t size;
    long (*call)(void);
    int (*is_good)(long status);
} kWays[] = {
#define WAYS_OF(SIZE)                                                                         \
    {"receive", SIZE, receive_##SIZE, is_received}, {"parse", SIZE, parse_##SIZE, is_parsed}, \
        {"parse_checked", SIZE, parse_checked_##SIZE, is_parsed}, {"move", SIZE, move_##SIZE, is_moved},
    WAYS_OF(64) WAYS_OF(512) WAYS_OF(1514)};

int main(void) {
    int failures = bring_up() != 0;
    for (size_t index = 0; index < sizeof kWays / sizeof *kWays; ++index) {
        take(kWays[index].size);
        const int is_warm = kWays[index].is_good(warm_up(kWays[index].call));
        take(kWays[index].size);
        if (!kWays[index].is_good(measure(kWays[index].call)) || !is_warm) {
            fprintf(stderr, "frames_in: %s does not take in a frame of %u bytes\n", kWays[index].name, (unsigned)size);
            ++failures;
        }
    }
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
