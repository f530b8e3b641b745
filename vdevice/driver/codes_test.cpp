// The public headers name the codes that the virtual device understands: name and code must mean the same.
#include <adp/adp.h>
#include <gtest/gtest.h>

#include "vdevice/chip/fields/field_processor.h"
#include "vdevice/chip/queues/scheduler.h"
#include "vdevice/chip/rates/storm_control.h"
#include "vdevice/chip/tables/group_rules.h"
#include "vdevice/chip/tables/learn_mode.h"
#include "vdevice/chip/tables/port_priorities.h"
#include "vdevice/chip/tables/port_tags.h"
#include "vdevice/chip/tables/stp_groups.h"
#include "vdevice/chip/tables/trunk_table.h"

namespace vdevice::driver {
namespace codes_test {

using chip::DoubleTag;
using chip::GroupMiss;
using chip::MissAction;
using chip::SchedulerMode;
using chip::StormType;
using chip::StpState;
using chip::Trust;

template <typename Code>
int code(Code code) {
    return static_cast<int>(code);
}

TEST(Codes, OfSpanningTreeStates) {
    EXPECT_EQ(code(StpState::kDisabled), ADP_STG_STATE_DISABLED);
    EXPECT_EQ(code(StpState::kBlocking), ADP_STG_STATE_BLOCKING);
    EXPECT_EQ(code(StpState::kListening), ADP_STG_STATE_LISTENING);
    EXPECT_EQ(code(StpState::kLearning), ADP_STG_STATE_LEARNING);
    EXPECT_EQ(code(StpState::kForwarding), ADP_STG_STATE_FORWARDING);
    EXPECT_EQ(ADP_STG_STATE_RELEASED, ADP_STG_STATE_FORWARDING);
}

TEST(Codes, OfPortModes) {
    EXPECT_EQ(code(Trust::kPort), ADP_TRUST_PORT);
    EXPECT_EQ(code(Trust::kDot1p), ADP_TRUST_TAG);
    EXPECT_EQ(code(Trust::kDscp), ADP_TRUST_DSCP);
    EXPECT_EQ(code(Trust::kBoth), ADP_TRUST_DSCP_OR_TAG);
    EXPECT_EQ(code(DoubleTag::kOff), ADP_DOUBLE_TAG_OFF);
    EXPECT_EQ(code(DoubleTag::kInternal), ADP_DOUBLE_TAG_PROVIDER);
    EXPECT_EQ(code(DoubleTag::kExternal), ADP_DOUBLE_TAG_CUSTOMER);
    EXPECT_EQ(code(SchedulerMode::kStrict), ADP_SCHEDULING_STRICT);
    EXPECT_EQ(code(SchedulerMode::kRoundRobin), ADP_SCHEDULING_ROUND_ROBIN);
    EXPECT_EQ(code(SchedulerMode::kWeighted), ADP_SCHEDULING_WEIGHTED);
}

TEST(Codes, OfLearning) {
    const auto is = [](int number, bool learns, bool passes_unknown, bool tells_cpu) {
        const auto mode = chip::find_learn_mode(number);
        return mode && mode->learns == learns && mode->passes_unknown == passes_unknown && mode->tells_cpu == tells_cpu;
    };
    EXPECT_TRUE(is(ADP_LEARN_CLOSED, false, false, false));
    EXPECT_TRUE(is(ADP_LEARN_NORMAL, true, true, false));
    EXPECT_TRUE(is(ADP_LEARN_OPEN, true, true, false));
    EXPECT_TRUE(is(ADP_LEARN_OFF, false, true, false));
    EXPECT_TRUE(is(ADP_LEARN_PENDING, false, false, true));
}

TEST(Codes, OfFramesThatNothingMatches) {
    EXPECT_EQ(code(GroupMiss::kFlood), ADP_MCAST_MISS_FLOOD);
    EXPECT_EQ(code(GroupMiss::kDrop), ADP_MCAST_MISS_DROP);
    EXPECT_EQ(code(GroupMiss::kToCpu), ADP_MCAST_MISS_TO_CPU);
    EXPECT_EQ(code(MissAction::kNone), ADP_FP_MISS_NONE);
    EXPECT_EQ(code(MissAction::kDrop), ADP_FP_MISS_DROP);
    EXPECT_EQ(code(MissAction::kCopyToCpu), ADP_FP_MISS_COPY_TO_CPU);
    EXPECT_EQ(code(MissAction::kToCpu), ADP_FP_MISS_TO_CPU);
}

TEST(Codes, OfStormsAndBalancing) {
    const auto code_of = [](StormType type) { return code(chip::kStormTypeTable[chip::index_of(type)].code); };
    EXPECT_EQ(code_of(StormType::kBroadcast), ADP_STORM_BROADCAST);
    EXPECT_EQ(code_of(StormType::kMulticast), ADP_STORM_MULTICAST);
    EXPECT_EQ(code_of(StormType::kUnknownUnicast), ADP_STORM_UNKNOWN_UNICAST);
    EXPECT_EQ(code_of(StormType::kJoint), ADP_STORM_TOGETHER);
    EXPECT_EQ(code(chip::kFirstBalanceMode), ADP_BALANCE_DST_MAC);
    EXPECT_EQ(code(chip::kFirstIpBalanceMode), ADP_BALANCE_DST_IP);
    EXPECT_EQ(code(chip::kLastBalanceMode), ADP_BALANCE_SRC_DST_IP);
}

}  // namespace codes_test
}  // namespace vdevice::driver
