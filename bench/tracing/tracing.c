// Makes calls of a kind and prints how many nanoseconds of processor time each takes: bench_tracing KIND CALLS.
#include <adp/adp.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "bench/calls/state.h"

#define VID 100
#define PORT 13
#define MODE 3
#define OCTETS 256
#define BILLION 1000000000LL
// Numbers of qualifiers and actions are the driver's; this one is a word.
#define QUALIFIER 5

static const uint8_t kAddress[ADP_MAC_BYTES] = {2, 0, 0, 0, 0, 1};

static void set_attribute(void) {
    adp_double_tag_set(PORT, MODE);
}

static void read_attribute(void) {
    uint32_t mode = 0;
    adp_double_tag_get(PORT, &mode);
}

static void set_group_attribute(void) {
    adp_double_tag_set(ADP_AGG_INTF(2), MODE);
}

static void list_group(void) {
    adp_intf_t members[ADP_AGG_ACTIVE_MAX] = {0};
    uint32_t count = 0;
    adp_get_agg_group(ADP_AGG_INTF(2), ADP_AGG_ACTIVE_MAX, &count, members);
}

static void set_vlan(void) {
    const adp_ports_t members = {1U << PORT | 2};
    const adp_ports_t untagged = {2};
    adp_vlan_port_set(VID, members, untagged);
}

static void add_address(void) {
    adp_add_mac_addr(kAddress, PORT, VID, 1);
}

static void read_counter(void) {
    uint64_t value = 0;
    adp_intf_stat_get(PORT, 1, &value);
}

static void add_qualifier(void) {
    static FpEntity entity;
    const uint32_t word = VID;
    memset(&entity, 0, sizeof entity);
    adp_fp_add_entity_qualify(&entity, QUALIFIER, &word, sizeof word, &word, (int32_t)sizeof word);
}

static void receive_frame(void) {
    static uint8_t frame[OCTETS];
    uint8_t *out_frame = NULL;
    uint16_t length = 0;
    uint8_t flag = 0;
    adp_intf_t intf = 0;
    memset(frame, MODE, sizeof frame);
    adp_receive_frame(frame, &out_frame, sizeof frame, &length, &flag, &intf);
}

static const struct {
    const char *name;
    void (*make)(void);
} kKinds[] = {
    {"set", set_attribute},   {"read", read_attribute}, {"group", set_group_attribute},
    {"list", list_group},     {"vlan", set_vlan},       {"address", add_address},
    {"counter", read_counter}, {"rule", add_qualifier}, {"frame", receive_frame},
};

static long long now(void) {
    struct timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return time.tv_sec * BILLION + time.tv_nsec;
}

int main(int argc, char **argv) {
    const long calls = argc > 2 ? strtol(argv[2], NULL, 10) : 0;
    if (calls <= 0 || bring_up() != 0)
        return 1;
    for (size_t kind = 0; kind < sizeof kKinds / sizeof *kKinds; kind++) {
        if (strcmp(argv[1], kKinds[kind].name) != 0)
            continue;
        kKinds[kind].make();
        const long long begin = now();
        for (long i = 0; i < calls; i++)
            kKinds[kind].make();
        printf("%.1f\n", (double)(now() - begin) / (double)calls);
        return 0;
    }
    return 1;
}
