// For the daemon's tests: a management program that makes the call named on its command line and prints its result.
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/device_services.h"
#include "platform/netlink_api.h"
#include "vdevice/remote/vdev_linkscan.h"
#include "vdevice/services/vdev_equeue.h"

namespace {

using Numbers = std::vector<int>;

uint32_t word(int number) {
    return static_cast<uint32_t>(number);
}

int32_t tell(uint32_t unit, uint32_t port, const uint32_t info[VDEV_LINKSCAN_WORDS]) {
    constexpr double kNanoseconds = 1e9;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    std::printf("%.6f %u %u %u %u %u %u\n",
                static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / kNanoseconds, unit, port, info[0],
                info[1], info[2], info[3]);
    std::fflush(stdout);
    return 0;
}

/** Watches the links until its standard input ends. */
int32_t watch(const Numbers & /*none*/) {
    std::printf("%d\n", vdev_linkscan_register(tell));
    std::fflush(stdout);
    char octet = 0;
    while (read(STDIN_FILENO, &octet, sizeof octet) > 0) {
    }
    return 0;
}

int32_t make_trunk(const Numbers &ports) {
    adp_agg_record_t record = {};
    for (const int port : ports) {
        record.ports[record.count++] = static_cast<uint8_t>(port);
    }
    const int32_t created = user_trunk_create_id(0, 0, 0);
    return created != 0 ? created : user_trunk_set(0, 0, 0, record);
}

int32_t send_event(const Numbers & /*none*/) {
    static const uint16_t record[VDEV_EQUEUE_RECORD_FIELDS] = {0, 29, 26, 1};
    const uintptr_t message[DEVICE_MESSAGE_WORDS] = {1, 77, 1, 0, 0, 0, 0, reinterpret_cast<uintptr_t>(record)};
    return equeue_send_ucast(erps_event_queue, message, DEVICE_WAIT_FOREVER);
}

int32_t receive_event(const Numbers & /*none*/) {
    uint32_t message[VDEV_EQUEUE_WORDS] = {};
    uint16_t record[VDEV_EQUEUE_RECORD_FIELDS] = {};
    const int32_t result = vdev_equeue_receive(erps_event_queue, message, record, 0);
    for (const uint32_t value : message) {
        std::printf("%u ", value);
    }
    for (const unsigned value : record) {
        std::printf("%u ", value);
    }
    return result;
}

int32_t write_register(const Numbers &numbers) {
    const uint32_t value = word(numbers.at(1));
    return user_pci_write(0, 0, word(numbers.at(0)), &value);
}

/** Prints the value in front of the result. */
int32_t read_register(const Numbers &numbers) {
    uint32_t value = 0;
    const int32_t result = user_pci_read(0, 0, word(numbers.at(0)), &value);
    std::printf("%u ", value);
    return result;
}

int32_t reserve_address(const Numbers &numbers) {
    uint8_t mac[NETLINK_MAC_BYTES] = {};
    for (size_t i = 0; i < sizeof mac; ++i) {
        mac[i] = static_cast<uint8_t>(numbers.at(i + 1));
    }
    return user_l2_bpdu_set(0, 0, word(numbers.at(0)), mac);
}

/** An entry of group 3 for one ingress port and UDP, with one action of a word and a second one. */
int32_t make_rule(const Numbers &numbers) {
    const uint32_t entry = word(numbers.at(0));
    const adp_port_set_t ports = {{1U << numbers.at(1)}};
    const uint32_t param[NETLINK_ACTION_PARAM_BYTES / sizeof(uint32_t)] = {word(numbers.at(3))};
    const uint32_t param2[NETLINK_ACTION_PARAM_BYTES / sizeof(uint32_t)] = {word(numbers.at(4))};
    constexpr int32_t kGroup = 3;
    constexpr uint32_t kUdp = 17;
    return user_field_entry_create_id(0, 0, kGroup, entry) | user_field_entry_prio_set(0, 0, entry, 1) |
           user_field_qualify_InPorts(0, 0, entry, ports, ports) |
           user_field_qualify_IpProtocol(0, 0, entry, kUdp, UINT32_MAX) |
           user_field_action_add(0, 0, entry, word(numbers.at(2)), reinterpret_cast<const uint8_t *>(param),
                                 reinterpret_cast<const uint8_t *>(param2)) |
           user_field_entry_install(0, 0, entry);
}

/** Prints the value in front of the result. */
int32_t read_field_counter(const Numbers &numbers) {
    int32_t count = 0;
    const int32_t result = user_field_get_statistics(0, 0, numbers.at(0), numbers.at(1), &count);
    std::printf("%d ", count);
    return result;
}

/** Flags, port and trunk of an entry for the address 02:00:00:00:00:NUMBER in VLAN 1. */
int32_t add_address(const Numbers &numbers) {
    constexpr uint8_t kLocal = 2;
    adp_l2_entry_t entry = {};
    entry.mac[0] = kLocal;
    entry.mac[NETLINK_MAC_BYTES - 1] = static_cast<uint8_t>(numbers.at(0));
    entry.vid = 1;
    entry.flags = word(numbers.at(1));
    entry.port = numbers.at(2);
    entry.trunk = numbers.at(3);
    return user_mac_addr_add(0, entry);
}

/** Makes the group 01:00:5e:01:01:01 of VLAN 1 of front ports, then prints the chip ports it has as a word. */
int32_t make_group(const Numbers &front_ports) {
    static const uint8_t key[NETLINK_MAC_KEY_BYTES] = {1, 0, 0x5E, 1, 1, 1};
    netlink_mcast_entry_t entry = {};
    User_mcast_addr_t_init(0, &entry, key, 1);
    for (const int port : front_ports) {
        entry.ports[0] |= 1U << port;
    }
    const int32_t result = User_mcast_addr_add(0, 0, &entry);
    User_mcast_port_get(0, 0, key, 1, &entry);
    std::printf("%u %u ", entry.index, entry.ports[0]);
    return result;
}

/** Sets a limit by scope flags, VLAN, port, trunk and limit. */
int32_t set_limit(const Numbers &numbers) {
    netlink_learn_limit_t limit = {};
    limit.flags = word(numbers.at(0));
    limit.vid = static_cast<uint16_t>(numbers.at(1));
    limit.port = numbers.at(2);
    limit.trunk = numbers.at(3);
    limit.limit = word(numbers.at(4));
    return user_mac_learn_limit_set(0, limit);
}

/** Makes a spanning-tree group of one VLAN. */
int32_t group_vlan(const Numbers &numbers) {
    const int32_t created = user_stg_create_id(0, 0, numbers.at(0));
    return created != 0 ? created : user_stg_vlan_add(0, 0, numbers.at(0), word(numbers.at(1)));
}

/** A port's double-tag mode and TPID. */
int32_t set_tags(const Numbers &numbers) {
    const int32_t result = user_port_dtag_mode_set(0, 0, numbers.at(0), word(numbers.at(1)));
    return result != 0 ? result : user_port_tpid_set(0, 0, numbers.at(0), word(numbers.at(2)), 0);
}

/** Both ways: the VLAN of the tag on a port, and the VLAN that it is inside. */
int32_t translate(const Numbers &numbers) {
    constexpr adp_word_t kKeepPriority = 0xFFFFFFFF;
    const uint32_t port = word(numbers.at(0));
    const uint32_t outside = word(numbers.at(1));
    const uint32_t inside = word(numbers.at(2));
    const int32_t result = user_vlan_translate_add(0, 0, 0, port, 0, outside, inside, kKeepPriority);
    return result != 0 ? result : user_vlan_translate_egress_add(0, 0, 0, port, inside, outside, kKeepPriority);
}

/** A port of VLAN 1 that gets its frames with a tag. */
int32_t make_tagged_member(const Numbers &numbers) {
    adp_ports_t ports = {};
    ports[0] = 1U << numbers.at(0);
    return user_vlan_port_add(0, 0, 1, ports, nullptr);
}

/** Logs what no terminal should obey, and what looks like a line of the log. */
int32_t log_hostile_text(const Numbers & /*none*/) {
    return Log_logging_func(5, 1, "A\x1b[2J", "%s", "up\n    9.000000  5/0 PORT port1: link down\xc2\x9b\xff");
}

constexpr adp_word_t kSubnet = 0xC0000200;  // 192.0.2.0
constexpr adp_word_t kSubnetMask = 0xFFFFFF00;

const std::map<std::string, std::function<int32_t(const Numbers &)>> kCalls = {
    {"add-address", add_address},
    {"group", make_group},
    {"group-miss", [](const Numbers &n) { return User_switch_ipmc_lookup_miss_action(0, 0, n.at(0), word(n.at(1))); }},
    {"limit", set_limit},
    {"enable", [](const Numbers &n) { return user_port_enable_set(0, 0, n.at(0), word(n.at(1))); }},
    {"log-hostile-text", log_hostile_text},
    {"loopback", [](const Numbers &n) { return user_port_loopback_set(0, 0, n.at(0), word(n.at(1))); }},
    {"trunk", make_trunk},
    {"control", [](const Numbers &n) { return user_switch_control_set(0, 0, word(n.at(0)), word(n.at(1))); }},
    {"mirror",
     [](const Numbers &n) { return user_mirror_port_set(0, 0, n.at(0), word(n.at(1)), n.at(2), word(n.at(3))); }},
    {"write-register", write_register},
    {"read-register", read_register},
    {"reserve", reserve_address},
    {"stp-state", [](const Numbers &n) { return user_stg_stp_set(0, 0, n.at(0), n.at(1), word(n.at(2))); }},
    {"group-vlan", group_vlan},
    {"tags", set_tags},
    {"tagged-only", make_tagged_member},
    {"translate", translate},
    {"service",
     [](const Numbers &n) { return user_vlan_dtag_add(0, 0, 0, n.at(0), 0, word(n.at(1)), 1, word(n.at(2))); }},
    {"subnet",
     [](const Numbers &n) {
         return user_vlan_ip4_add(0, 0, word(n.at(0)), kSubnet, kSubnetMask, 1, word(n.at(1)), 0);
     }},
    {"filter-attacks", [](const Numbers & /*none*/) { return user_dos_attack_prevent_init(0, 0); }},
    {"rule", make_rule},
    {"destroy-rule", [](const Numbers &n) { return user_field_entry_destroy(0, 0, word(n.at(0))); }},
    {"speed", [](const Numbers &n) { return user_port_speed_set(0, 0, n.at(0), word(n.at(1)), 0); }},
    {"shape", [](const Numbers &n) { return user_port_egress_rate_set(0, 0, n.at(0), word(n.at(1)), word(n.at(2))); }},
    {"meter", [](const Numbers &n) { return user_field_meter_entry_set(0, word(n.at(0)), word(n.at(1))); }},
    {"storm-limit",
     [](const Numbers &n) {
         return user_rate_bandwidth_set(0, 0, n.at(0), word(n.at(1)), word(n.at(2)), word(n.at(3)));
     }},
    {"ingress-limit",
     [](const Numbers &n) { return user_port_ingress_rate_set(0, 0, n.at(0), word(n.at(1)), word(n.at(2))); }},
    {"read-field-counter", read_field_counter},
    {"miss", [](const Numbers &n) { return user_field_lookupMissAct_set(0, 0, n.at(0), word(n.at(1))); }},
    {"trust", [](const Numbers &n) { return user_port_dscp_map_mode_set(0, 0, n.at(0), word(n.at(1))); }},
    {"dscp", [](const Numbers &n) { return user_port_dscp_map_set(0, 0, n.at(0), n.at(1), n.at(2), word(n.at(3))); }},
    {"queue", [](const Numbers &n) { return user_cosq_port_mapping_set(0, 0, n.at(0), word(n.at(1)), word(n.at(2))); }},
    {"watch", watch},
    {"send-event", send_event},
    {"receive-event", receive_event},
};

}  // namespace

int main(int argc, char **argv) {
    const auto call = kCalls.find(argc > 1 ? argv[1] : "");
    if (call == kCalls.end()) {
        std::fputs("test_caller: the first argument must name a call.\n", stderr);
        return EXIT_FAILURE;
    }
    Numbers numbers;
    for (int i = 2; i < argc; ++i) {
        numbers.push_back(std::atoi(argv[i]));
    }
    std::printf("%d\n", call->second(numbers));
    return EXIT_SUCCESS;
}
