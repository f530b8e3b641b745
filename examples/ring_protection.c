/*
 * A small ring-protection agent, after ITU-T G.8032: of the two ports that connect a switch to a ring, one is blocked,
 * so that the ring is no loop. When the other one loses its link, that one is blocked in its place.
 *
 *     ring_protection owner BLOCKED_PORT OTHER_PORT
 *     ring_protection transit PORT PORT
 *
 * One switch of a ring, the owner, blocks a port, at first the one named first. On the others, in transit, the agent
 * only deletes the addresses that were learned on the ring ports when the link of one changes. When a link comes back
 * the blocked port stays: a second change would be a second outage without benefit.
 *
 * Two processes share the work, as on a device. The link watcher is called by the driver's link scan and posts a
 * link-event message for each change; it makes no other calls. The agent reads the messages from the ring-protection
 * queue and sets the ports. It ends, and its watcher with it, on SIGTERM, SIGINT or the end of its standard input.
 * The port stays blocked: otherwise the ring would be a loop.
 *
 * Messages between switches are missing. An owner knows of its own links alone, and a switch whose links do not change
 * keeps addresses in the old direction until their hosts send frames or they age.
 */
#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <adp/adp.h>

#include <adp/platform/device_services.h>
#include <adp/vdevice/vdev_equeue.h>
#include <adp/vdevice/vdev_linkscan.h>
#include "board.h"

enum { kBlocking = 1, kForwarding = 4 }; /* the chip's port states */
enum { kFirst = 0, kSecond = 1, kRingPorts = 2 };
enum { kRecordPort = 2, kRecordStatus = 3 }; /* fields of a link event's record */
enum { kLookAroundMs = 50, kMostStaleMessages = 4096 };

struct ring {
    adp_intf_t port[kRingPorts];
    bool is_up[kRingPorts];
    bool is_owner;
    int blocked; /* place of the owner's blocked port */
};

static volatile sig_atomic_t asked_to_end;

static bool succeeded(const char *what, adp_status_t status) {
    if (status == ADP_OK)
        return true;
    fprintf(stderr, "ring_protection: Could not %s: the answer was %d.\n", what, (int)status);
    return false;
}

static bool system_failed(const char *what) {
    fprintf(stderr, "ring_protection: Could not %s: %s.\n", what, strerror(errno));
    return false;
}

static void end_on_signal(int number) {
    (void)number;
    asked_to_end = 1;
}

/* The link watcher. */

/* On the link scan's thread, first for what each port is. The queue's positive result is success. */
static int32_t post_change(uint32_t unit, uint32_t port, uint32_t status) {
    return adp_link_event_fast_send_unicast_msg(unit, port, (int32_t)status) > 0 ? 0 : -1;
}

/* Runs until the other end of the pipe is closed, which happens however the agent ends. */
static int watch_links(int pipe_end) {
    char ignored = 0;
    if (!succeeded("set up the watcher's port map", set_up_board()) ||
        !succeeded("register the handler of link changes", adp_linkscan_register(post_change)) ||
        !succeeded("register with the driver's link scan", vdev_linkscan_register(linkscan_handle_cb)))
        return 1;
    while (read(pipe_end, &ignored, 1) < 0 && errno == EINTR)
        continue;
    return vdev_linkscan_register(NULL) == 0 ? 0 : 1;
}

/* Made before the agent fills the library's tables: each process has its own. */
static pid_t start_watcher(int *pipe_end) {
    int ends[2];
    if (pipe(ends) != 0)
        return -1;
    const pid_t watcher = fork();
    if (watcher == 0) {
        close(ends[1]);
        signal(SIGINT, SIG_IGN); /* a terminal sends it to both; the pipe ends the watcher */
        _exit(watch_links(ends[0]));
    }
    close(ends[0]);
    *pipe_end = ends[1];
    return watcher;
}

/* Leaves its exit status to end_watcher(). */
static bool is_watcher_alive(pid_t watcher) {
    siginfo_t info;
    memset(&info, 0, sizeof info);
    if (waitid(P_PID, (id_t)watcher, &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == 0)
        return true;
    fprintf(stderr, "ring_protection: The link watcher has ended.\n");
    return false;
}

static bool end_watcher(pid_t watcher, int pipe_end) {
    int status = 0;
    close(pipe_end);
    while (waitpid(watcher, &status, 0) < 0)
        if (errno != EINTR)
            return system_failed("wait for the link watcher");
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/* The agent. */

static bool set_state(adp_intf_t port, uint32_t state) {
    return succeeded("set a ring port's state", adp_set_port_erps_state(port, state));
}

/* One port is blocked before the other is released: between the two the ring is cut twice, and never closed. */
static bool put_block(struct ring *ring, int place) {
    ring->blocked = place;
    return set_state(ring->port[place], kBlocking) && set_state(ring->port[1 - place], kForwarding);
}

/* A change of a port's state forgets nothing, and what was behind one ring port may now be behind the other. */
static bool forget_addresses(const struct ring *ring) {
    bool good = true;
    for (int place = kFirst; place < kRingPorts; place++)
        good &=
            succeeded("forget a ring port's addresses", adp_del_mac_addr_by_intf(ring->port[place], ADP_MAC_DYNAMIC));
    return good;
}

static void print_block(const struct ring *ring) {
    if (ring->is_owner)
        printf("port %u is blocked\n", (unsigned)ring->port[ring->blocked]);
    else
        printf("no port is blocked\n");
}

static int place_of(const struct ring *ring, adp_intf_t port) {
    for (int place = kFirst; place < kRingPorts; place++)
        if (ring->port[place] == port)
            return place;
    return -1;
}

/* A blocked port with a link is released when the other port has no link. */
static bool is_block_misplaced(const struct ring *ring) {
    return ring->is_owner && ring->is_up[ring->blocked] && !ring->is_up[1 - ring->blocked];
}

static bool handle_change(struct ring *ring, int place, bool is_up) {
    if (ring->is_up[place] == is_up)
        return true;
    ring->is_up[place] = is_up;
    bool good = !is_block_misplaced(ring) || put_block(ring, 1 - ring->blocked);
    good &= forget_addresses(ring);
    printf("port %u %s: ", (unsigned)ring->port[place], is_up ? "up" : "down");
    print_block(ring);
    return good;
}

/* The agent ends when the queue fails, or its watcher ends: it could protect nothing. */
static bool receive_change(struct ring *ring, int32_t timeout_ms, bool *received) {
    uint32_t message[VDEV_EQUEUE_WORDS];
    uint16_t record[VDEV_EQUEUE_RECORD_FIELDS];
    const int32_t result = vdev_equeue_receive(erps_event_queue, message, record, timeout_ms);
    *received = result == 1;
    if (result < 0)
        return succeeded("read the ring-protection queue", result);
    const int place = *received ? place_of(ring, record[kRecordPort]) : -1;
    return place < 0 || handle_change(ring, place, record[kRecordStatus] == 1);
}

/* Unread messages are older than the first ones of the watcher, and outdated. */
static bool drop_stale_messages(void) {
    struct ring nobody = {.port = {0, 0}};
    bool received = true;
    for (int count = 0; received && count < kMostStaleMessages; count++)
        if (!receive_change(&nobody, 0, &received))
            return false;
    return true;
}

static bool has_input_ended(void) {
    struct pollfd input = {.fd = STDIN_FILENO, .events = POLLIN};
    char ignored[64];
    return poll(&input, 1, 0) > 0 && read(STDIN_FILENO, ignored, sizeof ignored) == 0;
}

static bool serve(struct ring *ring, pid_t watcher) {
    bool received = false;
    while (!asked_to_end && !has_input_ended())
        if (!is_watcher_alive(watcher) || !receive_change(ring, kLookAroundMs, &received))
            return false;
    return true;
}

static bool protect(struct ring *ring, pid_t watcher) {
    if (!succeeded("set up the port map", set_up_board()))
        return false;
    const bool is_set = ring->is_owner
                            ? put_block(ring, kFirst)
                            : set_state(ring->port[kFirst], kForwarding) && set_state(ring->port[kSecond], kForwarding);
    if (!is_set || !forget_addresses(ring))
        return false;
    printf("ready: ");
    print_block(ring);
    return serve(ring, watcher);
}

static bool take_signals(void) {
    const struct sigaction action = {.sa_handler = end_on_signal};
    return (sigaction(SIGTERM, &action, NULL) == 0 && sigaction(SIGINT, &action, NULL) == 0) ||
           system_failed("set up signals");
}

static bool read_port(const char *text, adp_intf_t *port) {
    char *end = NULL;
    const unsigned long number = strtoul(text, &end, 10);
    if (end == text || *end != '\0' || number < 1 || number > ADP_USER_PORTS)
        return false;
    *port = (adp_intf_t)number;
    return true;
}

static bool read_ring(int count, char **words, struct ring *ring) {
    if (count == 3 && (strcmp(words[0], "owner") == 0 || strcmp(words[0], "transit") == 0) &&
        read_port(words[1], &ring->port[kFirst]) && read_port(words[2], &ring->port[kSecond]) &&
        ring->port[kFirst] != ring->port[kSecond]) {
        ring->is_owner = strcmp(words[0], "owner") == 0;
        return true;
    }
    fprintf(stderr,
            "usage: ring_protection owner BLOCKED_PORT OTHER_PORT\n       ring_protection transit PORT PORT\n"
            "Protects the ring of two user ports, which are 1 to %d.\n",
            ADP_USER_PORTS);
    return false;
}

int main(int argc, char **argv) {
    struct ring ring = {.is_up = {true, true}};
    int pipe_end = -1;

    if (!read_ring(argc - 1, argv + 1, &ring))
        return 2;
    setvbuf(stdout, NULL, _IOLBF, 0);
    if (!drop_stale_messages())
        return 1;
    const pid_t watcher = start_watcher(&pipe_end);
    if (watcher < 0 || !take_signals())
        return system_failed("start the link watcher") ? 0 : 1;
    bool good = protect(&ring, watcher);
    good &= end_watcher(watcher, pipe_end);
    printf("ended\n");
    return good ? 0 : 1;
}
