// The VLAN and port calls: what they do to the chip, and what they refuse.
#include <gtest/gtest.h>

#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace vlans_test {

using chip::PortSet;
using chip::Status;
using namespace test;

constexpr int32_t kVlanMissing = chip::code(Status::kVlanMissing);

class DriverVlan : public test::DriverTest {
  protected:
    PortSet members(uint32_t vid) const {
        return chip_.vlans().find(vid) == nullptr ? PortSet{} : chip_.vlans().find(vid)->members;
    }
    PortSet untagged(uint32_t vid) const {
        return chip_.vlans().find(vid) == nullptr ? PortSet{} : chip_.vlans().find(vid)->untagged;
    }
};

TEST_F(DriverVlan, RangesEndWithTheSecondVlan) {
    EXPECT_EQ(driver_.user_vlan_createEx(0, 0, 10, 12), kOk);
    EXPECT_EQ(driver_.user_vlan_createEx(0, 0, 12, 14), chip::code(Status::kVlanExists));
    EXPECT_EQ(chip_.vlans().list(), (std::vector<chip::Vid>{1, 10, 11, 12}));
    EXPECT_EQ(driver_.user_vlan_createEx(0, 0, 14, 13), kVlanRange);
    EXPECT_EQ(driver_.user_vlan_destroyEx(0, 0, 11, 13), kVlanMissing);
    EXPECT_EQ(driver_.user_vlan_destroyEx(0, 0, 11, 12), kOk);
    EXPECT_EQ(chip_.vlans().list(), (std::vector<chip::Vid>{1, 10}));
}

TEST_F(DriverVlan, AddsAndRemovesPorts) {
    ASSERT_EQ(driver_.user_vlan_createEx(0, 0, 10, 11), kOk);
    const Words all = words_of(ports({0, 4, 29}));
    const Words plain = words_of(ports({4}));
    EXPECT_EQ(driver_.user_vlan_port_add(0, 0, 10, all.data(), plain.data()), kOk);
    EXPECT_EQ(members(10), ports({0, 4, 29}));
    EXPECT_EQ(untagged(10), ports({4}));
    EXPECT_EQ(driver_.user_vlan_port_addEx(0, 0, 10, 11, plain.data(), nullptr), kOk);
    EXPECT_EQ(members(11), ports({4}));
    EXPECT_TRUE(untagged(10).empty()) << "added again, without the untagged set";
    EXPECT_EQ(driver_.user_vlan_port_remove(0, 0, 10, plain.data()), kOk);
    EXPECT_EQ(members(10), ports({0, 29}));
    EXPECT_EQ(driver_.user_vlan_port_removeEx(0, 0, 10, 11, all.data()), kOk);
    EXPECT_TRUE(members(10).empty());
    EXPECT_TRUE(members(11).empty());
}

TEST_F(DriverVlan, ARangeCallIsAppliedWholeOrNotAtAll) {
    ASSERT_EQ(driver_.user_vlan_create(0, 0, 10), kOk);
    const Words one = words_of(ports({4}));
    EXPECT_EQ(driver_.user_vlan_port_addEx(0, 0, 10, 11, one.data(), nullptr), kVlanMissing);
    EXPECT_TRUE(members(10).empty());
    ASSERT_EQ(driver_.user_vlan_port_add(0, 0, 10, one.data(), nullptr), kOk);
    EXPECT_EQ(driver_.user_vlan_port_removeEx(0, 0, 10, 11, one.data()), kVlanMissing);
    EXPECT_EQ(members(10), ports({4}));
}

TEST_F(DriverVlan, ANullAddressIsTheEmptySet) {
    ASSERT_EQ(driver_.user_vlan_create(0, 0, 10), kOk);
    const Words one = words_of(ports({4}));
    ASSERT_EQ(driver_.user_vlan_port_set(0, 0, 10, one.data(), one.data()), kOk);
    EXPECT_EQ(driver_.user_vlan_port_add(0, 0, 10, nullptr, nullptr), kOk);
    EXPECT_EQ(driver_.user_vlan_port_remove(0, 0, 10, nullptr), kOk);
    EXPECT_EQ(members(10), ports({4}));
    EXPECT_EQ(driver_.user_vlan_port_set(0, 0, 10, nullptr, nullptr), kOk);
    EXPECT_TRUE(members(10).empty());
}

TEST_F(DriverVlan, ReadsBackWhatWasSet) {
    ASSERT_EQ(driver_.user_vlan_create(0, 0, 10), kOk);
    const Words in_members = words_of(ports({0, 4, 24, 25, 29}));
    const Words in_untagged = words_of(ports({24, 25}));
    ASSERT_EQ(driver_.user_vlan_port_set(0, 0, 10, in_members.data(), in_untagged.data()), kOk);
    Words out_members{};
    Words out_untagged{};
    EXPECT_EQ(driver_.user_vlan_port_get(0, 0, 10, out_members.data(), out_untagged.data()), kOk);
    EXPECT_EQ(out_members, in_members);
    EXPECT_EQ(out_untagged, in_untagged);
}

TEST_F(DriverVlan, DefaultVlan) {
    uint32_t vid = 0;
    EXPECT_EQ(driver_.user_vlan_default_get(0, 0, &vid), kOk);
    EXPECT_EQ(vid, 1U);
    EXPECT_EQ(driver_.user_vlan_default_set(0, 0, 10), kVlanMissing);
    ASSERT_EQ(driver_.user_vlan_create(0, 0, 10), kOk);
    EXPECT_EQ(driver_.user_vlan_default_set(0, 0, 10), kOk);
    EXPECT_EQ(driver_.user_vlan_default_get(0, 0, &vid), kOk);
    EXPECT_EQ(vid, 10U);
}

TEST_F(DriverVlan, PortVlan) {
    ASSERT_EQ(driver_.user_vlan_create(0, 0, 10), kOk);
    uint32_t vid = 0;
    EXPECT_EQ(driver_.user_port_untagged_vlan_set(0, 0, 4, 10), kOk);
    EXPECT_EQ(driver_.user_port_untagged_vlan_get(0, 0, 4, &vid), kOk);
    EXPECT_EQ(vid, 10U);
    EXPECT_EQ(driver_.user_port_untagged_vlan_set(0, 0, 4, 11), kVlanMissing);
    EXPECT_EQ(driver_.user_port_untagged_vlan_set(0, 0, 4, 0), kVlanRange);
    for (const int32_t port : {-1, 32, 0x10000003}) {
        EXPECT_EQ(driver_.user_port_untagged_vlan_set(0, 0, port, 10), kNoPort);
        EXPECT_EQ(driver_.user_port_untagged_vlan_get(0, 0, port, &vid), kNoPort);
    }
    EXPECT_EQ(vid, 10U);
}

TEST_F(DriverVlan, PortStateAndLink) {
    uint32_t value = 7;
    EXPECT_EQ(driver_.user_port_enable_get(0, 0, 4, &value), kOk);
    EXPECT_EQ(value, 1U);
    EXPECT_EQ(driver_.user_port_link_status_get(0, 0, 4, &value), kOk);
    EXPECT_EQ(value, 0U);
    ASSERT_EQ(chip_.set_link(4, true), Status::kOk);
    EXPECT_EQ(driver_.user_port_link_status_get(0, 0, 4, &value), kOk);
    EXPECT_EQ(value, 1U);
    EXPECT_EQ(driver_.user_fiberport_link_status_get(0, 0, 4, &value), kOk);
    EXPECT_EQ(value, 1U);
    EXPECT_EQ(driver_.user_port_enable_set(0, 0, 4, 0), kOk);
    EXPECT_EQ(driver_.user_port_enable_get(0, 0, 4, &value), kOk);
    EXPECT_EQ(value, 0U);
    value = 7;
    EXPECT_EQ(driver_.user_fiberport_link_status_get(0, 0, 4, &value), kOk);
    EXPECT_EQ(value, 0U) << "a disabled port has no link";
    EXPECT_EQ(driver_.user_port_enable_set(0, 0, 32, 1), kNoPort);
    EXPECT_EQ(driver_.user_port_enable_get(0, 0, -1, &value), kNoPort);
}

}  // namespace vlans_test
}  // namespace vdevice::driver
