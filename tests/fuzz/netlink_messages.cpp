// Datagrams of netlink messages, with any octets: tables stay bounded and whole, and what is known of an interface goes
// with it.
//
// Input: datagrams, each a length and as many octets, in the byte order of the machine.
#include <linux/if_bridge.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>

#include <set>

#include "switchd/kernel/reader.h"
#include "tests/fuzz/fuzz.h"

namespace {

using fuzz::Bytes;
using fuzz::expect;
using switchd::KernelState;
using switchd::Reader;

constexpr Reader::Limits kLimits{.links = 8, .addresses = 8, .groups = 4, .memberships = 8};

/** Every interface that is told of. */
std::set<int> interfaces_in(const KernelState &state) {
    std::set<int> interfaces;
    for (const auto &[index, link] : state.links) {
        interfaces.insert(index);
    }
    for (const auto &[key, address] : state.addresses) {
        interfaces.insert({key.bridge, address.interface});
    }
    for (const auto &[key, ports] : state.groups) {
        interfaces.insert(key.bridge);
        interfaces.insert(ports.begin(), ports.end());
        expect(!ports.empty(), "a group has ports");
    }
    for (const auto &[bridge, ports] : state.router_ports) {
        interfaces.insert(bridge);
        interfaces.insert(ports.begin(), ports.end());
        expect(!ports.empty(), "a bridge in the list has router ports");
    }
    return interfaces;
}

void check(const KernelState &state) {
    constexpr uint16_t kVids = 4096;
    expect(state.links.size() <= kLimits.links && state.addresses.size() <= kLimits.addresses &&
               state.groups.size() <= kLimits.groups,
           "no table is larger than its limit");
    for (const auto &[index, link] : state.links) {
        expect(!link.name.empty() && link.name.size() < IFNAMSIZ, "an interface has a name");
        expect(link.master != index, "no interface is its own bridge");
        for (const auto &vlan : link.vlans) {
            expect(vlan.vid > 0 && vlan.vid < kVids - 1, "a VLAN has a number");
        }
    }
    for (const int interface : interfaces_in(state)) {
        expect(interface > 0, "an interface has an index");
    }
}

void remove(Reader &reader, int interface) {
    switchd::netlink::MessageWriter writer;
    writer.begin(RTM_DELLINK, 0, 0);
    ifinfomsg info{};
    info.ifi_family = AF_UNSPEC;
    info.ifi_index = interface;
    writer.add(info);
    reader.apply(writer.octets());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input input(data, size);
    Reader reader{kLimits};
    while (!input.is_empty()) {
        Bytes datagram = input.bytes(input.u16());
        datagram.shrink_to_fit();
        const KernelState before = reader.state();
        const bool changed = reader.apply(datagram);
        expect(changed || reader.state() == before, "a change is told");
        check(reader.state());
    }
    for (const int interface : interfaces_in(reader.state())) {
        remove(reader, interface);
        expect(!interfaces_in(reader.state()).contains(interface), "nothing is left of an interface that is gone");
    }
    expect(reader.state() == KernelState{}, "nothing is left");
    return 0;
}
