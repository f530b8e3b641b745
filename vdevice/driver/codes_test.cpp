// The public headers name the codes that the virtual device understands: name and code must mean the same.
#include <adp/adp.h>
#include <gtest/gtest.h>

#include <map>

#include "vdevice/chip/fields/field.h"
#include "vdevice/chip/fields/field_action.h"
#include "vdevice/chip/fields/field_processor.h"
#include "vdevice/chip/frame/switch_tag.h"
#include "vdevice/chip/queues/scheduler.h"
#include "vdevice/chip/rates/storm_control.h"
#include "vdevice/chip/tables/group_rules.h"
#include "vdevice/chip/tables/learn_mode.h"
#include "vdevice/chip/tables/phy.h"
#include "vdevice/chip/tables/port.h"
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

TEST(Codes, OfThePhysicalPort) {
    EXPECT_EQ(code(chip::Crossover::kAutomatic), ADP_MDIX_AUTO);
    EXPECT_EQ(code(chip::Crossover::kMdi), ADP_MDIX_MDI);
    EXPECT_EQ(code(chip::Crossover::kMdix), ADP_MDIX_MDIX);
    EXPECT_EQ(code(chip::Medium::kCopper), ADP_MEDIUM_COPPER);
    EXPECT_EQ(code(chip::Medium::kFibre), ADP_MEDIUM_FIBRE);
    EXPECT_EQ(code(chip::Phy::kHalfDuplex), ADP_DUPLEX_HALF);
    EXPECT_EQ(code(chip::Phy::kFullDuplex), ADP_DUPLEX_FULL);
    EXPECT_EQ(code(chip::Port::kLoopbackModes), ADP_LOOPBACK_PHY + 1);
}

TEST(Codes, OfTheSwitchTag) {
    EXPECT_EQ(code(chip::Opcode::kSwitched), ADP_OPCODE_SWITCH);
    EXPECT_EQ(code(chip::Opcode::kOnePort), ADP_OPCODE_PORT);
    EXPECT_EQ(code(chip::Opcode::kPorts), ADP_OPCODE_PORTS);
    EXPECT_EQ(code(chip::Opcode::kOnePortAsIs), ADP_OPCODE_PORT_AS_IS);
    EXPECT_EQ(code(chip::Opcode::kOnePortRaw), ADP_OPCODE_PORT_RAW);
    EXPECT_EQ(code(chip::Opcode::kPortsRaw), ADP_OPCODE_PORTS_RAW);
}

TEST(Codes, OfFieldActions) {
    const std::map<uint32_t, std::string_view> names = {
        {ADP_FP_ACTION_SET_DSCP, "set_dscp"},  {ADP_FP_ACTION_SET_PRIORITY, "set_priority"},
        {ADP_FP_ACTION_PORT, "redirect_port"}, {ADP_FP_ACTION_PORTS, "redirect_ports"},
        {ADP_FP_ACTION_METER, "meter"},        {ADP_FP_ACTION_PERMIT, "permit"},
        {ADP_FP_ACTION_DROP, "drop"},          {ADP_FP_ACTION_COPY_TO_CPU, "copy_to_cpu"},
        {ADP_FP_ACTION_TO_CPU, "to_cpu"},      {ADP_FP_ACTION_SET_VLAN, "set_vlan"},
        {ADP_FP_ACTION_COUNT, "count"},        {ADP_FP_ACTION_MIRROR, "mirror"}};
    std::map<uint32_t, std::string_view> actions;
    for (const chip::ActionInfo &action : chip::action_table()) {
        actions[action.code] = action.name;
    }
    EXPECT_EQ(actions, names);
}

TEST(Codes, OfFieldConditions) {
    EXPECT_EQ(code(chip::TagFormat::kNone), ADP_FP_INNER_TAG_NONE);
    EXPECT_EQ(code(chip::TagFormat::kPriority), ADP_FP_INNER_TAG_PRIORITY);
    EXPECT_EQ(code(chip::TagFormat::kVlan), ADP_FP_INNER_TAG_VLAN);
    EXPECT_EQ(code(chip::IpKind::kAny), ADP_FP_IP_TYPE_ANY);
    EXPECT_EQ(code(chip::IpKind::kNotIp), ADP_FP_IP_TYPE_NOT_IP);
    EXPECT_EQ(code(chip::IpKind::kIp), ADP_FP_IP_TYPE_IP);
    EXPECT_EQ(code(chip::IpKind::kArp), ADP_FP_IP_TYPE_ARP);
    EXPECT_EQ(code(chip::IpKind::kIpv4), ADP_FP_IP_TYPE_IP4);
    EXPECT_EQ(code(chip::IpKind::kIpv6), ADP_FP_IP_TYPE_IP6);
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
