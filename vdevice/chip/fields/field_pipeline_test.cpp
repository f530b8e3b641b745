// Where rules send frames on their way through the chip, what they drop, count and meter.
#include <gtest/gtest.h>

#include "vdevice/chip/testing/field_fixture.h"

namespace vdevice::chip {
namespace field_pipeline_test {

using namespace std::chrono_literals;
using namespace test;

class FieldPipeline : public FieldRulesTest {};

using Ports = std::vector<int>;

TEST_F(FieldPipeline, RedirectionToASetSkipsTheIngressPortAndPortsThatAreDown) {
    rule({{kRedirectPorts, 1U << kA | 1U << kB | 1U << 10 | 1U << kCpu}});
    EXPECT_EQ(outputs(kA, kFlooded), (Ports{kCpu, kB}));
    chip_.set_link(kB, false);
    chip_.set_link(kCpu, false);
    EXPECT_TRUE(outputs(kA, kFlooded).empty());
    EXPECT_EQ(dropped(kA, Drop::kNoDestination), 1U);
}

TEST_F(FieldPipeline, RedirectionDoesNotCloseALoopThatSpanningTreeHasCut) {
    constexpr uint32_t kBlocking = 1;
    rule({{kRedirectPorts, 1U << kB | 1U << kC}});
    ASSERT_EQ(chip_.stp().set_state(StpGroups::kDefault, kB, kBlocking), Status::kOk);
    EXPECT_EQ(outputs(kA, kFlooded), (Ports{kC}));
    ASSERT_EQ(chip_.stp().set_state(StpGroups::kDefault, kA, kBlocking), Status::kOk);
    EXPECT_TRUE(outputs(kA, kFlooded).empty());
    EXPECT_EQ(dropped(kA, Drop::kStpBlocked), 1U);
}

TEST_F(FieldPipeline, ADropBeatsEverything) {
    add_rule(3, 768, {{kRedirectPort, kC}, {kCopyToCpu}, {kToCpu}, {kPermit}, {kCount, 9}});
    add_rule(9, 0, {{kDropIt}});
    chip_.traps().lacp = true;
    EXPECT_TRUE(outputs(kA, kFlooded).empty());
    const Octets lacp = Octets{0x01, 0x80, 0xC2, 0, 0, 2} + station(1) + test::octets16(0x8809) + Octets(46, 1);
    EXPECT_TRUE(outputs(kA, lacp).empty());
    EXPECT_EQ(outputs(kB, lacp), Ports{kCpu});
    EXPECT_EQ(dropped(kA, Drop::kRule), 2U);
    EXPECT_EQ(chip_.macs().size(), 0U) << "nothing is learned";
    EXPECT_EQ(count(9, CounterType::kFrames), 2U) << "a rule counts what meets it";
}

TEST_F(FieldPipeline, ACopyGoesToTheCpuOnce) {
    rule({{kCopyToCpu}});
    EXPECT_EQ(outputs(kA, kFlooded), (Ports{kCpu, kB, kC}));
    send(kB, station(9) + station(2) + kPayload);
    EXPECT_EQ(outputs(kA, station(2) + station(1) + kPayload), (Ports{kCpu, kB}));
    ASSERT_EQ(change(kA, [](Port &port) { port.learning = *find_learn_mode(8); }), Status::kOk);
    EXPECT_EQ(outputs(kA, kBroadcast + station(7) + kPayload), Ports{kCpu});
    chip_.set_link(kCpu, false);
    EXPECT_EQ(outputs(kB, station(1) + station(2) + kPayload), Ports{kA});
}

TEST_F(FieldPipeline, AMeterHoldsAFlowToItsRate) {
    constexpr uint32_t kRate = 1000;  // kbit/s
    rule({{kMeter, 0, 5}});
    EXPECT_EQ(outputs(kA, kFlooded).size(), 3U) << "the meter is not there";
    ASSERT_EQ(chip_.fields().meters().set(5, kRate, 1s), Status::kOk);
    const Octets frame = kAddresses + kPayload + Octets(1000 - 60 - 24, 0);
    size_t passed = 0;
    for (int i = 0; i < 10000; ++i) {
        passed += outputs(kA, frame, 1s + i * 1ms).empty() ? 0U : 1U;
    }
    EXPECT_NEAR(static_cast<double>(passed), 1250, 1250 * 0.01) << "ten seconds of frames of 1000 octets";
    EXPECT_EQ(dropped(kA, Drop::kMeter), 10000 - passed);
    EXPECT_EQ(outputs(kB, frame).size(), 3U) << "others pass";
}

TEST_F(FieldPipeline, TheLowestGroupWinsOfEachKindOfAction) {
    add_rule(9, 0, {{kSetDscp, 1}, {kSetPriority, 1}, {kCount, 1}, {kRedirectPort, kB}});
    add_rule(3, 768, {{kSetPriority, 3}, {kRedirectPorts, 1U << kC}});
    add_rule(1, 1280, {{kCount, 2}});
    const auto sent = send(kA, kAddresses + ipv4({kUdp}, kDatagram));
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(sent[0].first, kC) << "a redirection is one kind, however it is put";
    EXPECT_EQ(sent[0].second[kHeaderBytes + 1], 1 << 2) << "only group 9 has a DSCP";
    EXPECT_EQ(count(2, CounterType::kFrames), 1U);
    EXPECT_EQ(count(1, CounterType::kFrames), 0U);
}

TEST_F(FieldPipeline, APairCountsMetersAndCopiesOnce) {
    for (const uint32_t entry : {1280U, 1281U}) {
        ASSERT_EQ(table().create(1, entry), Status::kOk);
    }
    ASSERT_EQ(table().join(1280), Status::kOk);
    for (const uint32_t entry : {1280U, 1281U}) {
        add_actions(entry, {{kCount, 3}, {kMeter, 0, 0}, {kCopyToCpu}});
    }
    ASSERT_EQ(chip_.fields().meters().set(0, 1000, 1s), Status::kOk);
    EXPECT_EQ(outputs(kA, kFlooded), (Ports{kCpu, kB, kC}));
    EXPECT_EQ(count(3, CounterType::kFrames), 1U);
    EXPECT_EQ(chip_.fields().meters().find(0)->passed(), 1U);
}

TEST_F(FieldPipeline, WhatTheCpuSwitchesMeetsRulesAndWhatItDirectsDoesNot) {
    rule_for_all({{kSetPriority, 7}, {kCount, 0}});
    tag_vlan_1();
    const Octets tagged = kAddresses + test::vlan_tag(0xE001) + kPayload;
    EXPECT_EQ(send(kCpu, kAddresses + test::transmit_tag(1, 0) + kPayload)[0], (Sent{kA, tagged}));
    EXPECT_EQ(count(0, CounterType::kOctets), 60U) << "without the switch tag";
    EXPECT_EQ(send(kCpu, kAddresses + test::transmit_tag(3, kA) + kPayload), (std::vector<Sent>{{kA, kFlooded}}));
    EXPECT_EQ(count(0, CounterType::kFrames), 1U);
    ASSERT_EQ(table().qualify(640, qualifier(Field::kInPorts, 1U << kCpu, kAll)), Status::kOk);
    add_actions(640, {{kDropIt}});
    EXPECT_TRUE(send(kCpu, kAddresses + test::transmit_tag(1, 0) + kPayload).empty()) << "its port is 0";
    EXPECT_EQ(outputs(kA, kFlooded).size(), 3U);
}

TEST_F(FieldPipeline, WhatTheCpuSwitchesIsNotHandedBackToIt) {
    rule_for_all({{kCopyToCpu}});
    const Octets frame = kAddresses + test::transmit_tag(1, 0) + kPayload;
    EXPECT_EQ(outputs(kCpu, frame), (Ports{kA, kB, kC}));
    add_actions(640, {{kToCpu}});
    EXPECT_TRUE(outputs(kCpu, frame).empty());
    EXPECT_EQ(dropped(kCpu, Drop::kSamePort), 1U);
}

TEST_F(FieldPipeline, MissActionsAreForFramesThatMeetNoRule) {
    EXPECT_EQ(chip_.set_miss_action(32, MissAction::kDrop), Status::kNoPort);
    EXPECT_EQ(chip_.set_miss_action(-1, MissAction::kDrop), Status::kNoPort);
    ASSERT_EQ(chip_.set_miss_action(kB, MissAction::kDrop), Status::kOk);
    EXPECT_TRUE(outputs(kB, kFlooded).empty()) << "also when there are no rules at all";
    EXPECT_EQ(dropped(kB, Drop::kRule), 1U);
    EXPECT_EQ(outputs(kA, kFlooded).size(), 3U) << "other ports have their own";
    rule_for_all({});
    EXPECT_EQ(outputs(kB, kFlooded).size(), 3U) << "a rule without actions is met all the same";
    ASSERT_EQ(table().destroy(640), Status::kOk);
    ASSERT_EQ(chip_.set_miss_action(kB, MissAction::kToCpu), Status::kOk);
    EXPECT_EQ(outputs(kB, kFlooded), Ports{kCpu});
    ASSERT_EQ(chip_.set_miss_action(kB, MissAction::kCopyToCpu), Status::kOk);
    send(kA, station(9) + station(1) + kPayload);
    EXPECT_EQ(outputs(kB, station(1) + station(2) + kPayload), (Ports{kCpu, kA}));
    ASSERT_EQ(chip_.set_miss_action(kB, MissAction::kNone), Status::kOk);
    EXPECT_EQ(outputs(kB, station(1) + station(2) + kPayload), Ports{kA});
}

TEST_F(FieldPipeline, AMirrorGetsTheFrameAsItCameIn) {
    rule({{kMirror, 2}, {kSetDscp, 46}, {kRedirectPort, kB}});
    chip_.mirrors().set_enabled(true);
    const Octets frame = kAddresses + test::vlan_tag(0x6001) + ipv4({kUdp}, kDatagram);
    EXPECT_EQ(outputs(kA, frame), Ports{kB}) << "the session has no flow mirror";
    ASSERT_EQ(chip_.mirrors().set_flow_destination(2, kC), Status::kOk);
    const auto sent = send(kA, frame);
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(sent[0], (Sent{kC, frame}));
    EXPECT_EQ(sent[1].first, kB);
    add_actions(768, {{kDropIt}});
    EXPECT_TRUE(outputs(kA, frame).empty()) << "what is dropped is not copied";
}

TEST_F(FieldPipeline, AResetForgetsEverything) {
    rule({{kDropIt}, {kCount, 1}});
    ASSERT_EQ(chip_.fields().meters().set(1, 100, 0s), Status::kOk);
    chip_.fields().meters().exclude_gap();
    ASSERT_EQ(chip_.set_miss_action(kB, MissAction::kDrop), Status::kOk);
    send(kA, kFlooded);
    chip_.fields().reset();
    EXPECT_EQ(outputs(kA, kFlooded).size(), 3U);
    EXPECT_EQ(outputs(kB, kFlooded).size(), 3U);
    EXPECT_EQ(count(1, CounterType::kFrames), 0U);
    EXPECT_FALSE(chip_.fields().meters().find(1));
    EXPECT_EQ(table().find(768), nullptr);
    EXPECT_FALSE(chip_.fields().meters().counts_gap());
}

TEST_F(FieldPipeline, TheMeterThatAnEntryNamesIsTakenAway) {
    FieldProcessor &fields = chip_.fields();
    rule({{kMeter, 0, 5}});
    ASSERT_EQ(fields.meters().set(5, 100, 0s), Status::kOk);
    ASSERT_EQ(fields.meters().set(6, 100, 0s), Status::kOk);
    ASSERT_EQ(table().clear_actions(768), Status::kOk);
    EXPECT_EQ(fields.remove_meter_of(768), Status::kOk) << "installed, though no longer staged";
    EXPECT_FALSE(fields.meters().find(5));
    EXPECT_EQ(fields.remove_meter_of(768), Status::kMeterMissing) << "no longer there";
    ASSERT_EQ(table().create(3, 769), Status::kOk);
    EXPECT_EQ(fields.remove_meter_of(769), Status::kMeterMissing) << "names none";
    Action action;
    ASSERT_EQ(make_action(kMeter, {{}, 6}, action), Status::kOk);
    ASSERT_EQ(table().add_action(769, action), Status::kOk);
    EXPECT_EQ(fields.remove_meter_of(769), Status::kOk) << "staged, though not installed";
    EXPECT_EQ(fields.remove_meter_of(770), Status::kFieldMissing);
    EXPECT_EQ(fields.remove_meter_of(kAll), Status::kFieldRange);
}

TEST(FieldActions, ParametersOutOfRangeAreRefused) {
    const auto refusal = [](uint32_t code, uint32_t word, uint32_t second = 0) {
        Action action;
        const Status status = make_action(code, {{word}, second}, action);
        EXPECT_EQ(action.code, status == Status::kOk ? code : 0) << "a refused action is not made";
        return status;
    };
    EXPECT_EQ(refusal(kSetDscp, 63), Status::kOk);
    EXPECT_EQ(refusal(kSetDscp, 64), Status::kBadArgument);
    EXPECT_EQ(refusal(kSetPriority, 7), Status::kOk);
    EXPECT_EQ(refusal(kSetPriority, 8), Status::kBadArgument);
    EXPECT_EQ(refusal(kRedirectPort, 31), Status::kOk);
    EXPECT_EQ(refusal(kRedirectPort, 32), Status::kNoPort);
    EXPECT_EQ(refusal(kRedirectPort, kAll), Status::kNoPort);
    EXPECT_EQ(refusal(kMeter, 12345, 63), Status::kOk);
    EXPECT_EQ(refusal(kMeter, 12345, 64), Status::kMeterRange);
    EXPECT_EQ(refusal(kSetVlan, 1), Status::kOk);
    EXPECT_EQ(refusal(kSetVlan, 4094), Status::kOk);
    EXPECT_EQ(refusal(kSetVlan, 4095), Status::kVlanRange);
    EXPECT_EQ(refusal(kSetVlan, 0), Status::kVlanRange);
    EXPECT_EQ(refusal(kCount, 255), Status::kOk);
    EXPECT_EQ(refusal(kCount, 256), Status::kCounterRange);
    EXPECT_EQ(refusal(kMirror, 3), Status::kOk);
    EXPECT_EQ(refusal(kMirror, 4), Status::kMirrorSession);
    for (const uint32_t code : {0U, 2U, 52U, 54U, 199U, 1000U, kAll}) {
        EXPECT_EQ(refusal(code, 0), Status::kFieldAction) << code;
    }
    Action action;
    EXPECT_EQ(make_action(kRedirectPorts, {{kAll}, 0}, action), Status::kOk);
    EXPECT_EQ(make_action(kRedirectPorts, {{0, 1}, 0}, action), Status::kNoPort);
}

}  // namespace field_pipeline_test
}  // namespace vdevice::chip
