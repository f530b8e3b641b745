// The calls on trunks and controls. What trunks do to frames is tested on the chip.
#include <gtest/gtest.h>

#include <initializer_list>
#include <set>

#include "vdevice/chip/testing/frame_builder.h"
#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace trunks_test {

using chip::Status;
using namespace chip::test;
using namespace test;

constexpr int32_t kTrunkMissing = chip::code(Status::kTrunkMissing);

adp_agg_record_t record_of(std::initializer_list<uint8_t> ports) {
    adp_agg_record_t record = {};
    for (const uint8_t port : ports) {
        record.ports[record.count++] = port;
    }
    return record;
}

class DriverTrunk : public test::DriverTest {
  protected:
    std::vector<int> members(int trunk) const {
        const chip::Trunk *found = chip_.trunks().find(trunk);
        return found == nullptr ? std::vector<int>{-1} : found->members;
    }
};

TEST_F(DriverTrunk, AreMadeSetAndDestroyed) {
    EXPECT_EQ(driver_.user_trunk_set(0, 0, 0, record_of({4, 5})), kTrunkMissing);
    EXPECT_EQ(driver_.user_trunk_create_id(0, 0, 0), kOk);
    EXPECT_EQ(driver_.user_trunk_create_id(0, 0, 0), chip::code(Status::kTrunkExists));
    EXPECT_EQ(driver_.user_trunk_create_id(0, 0, 8), chip::code(Status::kTrunkRange));
    EXPECT_EQ(driver_.user_trunk_create_id(0, 0, -1), chip::code(Status::kTrunkRange));
    EXPECT_EQ(driver_.user_trunk_set(0, 0, 0, record_of({5, 4})), kOk);
    EXPECT_EQ(members(0), (std::vector<int>{5, 4}));
    EXPECT_EQ(driver_.user_trunk_set(0, 0, 0, record_of({})), kOk);
    EXPECT_EQ(members(0), std::vector<int>{});
    EXPECT_EQ(driver_.user_trunk_destroy(0, 0, 0), kOk);
    EXPECT_EQ(driver_.user_trunk_destroy(0, 0, 0), kTrunkMissing);
}

TEST_F(DriverTrunk, RecordsAreRefusedForAReason) {
    ASSERT_EQ(driver_.user_trunk_create_id(0, 0, 0), kOk);
    ASSERT_EQ(driver_.user_trunk_create_id(0, 0, 1), kOk);
    ASSERT_EQ(driver_.user_trunk_set(0, 0, 1, record_of({20})), kOk);
    adp_agg_record_t nonsense = record_of({4});
    for (const int32_t count : {-1, 12, 0x7FFFFFFF}) {
        nonsense.count = count;
        EXPECT_EQ(driver_.user_trunk_set(0, 0, 0, nonsense), kBadArgument);
        EXPECT_EQ(driver_.user_trunk_send_data_to_kernel(0, 0, 0, nonsense), kBadArgument);
    }
    EXPECT_EQ(driver_.user_trunk_set(0, 0, 0, record_of({4, 5, 6, 7, 8, 9, 10, 11, 12})),
              chip::code(Status::kTrunkFull));
    EXPECT_EQ(driver_.user_trunk_set(0, 0, 0, record_of({255})), chip::code(Status::kNoPort));
    EXPECT_EQ(driver_.user_trunk_set(0, 0, 0, record_of({4, 20})), chip::code(Status::kTrunkMember));
    EXPECT_EQ(members(0), std::vector<int>{});
}

TEST_F(DriverTrunk, TheKernelIsToldWhatBelongsTogether) {
    EXPECT_EQ(driver_.user_trunk_send_data_to_kernel(0, 0, 2, record_of({4})), kTrunkMissing);
    ASSERT_EQ(driver_.user_trunk_create_id(0, 0, 2), kOk);
    EXPECT_EQ(driver_.user_trunk_send_data_to_kernel(0, 0, 2, record_of({4, 5})), kOk);
    EXPECT_EQ(members(2), std::vector<int>{}) << "no frames leave by them yet";
    EXPECT_EQ(chip_.trunk_of(5), 2);
}

TEST_F(DriverTrunk, InitialisingRemovesThemAll) {
    ASSERT_EQ(driver_.user_trunk_create_id(0, 0, 0), kOk);
    ASSERT_EQ(driver_.user_trunk_create_id(0, 0, 7), kOk);
    EXPECT_EQ(driver_.user_trunk_init(0, 0), kOk);
    EXPECT_EQ(driver_.user_trunk_init(0, 0), kOk);
    EXPECT_EQ(driver_.user_trunk_destroy(0, 0, 7), kTrunkMissing);
    EXPECT_EQ(driver_.user_trunk_create_id(0, 0, 0), kOk);
}

TEST_F(DriverTrunk, BalancingModesAreOneToSix) {
    EXPECT_EQ(driver_.user_trunk_loadbalance_set(0, 0, 0, 1), kTrunkMissing);
    ASSERT_EQ(driver_.user_trunk_create_id(0, 0, 0), kOk);
    for (uint32_t mode = 1; mode <= 6; ++mode) {
        EXPECT_EQ(driver_.user_trunk_loadbalance_set(0, 0, 0, mode), kOk);
        EXPECT_EQ(chip_.trunks().find(0)->balance, mode);
    }
    EXPECT_EQ(driver_.user_trunk_loadbalance_set(0, 0, 0, 0), kBadArgument);
    EXPECT_EQ(driver_.user_trunk_loadbalance_set(0, 0, 0, 7), kBadArgument);
    EXPECT_EQ(chip_.trunks().find(0)->balance, 6U);
}

TEST_F(DriverTrunk, ControlsAreKept) {
    uint32_t value = 99;
    EXPECT_EQ(driver_.user_switch_control_get(0, 0, 255, &value), kOk);
    EXPECT_EQ(value, 0U);
    EXPECT_EQ(driver_.user_switch_control_set(0, 0, 255, 0xFFFFFFFF), kOk);
    EXPECT_EQ(driver_.user_switch_control_get(0, 0, 255, &value), kOk);
    EXPECT_EQ(value, 0xFFFFFFFFU);
    EXPECT_EQ(driver_.user_switch_control_set(0, 0, 256, 1), kBadArgument);
    EXPECT_EQ(driver_.user_switch_control_get(0, 0, 256, &value), kBadArgument);
}

TEST_F(DriverTrunk, TheHashSelectionTakesThreeValues) {
    uint32_t value = 0;
    EXPECT_EQ(driver_.user_switch_control_get(0, 0, 136, &value), kOk);
    EXPECT_EQ(value, 0x70U);
    for (const uint32_t refused : {0U, 0x40U, 0x71U}) {
        EXPECT_EQ(driver_.user_switch_control_set(0, 0, 136, refused), kBadArgument);
    }
    for (const int port : {4, 10, 11}) {
        chip_.set_link(port, true);
    }
    ASSERT_EQ(driver_.user_trunk_create_id(0, 0, 0), kOk);
    ASSERT_EQ(driver_.user_trunk_set(0, 0, 0, record_of({10, 11})), kOk);
    const auto ways = [&] {
        std::set<int> used;
        for (uint8_t number = 1; number < 50; ++number) {
            chip_.receive(now_, 4, kBroadcast + station(number) + kPayload);
            used.insert(sink_.take().front().first);
        }
        return used.size();
    };
    EXPECT_EQ(ways(), 2U);
    EXPECT_EQ(driver_.user_switch_control_set(0, 0, 136, 0x60), kOk);
    EXPECT_EQ(ways(), 1U) << "all have the same destination";
    EXPECT_EQ(driver_.user_switch_control_set(0, 0, 136, 0x50), kOk);
    EXPECT_EQ(ways(), 2U);
    EXPECT_EQ(driver_.user_switch_control_get(0, 0, 136, &value), kOk);
    EXPECT_EQ(value, 0x50U);
}

TEST_F(DriverTrunk, TrapsAreSetEachByItsCall) {
    EXPECT_EQ(driver_.user_trunk_trap_lacp(0, 0, 1, 77), kOk);
    EXPECT_TRUE(chip_.traps().lacp);
    EXPECT_FALSE(chip_.traps().oam);
    EXPECT_EQ(driver_.user_eoam_trap_set(0, 0, 2, 0), kOk);
    EXPECT_TRUE(chip_.traps().oam);
    EXPECT_EQ(driver_.user_trunk_trap_lacp(0, 0, 0, 0), kOk);
    EXPECT_FALSE(chip_.traps().lacp);
    EXPECT_EQ(driver_.user_selfmac_trap_to_cpu(0, 0, 5, 0), kOk);
    EXPECT_EQ(chip_.traps().self_mac, 5U);
    EXPECT_TRUE(chip_.traps().oam);
}

}  // namespace trunks_test
}  // namespace vdevice::driver
