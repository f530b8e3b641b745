/*
 * A small IGMP and MLD snooping agent (RFC 4541): hosts report which multicast groups they join, and the switch
 * delivers the frames of each group to their ports and to those of routers alone, and those of a group without
 * listeners to none.
 *
 *     igmp_snooping [--response-time SECONDS] [--router-age SECONDS] [PORT ...]
 *
 * At first the program asks all hosts, twice, for the groups that they want, and each time gives them the response time
 * to answer, 10 seconds or what is given. Until then all groups are flooded. The switch hands IGMP and MLD to the
 * program alone, which sends queries on to all ports, and reports to the ports where a router was heard during the
 * router age, 255 seconds or what is given.
 *
 * The ports named, if any, are joined into aggregation group 1, which is one listener. At the end of its standard
 * input the program deletes its groups, lets multicast be flooded again, and ends.
 *
 * Some things are missing. After the start the agent sends no queries, so where no router does either a host that
 * disappears without a report stays a listener, and hosts of a VLAN that is made later are not asked. It does not
 * distinguish the sources of a group: a host that wants some of them stays a listener until it reports that it wants
 * none. A router gets the streams that a host wants, but not the others, and one of IPv6 is known by its queries alone.
 */
#include <arpa/inet.h>
#include <errno.h>
#include <getopt.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <poll.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <adp/adp.h>

#include "board.h"
#include "igmp_snooping.h"
#include "multicast_groups.h"
#include "multicast_messages.h"
#include "multicast_relay.h"
#include "multicast_routers.h"

enum {
    kFrameRoom = 10240, /* for the longest frame of the switch */
    kQueries = 2,       /* one and its answers may be lost */
    kTickMs = 100,
    kAllUserPorts = (1 << (ADP_USER_PORTS + 1)) - 2
};

/* What the program was asked for. */
static uint32_t group_ports;
static int64_t response_ms = 10000;
static int64_t router_age_ms = 255000;

/* How far the start has come. */
static int queries_left = kQueries;
static int64_t answered_at; /* when all hosts have answered the last query */
static bool is_dropping;

static int64_t now_ms(void) {
    struct timespec now = {0};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (int64_t)now.tv_sec * 1000 + now.tv_nsec / 1000000;
}

/* All interfaces: the members of the group are not there by themselves. */
static uint32_t everybody(void) {
    return (kAllUserPorts & ~group_ports) | (group_ports == 0 ? 0 : set_of(GROUP));
}

static bool set_unknown_groups(enum adp_mcast_miss action) {
    return succeeded("set what happens to unknown groups", adp_control_ipmc_lookup_miss_action(action)) &&
           succeeded("set what happens to unknown IPv6 groups", adp_control_ip6mc_lookup_miss_action(action));
}

/* Until hosts have answered, groups have listeners that could not say so: those of IPv6 neighbours, for instance. */
static void drop_unknown_groups_in_time(void) {
    if (is_dropping || now_ms() < answered_at)
        return;
    if (queries_left > 0) {
        if (query_hosts(everybody(), (uint32_t)response_ms))
            queries_left--;
        answered_at = now_ms() + response_ms;
        return;
    }
    make_entries();
    is_dropping = set_unknown_groups(ADP_MCAST_MISS_DROP);
    if (is_dropping)
        printf("groups without listeners are dropped\n");
}

static int listen_on_cpu_port(void) {
    struct sockaddr_ll address = {.sll_family = AF_PACKET, .sll_protocol = htons(ETH_P_ALL)};
    const int listener = socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK, 0);
    address.sll_ifindex = get_nic_index("eth0");
    if (listener >= 0 && bind(listener, (const struct sockaddr *)&address, sizeof address) == 0)
        return listener;
    fprintf(stderr, "igmp_snooping: Could not listen on eth0: %s.\n", strerror(errno));
    return -1;
}

/* A port that waits for authorisation (IEEE 802.1X) hands the frames of unknown stations to the CPU. Such a station is
 * not let in, so it is not heard either. */
static bool is_let_in(const struct message *message) {
    uint32_t mode = ADP_LEARN_CLOSED;
    adp_intf_t place = 0;
    if (adp_intf_learn_get(message->intf, &mode) != ADP_OK)
        return false;
    return mode != ADP_LEARN_PENDING ||
           (adp_get_intf_by_addr(message->frame.at + ETH_ALEN, message->vid, &place) == ADP_OK &&
            place == message->intf);
}

static void take_frame(int listener) {
    uint8_t frame[kFrameRoom];
    struct message message;
    struct sockaddr_ll from = {0};
    socklen_t from_size = sizeof from;
    const ssize_t length = recvfrom(listener, frame, sizeof frame, 0, (struct sockaddr *)&from, &from_size);
    if (length <= 0 || from.sll_pkttype == PACKET_OUTGOING || /* sent by this CPU */
        !find_message(frame, (size_t)length, &message) || set_of(message.intf) == 0 || !is_let_in(&message))
        return;
    relay(&message, everybody());
    if (message.is_from_router)
        hear_router(&message, now_ms() + router_age_ms, follow_routers);
    read_wishes(&message, follow);
}

static bool has_input_ended(void) {
    char ignored[64];
    return read(STDIN_FILENO, ignored, sizeof ignored) == 0;
}

static void serve(int listener) {
    struct pollfd sources[] = {{.fd = listener, .events = POLLIN}, {.fd = STDIN_FILENO, .events = POLLIN}};
    do {
        if (sources[0].revents)
            take_frame(listener);
        if (sources[1].revents && has_input_ended())
            return;
        drop_unknown_groups_in_time();
        age_routers(now_ms(), follow_routers);
    } while (poll(sources, sizeof sources / sizeof *sources, kTickMs) >= 0 || errno == EINTR);
}

static bool form_group(void) {
    return group_ports == 0 || (succeeded("create the group", adp_create_agg_group(GROUP)) &&
                                succeeded("configure its members", adp_add_agg_standby_member(GROUP, group_ports, 0)) &&
                                succeeded("add its members", adp_add_agg_member_by_map(GROUP, group_ports, 0)));
}

/* The two calls of start-up clear the switch's groups and have IGMP and MLD handed to the CPU. */
static bool start_snooping(void) {
    return set_unknown_groups(ADP_MCAST_MISS_FLOOD) && succeeded("snoop IGMP", adp_igmp_init()) &&
           succeeded("snoop MLD", ipv6_user_init());
}

/* Does what it can, whatever fails. */
static bool tidy_up(void) {
    static const uint32_t kControls[] = {ADP_CONTROL_MLD, ADP_CONTROL_IGMP, ADP_CONTROL_LOCAL_GROUPS};
    bool good = delete_groups();
    good &= set_unknown_groups(ADP_MCAST_MISS_FLOOD);
    for (size_t i = 0; i < sizeof kControls / sizeof *kControls; i++)
        good &= succeeded("turn a trap off", adp_set_vlan_igmp_pkt_action(kControls[i], 0));
    return (group_ports == 0 || succeeded("delete the group", adp_delete_agg_group(GROUP))) && good;
}

/* Seconds, of which a tenth counts. */
static bool read_seconds(const char *text, double most, int64_t *milliseconds) {
    char *end = NULL;
    const double seconds = strtod(text, &end);
    *milliseconds = seconds >= 0.1 && seconds <= most ? (int64_t)(seconds * 1000) : 0;
    return end != text && *end == '\0' && *milliseconds != 0;
}

static bool read_ports(int count, char **words) {
    for (int i = 0; i < count; i++) {
        char *end = NULL;
        const unsigned long port = strtoul(words[i], &end, 10);
        if (*end != '\0' || port < 1 || port > ADP_USER_PORTS || count > ADP_AGG_ACTIVE_MAX)
            return false;
        group_ports |= BIT(port);
    }
    return true;
}

static bool read_command_line(int argc, char **argv) {
    static const struct option kOptions[] = {
        {"response-time", required_argument, NULL, 'r'}, {"router-age", required_argument, NULL, 'a'}, {0}};
    bool good = true;
    for (int option = 0; good && (option = getopt_long(argc, argv, "", kOptions, NULL)) != -1;)
        good = (option == 'r' && read_seconds(optarg, 12, &response_ms)) ||
               (option == 'a' && read_seconds(optarg, 86400, &router_age_ms));
    if (good && read_ports(argc - optind, argv + optind))
        return true;
    fprintf(stderr,
            "usage: igmp_snooping [--response-time SECONDS] [--router-age SECONDS] [PORT ...]\n"
            "A response time of 0.1 to 12 seconds, a router age of up to a day, at most %d user ports from 1 to %d\n",
            ADP_AGG_ACTIVE_MAX, ADP_USER_PORTS);
    return false;
}

int main(int argc, char **argv) {
    if (!read_command_line(argc, argv))
        return 2;
    setvbuf(stdout, NULL, _IOLBF, 0);
    const int listener = listen_on_cpu_port();
    if (listener < 0 || !prepare_to_send() || !succeeded("set up the port map", set_up_board()) || !form_group())
        return 1;
    bool good = start_snooping();
    if (good) {
        printf("ready\n");
        serve(listener);
    }
    good &= tidy_up();
    printf("ended\n");
    return good ? 0 : 1;
}
