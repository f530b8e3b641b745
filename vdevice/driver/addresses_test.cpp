// The calls on single addresses, the walk, ageing, limits and counts.
#include <gtest/gtest.h>

#include <cstring>

#include "vdevice/chip/testing/frame_builder.h"
#include "vdevice/driver/testing/address_fixture.h"

namespace vdevice::driver {
namespace addresses_test {

using namespace std::chrono_literals;
using chip::MacTable;
using chip::Status;
using namespace chip::test;
using namespace test;

constexpr int kPort = 4;
constexpr int32_t kMacNotUnicast = chip::code(Status::kMacNotUnicast);

class DriverMac : public test::MacTest {
  protected:
    adp_l2_entry_t get(chip::Mac mac, uint32_t vid) {
        adp_l2_entry_t record = {};
        EXPECT_EQ(driver_.user_mac_addr_get(0, key_of(mac).data(), vid, &record), kOk);
        return record;
    }

    void learn(uint64_t number, int port) {
        chip_.macs().learn(station(number), kVid, port, now_, chip_.trunk_of(port));
    }

    static netlink_learn_limit_t scope(uint32_t flags, uint32_t limit = 0) {
        netlink_learn_limit_t record = {};
        record.flags = flags;
        record.vid = static_cast<uint16_t>(kVid);
        record.port = kPort;
        record.trunk = kTrunk;
        record.limit = limit;
        return record;
    }
};

TEST_F(DriverMac, AnAddressIsReadAsItWasAdded) {
    ASSERT_EQ(driver_.user_mac_addr_add(0, entry(station(1), kVid, NETLINK_L2_STATIC, kPort)), kOk);
    const adp_l2_entry_t record = get(station(1), kVid);
    EXPECT_EQ(record.flags, NETLINK_L2_STATIC);
    EXPECT_EQ(chip::Mac::from_bytes(record.mac), station(1));
    EXPECT_EQ(record.vid, kVid);
    EXPECT_EQ(record.port, kPort);
    EXPECT_EQ(record.index, MacTable::bucket_of(station(1), kVid) * MacTable::kBucketSlots);
    EXPECT_EQ(get(station(1), kVid).trunk, 0);
    ASSERT_EQ(driver_.user_mac_addr_add(0, entry(station(2), kVid, kL2DropFrom | kL2DropTo, kPort)), kOk);
    EXPECT_EQ(get(station(2), kVid).flags, NETLINK_L2_STATIC | kL2DropFrom | kL2DropTo) << "a filter is static";
    ASSERT_EQ(driver_.user_mac_addr_add(0, entry(station(2), kVid, 0, kPort)), kOk);
    EXPECT_EQ(get(station(2), kVid).flags, 0U) << "the new entry takes the old one's place";
}

TEST_F(DriverMac, ATrunksAddressIsToldByItsFlag) {
    const auto to_trunk = NETLINK_L2_STATIC | NETLINK_L2_TO_TRUNK;
    ASSERT_EQ(driver_.user_mac_addr_add(0, entry(station(1), kVid, to_trunk, kMember, kTrunk)), kOk);
    EXPECT_EQ(get(station(1), kVid).flags, NETLINK_L2_STATIC | NETLINK_L2_FOUND_TRUNK);
    EXPECT_EQ(get(station(1), kVid).trunk, kTrunk);
    EXPECT_EQ(get(station(1), kVid).port, kMember);
    learn(2, kOtherMember);
    EXPECT_EQ(get(station(2), kVid).flags, NETLINK_L2_FOUND_TRUNK);
    ASSERT_EQ(driver_.user_mac_addr_add(0, entry(station(3), kVid, NETLINK_L2_STATIC, kMember)), kOk);
    EXPECT_EQ(get(station(3), kVid).trunk, kTrunk) << "the port is in the trunk";
    EXPECT_EQ(driver_.user_mac_addr_add(0, entry(station(4), kVid, to_trunk, -1, 0)),
              chip::code(Status::kTrunkMissing));
    EXPECT_EQ(driver_.user_mac_addr_add(0, entry(station(4), kVid, to_trunk, -1, 8)), chip::code(Status::kTrunkRange));
}

TEST_F(DriverMac, WhatIsNotThereLeavesTheOutputAlone) {
    adp_l2_entry_t record;
    std::memset(&record, 0xEE, sizeof(record));
    const adp_l2_entry_t before = record;
    const auto get = [&](chip::Mac mac, uint32_t vid) {
        return driver_.user_mac_addr_get(0, key_of(mac).data(), vid, &record);
    };
    EXPECT_EQ(get(station(1), kVid), kMacMissing);
    EXPECT_EQ(get(station(1), 0), kVlanRange);
    EXPECT_EQ(get(test::kGroup, kVid), kMacNotUnicast);
    EXPECT_EQ(driver_.user_netlink_mac_nextValidAddr_get(0, 0, &record, 0), kMacMissing);
    EXPECT_EQ(std::memcmp(&record, &before, sizeof(record)), 0);
}

TEST_F(DriverMac, OneAddressIsDeletedWhateverItsKind) {
    learn(1, kPort);
    ASSERT_EQ(driver_.user_mac_addr_add(0, entry(station(2), kVid, NETLINK_L2_STATIC, kPort)), kOk);
    for (const uint64_t number : {1U, 2U}) {
        const auto key = key_of(station(number));
        EXPECT_EQ(driver_.user_mac_addr_delete(0, key.data(), kOtherVid, 0), kMacMissing);
        EXPECT_EQ(driver_.user_mac_addr_delete(0, key.data(), kVid, 9), kOk);
        EXPECT_EQ(driver_.user_mac_addr_delete(0, key.data(), kVid, 9), kMacMissing);
        EXPECT_EQ(driver_.user_mac_addr_delete(0, key.data(), 4095, 9), kVlanRange);
    }
    ASSERT_EQ(chip_.add_group(test::kGroup, kVid, {}), Status::kOk);
    EXPECT_EQ(driver_.user_mac_addr_delete(0, key_of(test::kGroup).data(), kVid, 0), kMacNotUnicast);
}

TEST_F(DriverMac, TheWalkMeetsStationsAndGroups) {
    for (uint64_t number = 0; number < 100; ++number) {
        learn(number * 37, kPort);
    }
    ASSERT_EQ(chip_.add_group(test::kGroup, kVid, test::ports({4, 9})), Status::kOk);
    size_t groups = 0;
    size_t met = 0;
    uint32_t index = 0;
    adp_l2_entry_t record = {};
    while (driver_.user_netlink_mac_nextValidAddr_get(0, index, &record, 0) == kOk) {
        ASSERT_GE(record.index, index);
        index = record.index + 1;
        ++met;
        if (chip::Mac::from_bytes(record.mac).is_group()) {
            EXPECT_EQ(chip::PortSet::from_words(record.ports), test::ports({4, 9}));
            ++groups;
        }
    }
    EXPECT_EQ(met, 101U);
    EXPECT_EQ(groups, 1U);
    EXPECT_EQ(driver_.user_netlink_mac_nextValidAddr_get(0, MacTable::kCapacity, &record, 0), kMacMissing);
}

TEST_F(DriverMac, TheAgeTimeIsSetInSeconds) {
    uint32_t seconds = 0;
    EXPECT_EQ(driver_.user_mac_age_time_get(0, &seconds), kOk);
    EXPECT_EQ(seconds, 300U);
    EXPECT_EQ(driver_.user_mac_age_time_set(0, 10), kOk);
    now_ = 100s;
    ASSERT_EQ(driver_.user_mac_addr_add(0, entry(station(1), kVid, 0, kPort)), kOk);
    chip_.tick(109s);
    EXPECT_EQ(chip_.macs().size(), 1U) << "an added dynamic address begins to age when it is added";
    chip_.tick(110s);
    EXPECT_EQ(chip_.macs().size(), 0U);
    EXPECT_EQ(driver_.user_mac_age_time_set(0, 1000001), kBadArgument);
    EXPECT_EQ(driver_.user_mac_age_time_get(0, &seconds), kOk);
    EXPECT_EQ(seconds, 10U);
    EXPECT_EQ(driver_.user_mac_age_time_set(0, 0), kOk);
    learn(2, kPort);
    chip_.tick(1000000s);
    EXPECT_EQ(chip_.macs().size(), 1U);
}

TEST_F(DriverMac, TheTableTellsItsSizeAndNotItsMemory) {
    uint32_t size = 0;
    EXPECT_EQ(driver_.user_l2_cache_size_get(0, 0, &size), kOk);
    EXPECT_EQ(size, 8192U);
    EXPECT_EQ(driver_.user_l2_mactable_fread(1, 2, 3, 4), kNotSupported);
}

TEST_F(DriverMac, ShowingTheTableWritesLines) {
    learn(1, kPort);
    learn(2, kMember);
    ASSERT_EQ(driver_.user_mac_addr_add(0, entry(station(3), kOtherVid, kL2DropTo, kPort)), kOk);
    ASSERT_EQ(chip_.add_group(test::kGroup, kVid, test::ports({4, 9})), Status::kOk);
    EXPECT_EQ(driver_.user_mac_table_show(0, kVid, 0, 0), kOk);
    EXPECT_EQ(driver_.user_mac_table_show(0, 0, 0, 0), kOk);
    EXPECT_EQ(driver_.user_mac_mcast_table_show(0, 0, 0, 0), kOk);
    std::vector<std::string> texts;
    for (const LogLine &line : driver_.journal().lines()) {
        texts.push_back(line.text);
    }
    const std::string first = "vlan 10 02:00:00:00:00:01 port 4 dynamic";
    const std::string second = "vlan 10 02:00:00:00:00:02 trunk 2 dynamic";
    EXPECT_EQ(texts, (std::vector<std::string>{first, second, "2 addresses", first, second,
                                               "vlan 20 02:00:00:00:00:03 port 4 filter", "3 addresses",
                                               "vlan 10 01:00:5e:01:02:03 ports 4 9", "1 groups"}));
}

TEST_F(DriverMac, ShowingAFullTableLeavesTheLogItsOtherLines) {
    for (uint64_t number = 0; number < MacTable::kCapacity; ++number) {
        learn(number, kPort);
    }
    EXPECT_EQ(driver_.user_mac_table_show(0, 0, 0, 0), kOk);
    EXPECT_EQ(driver_.journal().lines().size(), 257U);
    EXPECT_EQ(driver_.journal().lines().back().text, "8192 addresses");
}

TEST_F(DriverMac, LimitsAreKeptByScope) {
    uint32_t limit = 100;
    for (const uint32_t flags : {1U, 2U, 4U, 8U}) {
        netlink_learn_limit_t record = scope(flags);
        EXPECT_EQ(driver_.user_mac_learn_limit_get(0, &record), kOk);
        EXPECT_EQ(record.limit, 0xFFFFFFFFU);
        EXPECT_EQ(driver_.user_mac_learn_limit_set(0, scope(flags, limit++)), kOk);
    }
    limit = 100;
    for (const uint32_t flags : {1U, 2U, 4U, 8U}) {
        netlink_learn_limit_t record = scope(flags);
        EXPECT_EQ(driver_.user_mac_learn_limit_get(0, &record), kOk);
        EXPECT_EQ(record.limit, limit++);
    }
    EXPECT_EQ(chip_.limits().system(), 100U);
    EXPECT_EQ(chip_.limits().of_vlan(kVid), 101U);
    EXPECT_EQ(chip_.limits().of_port(kPort), 102U);
    EXPECT_EQ(chip_.limits().of_trunk(kTrunk), 103U);
}

TEST_F(DriverMac, LimitsOfNothingAreRefused) {
    for (const uint32_t flags : {0U, 3U, 16U, 0xFFFFFFFFU}) {
        netlink_learn_limit_t record = scope(flags, 7);
        EXPECT_EQ(driver_.user_mac_learn_limit_set(0, record), kBadArgument);
        EXPECT_EQ(driver_.user_mac_learn_limit_get(0, &record), kBadArgument);
        EXPECT_EQ(record.limit, 7U);
    }
    netlink_learn_limit_t record = scope(NETLINK_LIMIT_PORT);
    record.port = -1;
    EXPECT_EQ(driver_.user_mac_learn_limit_set(0, record), kNoPort);
    record = scope(NETLINK_LIMIT_TRUNK);
    record.trunk = 8;
    EXPECT_EQ(driver_.user_mac_learn_limit_set(0, record), chip::code(Status::kTrunkRange));
    record = scope(NETLINK_LIMIT_VLAN);
    record.vid = 0;
    EXPECT_EQ(driver_.user_mac_learn_limit_set(0, record), kVlanRange);
}

TEST_F(DriverMac, LearnedAndRefusedAddressesAreCounted) {
    ASSERT_EQ(chip_.set_link(kPort, true), Status::kOk);
    netlink_learn_limit_t limit = scope(NETLINK_LIMIT_PORT, 2);
    ASSERT_EQ(driver_.user_mac_learn_limit_set(0, limit), kOk);
    for (uint8_t number = 1; number <= 5; ++number) {
        chip_.receive(1s, kPort, kBroadcast + chip::test::station(number) + kPayload);
    }
    uint32_t count = 0;
    EXPECT_EQ(driver_.user_mac_learn_count_get_by_port(kPort, &count), kOk);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(driver_.user_mac_violate_count_get_by_port(kPort, &count), kOk);
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(driver_.user_mac_violate_del_by_port(kPort), kOk);
    EXPECT_EQ(driver_.user_mac_violate_count_get_by_port(kPort, &count), kOk);
    EXPECT_EQ(count, 0U);
    learn(9, kMember);
    EXPECT_EQ(driver_.user_mac_learn_count_get_by_port(kOtherMember, &count), kOk);
    EXPECT_EQ(count, 1U) << "what is behind the trunk";
    for (const int port : {-1, 32}) {
        EXPECT_EQ(driver_.user_mac_learn_count_get_by_port(port, &count), kNoPort);
        EXPECT_EQ(driver_.user_mac_violate_count_get_by_port(port, &count), kNoPort);
        EXPECT_EQ(driver_.user_mac_violate_del_by_port(port), kNoPort);
    }
}

TEST_F(DriverMac, TheServicesWorkOnTheSameTable) {
    EXPECT_EQ(driver_.add_mac_static_addr("02:00:00:00:00:01", 3, kVid, 1), kOk);
    EXPECT_EQ(get(station(1), kVid).trunk, kTrunk) << "user port 3 is in the trunk";
    EXPECT_EQ(driver_.del_mac_addr("02:00:00:00:00:01", kVid, 1), kOk);
    EXPECT_EQ(chip_.macs().find(station(1), kVid), nullptr);
    learn(2, kMember);
    learn(3, kPort);
    EXPECT_EQ(driver_.set_mac_tbl_clear_by_port(4, 7, 3), kOk);
    EXPECT_EQ(chip_.macs().find(station(2), kVid), nullptr) << "the ports of a trunk are one place";
    EXPECT_NE(chip_.macs().find(station(3), kVid), nullptr);
}

}  // namespace addresses_test
}  // namespace vdevice::driver
