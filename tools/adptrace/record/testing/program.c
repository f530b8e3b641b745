// The program that the tests record: calls of the library, in the ways in which programs make them.
#include "tools/adptrace/record/testing/program.h"

#include <adp/adp.h>
#include <errno.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/device_services.h"
#include "tools/adptrace/record/testing/driver.h"

enum { kPhysicalPort = 9, kErrno = 55, kManyMembers = 1000000, kLevel = 5, kModule = 6 };

int set_up(void) {
    const int failed = adp_set_max_phy_port_num(2) != 0 || adp_add_phy_port(1, 0, 0, kPhysicalPort, 0) != 0;
    return failed || adp_add_phy_port(2, 0, 0, kPhysicalPort + 1, 0) != 0;
}

int make_calls(void) {
    uint32_t mode = 0;
    if (set_up() != 0 || adp_double_tag_set(1, kMode) != 0 || adp_double_tag_get(1, &mode) != 0)
        return 1;
    return mode == kMode ? 0 : 2;
}

static int32_t on_link(uint32_t unit, uint32_t port, uint32_t status) {
    (void)unit;
    (void)port;
    (void)status;
    return adp_double_tag_set(2, 1);
}

int call_back(void) {
    if (set_up() != 0 || adp_linkscan_register(on_link) != 0)
        return 1;
    return adp_double_tag_set(1, DRIVER_CALLS_BACK);
}

int keep_errno(void) {
    uint32_t mode = 0;
    if (set_up() != 0)
        return 1;
    errno = kErrno;
    if (adp_double_tag_get(1, &mode) != 0 || errno != kErrno)
        return 2;
    return adp_double_tag_set(1, DRIVER_SETS_ERRNO) == -1 && errno == DRIVER_ERRNO ? 0 : 3;
}

int count_beyond(void) {
    const size_t page = (size_t)sysconf(_SC_PAGESIZE);
    char *pages = mmap(NULL, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED || munmap(pages + page, page) != 0 || set_up() != 0)
        return 1;
    uint32_t *last = (void *)(pages + page - 2 * sizeof *last);
    last[0] = 1;
    last[1] = 2;
    return adp_add_agg_member(ADP_AGG_INTF(9), kManyMembers, last) == -1 ? 0 : 2;
}

int log_values(void) {
    static const char expected[] = "1 two 3.5 4 5 6 7 8 9.25 -1";
    const int32_t result = Log_logging_func(kLevel, kModule, "WORD", "%d %s %.1f %d %d %d %d %d %.2f %lld", 1, "two", 3.5,
                                            4, 5, 6, 7, 8, 9.25, -1LL);
    printf("%s\n", driver_logged());
    return result == kLevel + kModule && strcmp(driver_logged(), expected) == 0 ? 0 : 1;
}

static const struct {
    const char *name;
    int (*run)(void);
} kCommands[] = {
    {"calls", make_calls},     {"callback", call_back}, {"threads", use_threads}, {"cancel", cancel_thread},
    {"signals", interrupt_calls}, {"jump", jump_out},   {"crash", crash},         {"kill", kill_self},
    {"fork", fork_child},      {"exec", execute_other}, {"spawn", spawn_other},   {"daemon", become_daemon},
    {"close", close_all},      {"errno", keep_errno},   {"limit", reach_limit},   {"lower", lower_limit},
    {"count", count_beyond},   {"log", log_values},     {"frames", transfer_frames},
};

int main(int argc, char **argv) {
    for (size_t i = 0; argc > 1 && i < sizeof kCommands / sizeof *kCommands; i++) {
        if (strcmp(argv[1], kCommands[i].name) == 0)
            return kCommands[i].run();
    }
    return argc > 1 ? 1 : 0;
}
