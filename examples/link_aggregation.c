/*
 * A small management daemon: it joins user ports to aggregation group 1 and maintains the group when cables are
 * pulled and plugged in.
 *
 *     link_aggregation PORT [PORT ...]
 *
 * The group's ports carry VLAN 100 tagged; every other user port leads to a host and carries it untagged. The driver's
 * link scan reports changes on a thread of its own. The library takes no locks, so that thread only writes each change
 * into a pipe, and the main thread alone calls the library. The program ends, and takes the group down with it, on
 * SIGTERM, SIGINT or the end of its standard input.
 */
#define _GNU_SOURCE /* ppoll */
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <adp/adp.h>

#include <adp/vdevice/vdev_linkscan.h>
#include "board.h"

enum {
    kVlan = 100,
    kDefaultVlan = 1,
    kGroupNumber = 1,
    kBalanceBothAddresses = 3, /* a flow's member depends on its source and its destination */
    kAllUserPorts = (1 << (ADP_USER_PORTS + 1)) - 2
};

#define GROUP ADP_AGG_INTF(kGroupNumber)
#define SET(port) (1u << (port))

/* A change on its way from the link scan's thread to the main thread: shorter than PIPE_BUF, so written whole. */
struct link_change {
    uint32_t unit;
    uint32_t port; /* physical */
    uint32_t status;
};

static int change_pipe[2] = {-1, -1};
static volatile sig_atomic_t asked_to_end;
static bool group_was_up;
static enum { kUntold, kToldDown, kToldUp } last_told[ADP_USER_PORTS + 1];

static bool succeeded(const char *what, adp_status_t status) {
    if (status == ADP_OK)
        return true;
    fprintf(stderr, "link_aggregation: Could not %s: the answer was %d.\n", what, (int)status);
    return false;
}

static const char *up_or_down(bool is_up) {
    return is_up ? "up" : "down";
}

static void end_on_signal(int number) {
    (void)number;
    asked_to_end = 1;
}

static bool is_group_up(void) {
    uint32_t state = 0;
    return adp_get_agg_link_staus(kGroupNumber, &state) == ADP_OK && state == 1;
}

/* Runs inside the library's calls, so on the main thread. An event names a group; its state is asked for. */
static int32_t on_group_event(const adp_agg_event_t *event) {
    if (event->word[16 + kGroupNumber - 1] != GROUP)
        return 0;
    const bool is_up = is_group_up();
    printf("group %d %s %s\n", kGroupNumber, is_up == group_was_up ? "is still" : "went", up_or_down(is_up));
    group_was_up = is_up;
    return 0;
}

/* Runs on the link scan's thread, through linkscan_handle_cb. */
static int32_t on_link_scan(uint32_t unit, uint32_t port, uint32_t status) {
    const struct link_change change = {unit, port, status};
    return write(change_pipe[1], &change, sizeof change) == (ssize_t)sizeof change ? 0 : -1;
}

static bool set_pvid(uint32_t ports, uint32_t vlan) {
    adp_status_t status = ADP_OK;
    for (adp_intf_t port = 1; status == ADP_OK && port <= ADP_USER_PORTS; port++)
        if (ports & SET(port))
            status = adp_intf_pivd_set(port, vlan);
    return succeeded("set the host ports' VLAN", status);
}

static bool create_vlan(uint32_t group_ports) {
    const uint32_t host_ports = kAllUserPorts & ~group_ports;
    const adp_ports_t members = {kAllUserPorts};
    const adp_ports_t untagged = {host_ports};
    return succeeded("create the VLAN", adp_vlan_create(kVlan)) &&
           succeeded("set the VLAN's ports", adp_vlan_port_set(kVlan, members, untagged)) &&
           set_pvid(host_ports, kVlan);
}

/* The link scan is registered before the members are added: what changes meanwhile waits in the pipe. */
static bool watch_links(void) {
    if (pipe(change_pipe) != 0 || fcntl(change_pipe[0], F_SETFL, O_NONBLOCK) != 0) {
        fprintf(stderr, "link_aggregation: Could not make a pipe: %s.\n", strerror(errno));
        return false;
    }
    return succeeded("register the handler of link changes", adp_linkscan_register(on_link_scan)) &&
           succeeded("register with the driver's link scan", vdev_linkscan_register(linkscan_handle_cb));
}

static bool create_group(uint32_t ports) {
    return succeeded("register for group events", adp_register_agg_event_cb(on_group_event)) &&
           succeeded("create the group", adp_create_agg_group(GROUP)) &&
           succeeded("set the group's load balancing", adp_set_agg_loadbalance(GROUP, kBalanceBothAddresses)) &&
           succeeded("configure the group's members", adp_add_agg_standby_member(GROUP, ports, 0)) &&
           succeeded("add the group's members", adp_add_agg_member_by_map(GROUP, ports, 0));
}

/* What the group is after the event just told; the end of each event's line. */
static void print_group(void) {
    adp_intf_t port = 0;
    if (GET_AGG_MANAGE_INTF(GROUP, &port) != ADP_OK)
        port = 0;
    printf("group %d is %s, ", kGroupNumber, up_or_down(is_group_up()));
    if (port == 0)
        printf("without a management port\n");
    else
        printf("management port %u\n", (unsigned)port);
}

/*
 * The link scan also tells what is: when it begins, and when it has missed changes. What it tells first was before the
 * group was made, and the group has read its links itself.
 */
static bool is_change(int32_t intf, bool is_up) {
    const bool is_first = last_told[intf] == kUntold;
    const bool was_up = last_told[intf] == kToldUp;
    last_told[intf] = is_up ? kToldUp : kToldDown;
    return !is_first && was_up != is_up;
}

static void handle_change(const struct link_change *change) {
    const int32_t intf = adp_phy_2_intf_id(change->port);
    const bool is_up = change->status == 1;
    uint32_t changed = 0;

    if (intf < 1 || intf > ADP_USER_PORTS) /* the CPU's own port, or one that the board does not use */
        return;
    if (!is_change(intf, is_up))
        return;
    adp_link_event_handle_cb(change->unit, change->port, (int32_t)change->status);
    succeeded("note the time of the change", adp_set_port_last_change((adp_intf_t)intf));
    succeeded("make the group follow its port", adp_agg_linkscan_handle((adp_intf_t)intf, is_up, &changed));
    printf("port %d %s: ", (int)intf, up_or_down(is_up));
    print_group();
}

static void handle_changes(void) {
    struct link_change change;
    while (read(change_pipe[0], &change, sizeof change) == (ssize_t)sizeof change)
        handle_change(&change);
}

static bool has_input_ended(void) {
    char ignored[64];
    return read(STDIN_FILENO, ignored, sizeof ignored) == 0;
}

/* Signals get through only while the program waits, so none is missed between a look at the flag and the wait. */
static bool serve(const sigset_t *while_waiting) {
    struct pollfd sources[] = {{.fd = change_pipe[0], .events = POLLIN}, {.fd = STDIN_FILENO, .events = POLLIN}};
    while (!asked_to_end) {
        if (ppoll(sources, sizeof sources / sizeof *sources, NULL, while_waiting) < 0) {
            if (errno == EINTR)
                continue;
            fprintf(stderr, "link_aggregation: Could not wait for changes: %s.\n", strerror(errno));
            return false;
        }
        if (sources[0].revents)
            handle_changes();
        if (sources[1].revents && has_input_ended())
            break;
    }
    return true;
}

/* Before the link scan is registered, so that its thread leaves these signals to the main thread. */
static bool take_signals(sigset_t *previous) {
    struct sigaction action = {.sa_handler = end_on_signal};
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGTERM);
    sigaddset(&ending, SIGINT);
    if (sigprocmask(SIG_BLOCK, &ending, previous) == 0 && sigaction(SIGTERM, &action, NULL) == 0 &&
        sigaction(SIGINT, &action, NULL) == 0)
        return true;
    fprintf(stderr, "link_aggregation: Could not set up signals: %s.\n", strerror(errno));
    return false;
}

/* Does what it can, whatever fails. */
static bool tidy_up(uint32_t ports) {
    vdev_linkscan_register(NULL);
    adp_linkscan_register(NULL);
    adp_register_agg_event_cb(NULL);
    bool good = succeeded("remove the group's members", adp_del_agg_member_by_map(GROUP, ports, 0));
    good &= succeeded("delete the group", adp_delete_agg_group(GROUP));
    good &= set_pvid(kAllUserPorts & ~ports, kDefaultVlan);
    good &= succeeded("remove the VLAN", adp_vlan_destroy(kVlan));
    return good;
}

static bool read_port(const char *text, uint32_t *ports) {
    char *end = NULL;
    const unsigned long port = strtoul(text, &end, 10);
    if (end == text || *end != '\0' || port < 1 || port > ADP_USER_PORTS) {
        fprintf(stderr, "link_aggregation: '%s' is no user port; they are 1 to %d.\n", text, ADP_USER_PORTS);
        return false;
    }
    *ports |= SET(port);
    return true;
}

static bool read_ports(int count, char **words, uint32_t *ports) {
    if (count < 1 || count > ADP_AGG_ACTIVE_MAX) {
        fprintf(stderr, "usage: link_aggregation PORT [PORT ...]\nJoins 1 to %d user ports into group %d.\n",
                ADP_AGG_ACTIVE_MAX, kGroupNumber);
        return false;
    }
    for (int i = 0; i < count; i++)
        if (!read_port(words[i], ports))
            return false;
    return true;
}

int main(int argc, char **argv) {
    uint32_t ports = 0;
    sigset_t previous;

    if (!read_ports(argc - 1, argv + 1, &ports))
        return 2;
    setvbuf(stdout, NULL, _IOLBF, 0);
    if (!take_signals(&previous) || !succeeded("set up the port map", set_up_board()) || !create_vlan(ports) ||
        !watch_links() || !create_group(ports))
        return 1;
    printf("ready: ");
    print_group();
    bool good = serve(&previous);
    good &= tidy_up(ports);
    printf("ended\n");
    return good ? 0 : 1;
}
