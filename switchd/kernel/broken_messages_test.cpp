// Messages that were cut, and octets that were overwritten: nothing outside is read, and nothing is left over.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <set>

#include "switchd/kernel/reader.h"
#include "switchd/kernel/testing/compose.h"

namespace switchd {
namespace broken_messages_test {

using namespace test;

constexpr int kBridge = 10;
constexpr int kPort = 1;
constexpr Mac kMac{2, 0, 0, 0, 0, 1};

/** One message of each kind. */
Bytes one_of_each() {
    const Put three_vlans = [](MessageWriter &writer) {
        vlan(1, BRIDGE_VLAN_INFO_PVID)(writer);
        vlan(2, BRIDGE_VLAN_INFO_RANGE_BEGIN)(writer);
        vlan(4, BRIDGE_VLAN_INFO_RANGE_END)(writer);
    };
    return bridge(kBridge, "br100", octet(IFLA_BR_MCAST_SNOOPING, 1)) + port(kPort, "swp1", kBridge) +
           member(kPort, kBridge, octet(IFLA_BRPORT_STATE, 3), three_vlans) + address({kPort, kBridge, kMac}) +
           group({ipv4_group(kBridge, 1), kPort, 0, {192, 0, 2, 1}}) + router_port(kBridge, kPort) +
           address({kPort, kBridge, kMac}, RTM_DELNEIGH) + member_gone(kPort, kBridge) + link_gone(kBridge);
}

/** Applied from a block of its own, so that the sanitizer finds every read outside. */
void apply_and_remove(const Bytes &octets) {
    Reader reader;
    const Bytes copy(octets);
    reader.apply(copy);
    std::set<int> indices;
    for (const auto &[index, link] : reader.state().links) {
        ASSERT_FALSE(link.name.empty());
        ASSERT_LT(link.name.size(), size_t{IFNAMSIZ});
        indices.insert(index);
    }
    for (const auto &[key, known] : reader.state().addresses) {
        indices.insert({key.bridge, known.interface});
    }
    for (const auto &[key, members] : reader.state().groups) {
        indices.insert(key.bridge);
        ASSERT_FALSE(members.empty());
    }
    for (const auto &[at, ports] : reader.state().router_ports) {
        indices.insert(at);
        ASSERT_FALSE(ports.empty());
    }
    for (const int index : indices) {
        reader.apply(link_gone(index));
    }
    ASSERT_EQ(reader.state(), KernelState{});
}

TEST(BrokenMessageTest, CutAtEveryOctet) {
    const Bytes whole = one_of_each();
    for (size_t length = 0; length <= whole.size(); ++length) {
        apply_and_remove(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length)));
    }
}

TEST(BrokenMessageTest, EachOctetOverwritten) {
    const Bytes whole = one_of_each();
    for (size_t place = 0; place < whole.size(); ++place) {
        for (const uint8_t other : Bytes{0x00, 0x01, 0x03, 0x10, 0x7F, 0x80, 0xFF}) {
            Bytes octets = whole;
            octets[place] = other;
            apply_and_remove(octets);
        }
    }
}

TEST(BrokenMessageTest, RandomOctetsInRandomPlaces) {
    std::mt19937 random{7};
    const Bytes whole = one_of_each();
    for (int round = 0; round < 3000; ++round) {
        Bytes octets = whole;
        for (size_t count = random() % 16; count > 0; --count) {
            octets[random() % octets.size()] = static_cast<uint8_t>(random());
        }
        apply_and_remove(octets);
    }
}

}  // namespace broken_messages_test
}  // namespace switchd
