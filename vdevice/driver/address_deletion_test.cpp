// The delete family: every call picks exactly the entries that its key and mode name.
#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>

#include "vdevice/driver/testing/address_fixture.h"

namespace vdevice::driver {
namespace address_deletion_test {

using namespace std::chrono_literals;
using chip::MacEntry;
using chip::Status;
using namespace test;

constexpr int kPort = 4;
constexpr int kOtherPort = 5;
constexpr int kAny = -1;
constexpr uint64_t kStations = 6;

class DriverMacDelete : public test::MacTest {
  protected:
    using Picks = std::function<bool(const MacEntry &)>;

    /** Each station in both VLANs, at another place in each: every pair of place and kind comes in both VLANs. */
    void populate() {
        chip_.macs().remove_if([](const MacEntry &) { return true; });
        const int places[] = {kPort, kOtherPort, kMember};
        for (uint64_t number = 0; number < kStations; ++number) {
            const uint32_t flags = number % 2 == 0 ? 0U : NETLINK_L2_STATIC;
            add(number, kVid, flags, places[number / 2]);
            add(number, kOtherVid, flags, places[(number / 2 + 1) % 3]);
        }
        ASSERT_EQ(chip_.add_group(test::kGroup, kVid, test::ports({kPort})), Status::kOk);
    }

    void add(uint64_t number, uint32_t vid, uint32_t flags, int port) {
        ASSERT_EQ(driver_.user_mac_addr_add(0, entry(station(number), vid, flags, port)), kOk);
    }

    std::set<std::string> entries(const Picks &picks) const {
        std::set<std::string> found;
        for (const MacEntry &entry : chip_.macs().list()) {
            if (picks(entry)) {
                found.insert(std::to_string(entry.vid) + "/" + std::to_string(entry.mac.value()));
            }
        }
        return found;
    }

    /** Makes the call on a full table: it must succeed and take away what is picked, and nothing else. */
    void expect(const std::string &what, const std::function<int32_t()> &call, const Picks &picks) {
        populate();
        const auto kept = entries([&](const MacEntry &entry) { return entry.is_group() || !picks(entry); });
        const size_t before = chip_.macs().size();
        ASSERT_LT(kept.size(), before) << what << ": the test picks nothing";
        EXPECT_EQ(call(), kOk) << what;
        EXPECT_EQ(entries([](const MacEntry &) { return true; }), kept) << what;
    }

    static bool at_port(const MacEntry &entry) { return entry.port == kPort; }
    static bool at_trunk(const MacEntry &entry) { return entry.trunk == kTrunk; }

    const Key key_ = key_of(station(2));
    const Key static_key_ = key_of(station(3));
    const Key trunk_key_ = key_of(station(4));
    const Key static_trunk_key_ = key_of(station(5));
};

TEST_F(DriverMacDelete, ByMac) {
    expect(
        "dynamic", [&] { return driver_.user_l2_addr_delete_by_mac(0, 0, key_.data(), 0); },
        [](const MacEntry &e) { return e.mac == station(2); });
    expect(
        "static", [&] { return driver_.user_l2_addr_delete_static_by_mac(0, 0, static_key_.data(), 0); },
        [](const MacEntry &e) { return e.mac == station(3); });
    expect(
        "all", [&] { return driver_.user_l2_addr_delete_by_mac(0, 0, static_key_.data(), 1); },
        [](const MacEntry &e) { return e.mac == station(3); });
    populate();
    EXPECT_EQ(driver_.user_l2_addr_delete_by_mac(0, 0, static_key_.data(), 0), kOk);
    EXPECT_EQ(driver_.user_l2_addr_delete_static_by_mac(0, 0, key_.data(), 0), kOk);
    EXPECT_EQ(chip_.macs().size(), 2 * kStations + 1) << "neither address has an entry of that kind";
}

TEST_F(DriverMacDelete, ByPort) {
    expect(
        "dynamic", [&] { return driver_.user_l2_addr_delete_by_port(0, 0, kAny, kPort, 0); },
        [](const MacEntry &e) { return at_port(e) && !e.is_static; });
    expect(
        "static", [&] { return driver_.user_l2_addr_delete_static_by_port(0, 0, kAny, kPort); },
        [](const MacEntry &e) { return at_port(e) && e.is_static; });
    expect(
        "all", [&] { return driver_.user_l2_addr_delete_by_port(0, 0, kAny, kPort, 1); }, at_port);
    expect(
        "a trunk's other member", [&] { return driver_.user_l2_addr_delete_by_port(0, 0, 0, kOtherMember, 1); },
        at_trunk);
}

TEST_F(DriverMacDelete, ByVlanAndPlace) {
    const auto here = [](const MacEntry &e) { return e.vid == kVid && at_port(e); };
    const auto behind_trunk = [](const MacEntry &e) { return e.vid == kVid && at_trunk(e); };
    expect(
        "dynamic", [&] { return driver_.user_l2_addr_delete_by_vlan_port(0, 0, kVid, kAny, kPort, 0); },
        [&](const MacEntry &e) { return here(e) && !e.is_static; });
    expect(
        "static", [&] { return driver_.user_l2_addr_delete_static_by_vlan_port(0, 0, kVid, kPort); },
        [&](const MacEntry &e) { return here(e) && e.is_static; });
    expect(
        "all", [&] { return driver_.user_l2_addr_delete_by_vlan_port(0, 0, kVid, kAny, kPort, 1); }, here);
    expect(
        "trunk, dynamic", [&] { return driver_.user_l2_addr_delete_by_vlan_trunk(0, 0, kVid, kTrunk, 0); },
        [&](const MacEntry &e) { return behind_trunk(e) && !e.is_static; });
    expect(
        "trunk, all", [&] { return driver_.user_l2_addr_delete_by_vlan_trunk(0, 0, kVid, kTrunk, 1); }, behind_trunk);
}

TEST_F(DriverMacDelete, ByMacAndPort) {
    const auto at = [](uint64_t number, int port) {
        return [=](const MacEntry &e) { return e.mac == station(number) && e.port == port; };
    };
    expect(
        "dynamic", [&] { return driver_.user_l2_addr_delete_dynaic_by_mac_port(0, 0, key_.data(), kOtherPort, 77); },
        at(2, kOtherPort));
    expect(
        "static",
        [&] { return driver_.user_l2_addr_delete_static_by_mac_port(0, 0, static_key_.data(), kOtherPort, 77); },
        at(3, kOtherPort));
    expect(
        "all", [&] { return driver_.user_l2_addr_delete_all_by_mac_port(0, 0, static_key_.data(), kOtherPort); },
        at(3, kOtherPort));
    populate();
    EXPECT_EQ(driver_.user_l2_addr_delete_static_by_mac_port(0, 0, key_.data(), kOtherPort, 0), kOk);
    EXPECT_EQ(driver_.user_l2_addr_delete_dynaic_by_mac_port(0, 0, key_.data(), kPort, 0), kOk);
    EXPECT_EQ(chip_.macs().size(), 2 * kStations + 1);
}

TEST_F(DriverMacDelete, OneAddressBehindATrunk) {
    const auto is = [](uint64_t number) {
        return [=](const MacEntry &e) { return e.vid == kVid && e.mac == station(number); };
    };
    expect(
        "dynamic",
        [&] {
            return driver_.user_l2_addr_delete_trunk_dynamic_by_port_mac_vlan(0, 0, trunk_key_.data(), kOtherMember,
                                                                              kVid);
        },
        is(4));
    expect(
        "static",
        [&] {
            return driver_.user_l2_addr_delete_trunk_static_by_port_mac_vlan(0, 0, static_trunk_key_.data(), kMember,
                                                                             kVid);
        },
        is(5));
    for (const uint64_t number : {4U, 5U}) {
        expect(
            "whatever kind",
            [&] {
                return driver_.user_l2_addr_delete_all_dynamic_by_port_mac_vlan(0, 0, key_of(station(number)).data(),
                                                                                kOtherMember, kVid);
            },
            is(number));
    }
    expect(
        "on a port",
        [&] {
            return driver_.user_l2_addr_delete_all_dynamic_by_port_mac_vlan(0, 0, static_key_.data(), kOtherPort, kVid);
        },
        is(3));
}

TEST_F(DriverMacDelete, OneAddressThatIsNotThereIsRefused) {
    populate();
    const auto dynamic = [&](const Key &key, int port, uint32_t vid) {
        return driver_.user_l2_addr_delete_trunk_dynamic_by_port_mac_vlan(0, 0, key.data(), port, vid);
    };
    const auto fixed = [&](const Key &key, int port, uint32_t vid) {
        return driver_.user_l2_addr_delete_trunk_static_by_port_mac_vlan(0, 0, key.data(), port, vid);
    };
    const auto any = [&](const Key &key, int port, uint32_t vid) {
        return driver_.user_l2_addr_delete_all_dynamic_by_port_mac_vlan(0, 0, key.data(), port, vid);
    };
    EXPECT_EQ(dynamic(static_trunk_key_, kMember, kVid), kMacMissing);
    EXPECT_EQ(fixed(trunk_key_, kMember, kVid), kMacMissing);
    EXPECT_EQ(dynamic(trunk_key_, kMember, kOtherVid), kMacMissing) << "there it is on a port";
    EXPECT_EQ(any(trunk_key_, kPort, kVid), kMacMissing);
    EXPECT_EQ(dynamic(trunk_key_, kPort, kOtherVid), chip::code(Status::kTrunkMissing));
    EXPECT_EQ(fixed(trunk_key_, kPort, kOtherVid), chip::code(Status::kTrunkMissing));
    EXPECT_EQ(any(key_of(test::kGroup), kPort, kVid), chip::code(Status::kMacNotUnicast));
    EXPECT_EQ(chip_.macs().size(), 2 * kStations + 1);
}

TEST_F(DriverMacDelete, ByLearnType) {
    expect(
        "dynamic", [&] { return driver_.user_l2_addr_del_all_addr_by_lrntype(0, 0, 0); },
        [](const MacEntry &e) { return !e.is_static; });
    expect(
        "static", [&] { return driver_.user_l2_addr_del_all_addr_by_lrntype(0, 0, 0x101); },
        [](const MacEntry &e) { return e.is_static; });
    expect(
        "all", [&] { return driver_.user_l2_addr_del_all_addr_by_lrntype(0, 0, 2); },
        [](const MacEntry &) { return true; });
    EXPECT_EQ(driver_.user_l2_addr_del_all_addr_by_lrntype(0, 0, 3), kBadArgument);
}

TEST_F(DriverMacDelete, FiltersAreStatic) {
    ASSERT_EQ(driver_.user_mac_addr_add(0, entry(station(1), kVid, kL2DropTo, kPort)), kOk);
    EXPECT_EQ(driver_.user_l2_addr_delete_by_vlan(0, 0, kVid, 0), kOk);
    EXPECT_EQ(chip_.macs().size(), 1U);
    EXPECT_EQ(driver_.user_l2_addr_delete_static_by_vlan(0, 0, kVid, 0), kOk);
    EXPECT_EQ(chip_.macs().size(), 0U);
}

TEST_F(DriverMacDelete, ImpossibleKeysAreRefusedAndDeleteNothing) {
    populate();
    const uint8_t *key = key_.data();
    for (const int port : {-1, 32, 255}) {
        EXPECT_EQ(driver_.user_l2_addr_delete_by_port(0, 0, kAny, port, 1), kNoPort);
        EXPECT_EQ(driver_.user_l2_addr_delete_static_by_port(0, 0, kAny, port), kNoPort);
        EXPECT_EQ(driver_.user_l2_addr_delete_by_vlan_port(0, 0, kVid, kAny, port, 1), kNoPort);
        EXPECT_EQ(driver_.user_l2_addr_delete_static_by_vlan_port(0, 0, kVid, port), kNoPort);
        EXPECT_EQ(driver_.user_l2_addr_delete_all_by_mac_port(0, 0, key, port), kNoPort);
        EXPECT_EQ(driver_.user_l2_addr_delete_dynaic_by_mac_port(0, 0, key, port, 0), kNoPort);
        EXPECT_EQ(driver_.user_l2_addr_delete_static_by_mac_port(0, 0, key, port, 0), kNoPort);
        EXPECT_EQ(driver_.user_l2_addr_delete_trunk_dynamic_by_port_mac_vlan(0, 0, key, port, kVid), kNoPort);
        EXPECT_EQ(driver_.user_l2_addr_delete_trunk_static_by_port_mac_vlan(0, 0, key, port, kVid), kNoPort);
        EXPECT_EQ(driver_.user_l2_addr_delete_all_dynamic_by_port_mac_vlan(0, 0, key, port, kVid), kNoPort);
    }
    for (const uint32_t vid : {0U, 4095U, 0x1000AU}) {
        EXPECT_EQ(driver_.user_l2_addr_delete_by_vlan(0, 0, vid, 1), kVlanRange);
        EXPECT_EQ(driver_.user_l2_addr_delete_static_by_vlan(0, 0, vid, 0), kVlanRange);
        EXPECT_EQ(driver_.user_l2_addr_delete_by_vlan_port(0, 0, vid, kAny, kPort, 1), kVlanRange);
        EXPECT_EQ(driver_.user_l2_addr_delete_by_vlan_trunk(0, 0, vid, kTrunk, 1), kVlanRange);
        EXPECT_EQ(driver_.user_l2_addr_delete_all_dynamic_by_port_mac_vlan(0, 0, key, kPort, vid), kVlanRange);
    }
    for (const int trunk : {-1, 8}) {
        EXPECT_EQ(driver_.user_l2_addr_delete_by_vlan_trunk(0, 0, kVid, trunk, 1), chip::code(Status::kTrunkRange));
    }
    EXPECT_EQ(driver_.user_l2_addr_delete_by_vlan(0, 0, kVid, 2), kBadArgument);
    EXPECT_EQ(driver_.user_l2_addr_delete_static_by_vlan(0, 0, kVid, 1), kBadArgument);
    EXPECT_EQ(driver_.user_l2_addr_delete_by_port(0, 0, 1, kPort, 1), kBadArgument) << "another module";
    EXPECT_EQ(driver_.user_l2_addr_delete_by_mac(0, 0, key_of(test::kGroup).data(), 1),
              chip::code(Status::kMacNotUnicast));
    EXPECT_EQ(chip_.macs().size(), 2 * kStations + 1);
}

}  // namespace address_deletion_test
}  // namespace vdevice::driver
