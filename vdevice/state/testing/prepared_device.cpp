// Fills every table of the device.
#include "vdevice/state/testing/prepared_device.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>

#include "vdevice/state/state.h"

namespace vdevice::state::test {

using chip::test::kPayload;
using chip::test::operator+;

Key station(uint8_t number) {
    return {0x02, 0, 0, 0, 0, number};
}

adp_l2_entry_t address(const Key &mac, uint32_t flags, int port) {
    adp_l2_entry_t record = {};
    record.flags = flags;
    std::copy_n(mac.begin(), sizeof(record.mac), record.mac);
    record.vid = kVid;
    record.port = port;
    record.trunk = kTrunk;
    return record;
}

adp_l2_entry_t group_of(std::initializer_list<int> ports) {
    adp_l2_entry_t record = address(kGroup, 0, 0);
    for (const int port : ports) {
        record.ports[0] |= uint32_t{1} << port;
    }
    return record;
}

netlink_mcast_entry_t group_record(uint32_t front_ports) {
    netlink_mcast_entry_t record = {};
    std::copy_n(kGroup.begin(), sizeof(record.mac), record.mac);
    record.vid = kVid;
    record.ports[0] = front_ports;
    return record;
}

adp_agg_record_t members(std::initializer_list<uint8_t> ports) {
    adp_agg_record_t record = {};
    for (const uint8_t port : ports) {
        record.ports[record.count++] = port;
    }
    return record;
}

Param param(uint32_t word) {
    Param bytes{};
    std::memcpy(bytes.data(), &word, sizeof(word));
    return bytes;
}

std::string FreshDevice::text() const {
    return state_of(chip_, driver_).dump(1);
}

std::string FreshDevice::power_on_text() const {
    return power_on_state(state_of(chip_, driver_)).dump(1);
}

std::string FreshDevice::compact_text() const {
    return state_of(chip_, driver_).dump();
}

void fill(FreshDevice &device) {
    const Words all = ports(0xFFFFFFFF);
    driver::Driver &driver = device.driver();
    driver.user_vlan_createEx(0, 0, 2, chip::kMaxVid);
    driver.user_vlan_port_addEx(0, 0, chip::kMinVid, chip::kMaxVid, all.data(), all.data());
    for (uint64_t number = 0; number < chip::MacTable::kCapacity; ++number) {
        device.chip().macs().learn(chip::Mac{0x020000000000 + number}, chip::kMinVid, kPort, {});
    }
    const QualifierBytes ones = [] {
        QualifierBytes bytes{};
        bytes.fill(0xFF);
        return bytes;
    }();
    for (uint32_t entry = 0; entry < chip::FieldTable::kEntries; ++entry) {
        for (int group = 1; group <= static_cast<int>(chip::FieldTable::kGroups); ++group) {
            driver.user_field_entry_create_id(0, 0, group, entry);  // one of them has it
        }
        driver.user_field_qualify_SrcIp6(0, 0, entry, ones.data(), ones.data());
        driver.user_field_qualify_DstIp6(0, 0, entry, ones.data(), ones.data());
        driver.user_field_qualify_SrcMac(0, 0, entry, ones.data(), ones.data());
        driver.user_field_qualify_DstMac(0, 0, entry, ones.data(), ones.data());
        driver.user_field_qualify_SrcIp(0, 0, entry, ~0U, ~0U);
        driver.user_field_qualify_DstIp(0, 0, entry, ~0U, ~0U);
        driver.user_field_qualify_L4SrcPort(0, 0, entry, 0xFFFF, 0xFFFF);
        driver.user_field_qualify_L4DstPort(0, 0, entry, 0xFFFF, 0xFFFF);
        driver.user_field_entry_install(0, 0, entry);
        driver.user_field_entry_prio_set(0, 0, entry, -1);
    }
}

void PreparedDevice::expect(int32_t result) {
    EXPECT_EQ(result, driver::kOk);
}

PreparedDevice::PreparedDevice() {
    add_vlans();
    add_addresses();
    add_groups();
    add_rules();
    add_tags();
    pass_frames();
}

void PreparedDevice::add_vlans() {
    const Words all = ports(0xFFF0);
    expect(driver().user_vlan_createEx(0, 0, kVid, kOtherVid));
    expect(driver().user_vlan_port_addEx(0, 0, kVid, kOtherVid, all.data(), all.data()));
    expect(driver().user_stg_create_id(0, 0, kStg));
    expect(driver().user_stg_vlan_add(0, 0, kStg, kVid));
    expect(driver().user_stg_list(0, 0, &groups, &group_count));
    expect(driver().user_stg_vlan_list(0, 0, kStg, &vlans, &vlan_count));
    for (const int port : {kPort, kMember, kOtherPort, kLimitedPort}) {
        expect(driver().user_port_untagged_vlan_set(0, 0, port, kVid));
        chip().set_link(port, true);
    }
}

void PreparedDevice::add_addresses() {
    expect(driver().user_trunk_create_id(0, 0, kTrunk));
    expect(driver().user_trunk_set(0, 0, kTrunk, members({kMember, 7})));
    expect(driver().user_mac_addr_add(0, address(station(kStatic), NETLINK_L2_STATIC, kPort)));
    expect(driver().user_mac_addr_add(
        0, address(station(kStaticOfTrunk), NETLINK_L2_STATIC | NETLINK_L2_TO_TRUNK, kMember)));
}

void PreparedDevice::add_groups() {
    expect(driver().user_mac_mcast_addr_add(0, group_of({kPort, kOtherPort})));
    expect(driver().user_switch_control_set(0, 0, ADP_CONTROL_IGMP, 1));
    expect(driver().user_switch_control_set(0, 0, ADP_CONTROL_LOCAL_GROUPS, 1));
    expect(driver().user_mirror_port_set(0, 0, kPort, 0, kOtherPort, 2));
    expect(driver().user_port_dscp_map_mode_set(0, 0, kPort, 3));
}

void PreparedDevice::add_rules() {
    expect(driver().user_field_entry_create_id(0, 0, 9, kEntry));
    expect(driver().user_field_qualify_OuterVlanId(0, 0, kEntry, kVid, 0xFFF));
    expect(driver().user_field_action_add(0, 0, kEntry, 205, param(kFieldCounter).data(), param(0).data()));
    expect(driver().user_field_action_add(0, 0, kEntry, 53, param(0).data(), param(kMeter).data()));
    expect(driver().user_field_entry_install(0, 0, kEntry));
    expect(driver().user_field_entry_prio_set(0, 0, kEntry, 2));
    expect(driver().user_field_meter_entry_set(0, 100000, kMeter));
    expect(driver().user_field_entry_create_id(0, 0, 1, kWide));
    expect(driver().user_field_entry_create_id(0, 0, 1, kWide + 1));
}

void PreparedDevice::add_tags() {
    expect(driver().user_vlan_translate_add(0, 0, 0, kPort, 0, 100, kVid, 3));
    expect(driver().user_vlan_translate_egress_add(0, 0, 0, kPort, kVid, 100, 3));
    expect(driver().user_vlan_dtag_add(0, 0, 0, kPort, 0, 100, kVid, 3));
    expect(driver().user_vlan_ip4_add(0, 0, kPort, 0x0A000000, 0xFF000000, kVid, 3, 0));
}

void PreparedDevice::pass_frames() {
    constexpr int kStorm = 3;
    constexpr uint32_t kBroadcasts = 3;
    netlink_learn_limit_t none = {};
    none.flags = NETLINK_LIMIT_PORT;
    none.port = kLimitedPort;
    expect(driver().user_mac_learn_limit_set(0, none));
    expect(driver().user_rate_bandwidth_set(0, 0, kOtherPort, kBroadcasts, 1, 0));
    chip().receive({}, kPort, chip::test::station(99) + chip::test::station(kLearned) + kPayload);
    chip().receive({}, kMember, chip::test::station(99) + chip::test::station(kLearnedOfTrunk) + kPayload);
    chip().receive({}, kLimitedPort, chip::test::station(99) + chip::test::station(50) + kPayload);
    for (int i = 0; i < 100 && !chip().port(kOtherPort).storm.of(static_cast<chip::StormType>(kStorm)).exceeded; ++i) {
        chip().receive({}, kOtherPort, chip::test::kBroadcast + chip::test::station(60) + kPayload);
    }
}

}  // namespace vdevice::state::test
