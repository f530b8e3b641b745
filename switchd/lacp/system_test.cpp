// A system as a whole: ports that come and go, markers, hostile frames, a process that follows another one.
#include "switchd/lacp/system.h"

#include "switchd/lacp/testing/system_fixture.h"

namespace switchd::lacp {
namespace system_test {

using namespace test;

class LacpSystem : public SystemTest {
  protected:
    static std::vector<uint8_t> octets(const Frame &frame) { return {frame.begin(), frame.end()}; }
};

TEST_F(LacpSystem, LeavesFramesAloneThatAreOthers) {
    add(1);
    const auto lacpdu = octets(frame_of(words(1), kPartner.mac));
    auto oam = lacpdu;
    oam[14] = 3;
    auto other = lacpdu;
    other[5] = 0x0E;
    EXPECT_FALSE(system_.receive(1, oam, now_));
    EXPECT_FALSE(system_.receive(1, other, now_));
    EXPECT_FALSE(system_.receive(1, {}, now_));
    EXPECT_FALSE(system_.receive(2, lacpdu, now_)) << "a port that it has not";
    EXPECT_EQ(status(1).counters.unknown_in, 1U);
    EXPECT_TRUE(system_.receive(1, lacpdu, now_));
    EXPECT_EQ(status(1).counters.lacpdus_in, 1U);
}

TEST_F(LacpSystem, IllegalFramesAreCountedAndChangeNothing) {
    use(1);
    auto frame = octets(frame_of(words(1, 0), kPartner.mac));
    frame[17] = 19;
    const PortStatus before = status(1);
    EXPECT_TRUE(system_.receive(1, frame, now_));
    PortStatus after = status(1);
    EXPECT_EQ(after.counters.illegal_in, before.counters.illegal_in + 1);
    after.counters = before.counters;
    EXPECT_EQ(after, before);
}

TEST_F(LacpSystem, AnswersMarkers) {
    add(1);
    frames_.clear();
    const Marker marker = {false, 9, kPartner.mac, 0x12345678};
    EXPECT_TRUE(system_.receive(1, frame_of(marker, kPartner.mac), now_));
    ASSERT_EQ(frames_.size(), 1U);
    EXPECT_EQ(frames_[0].first, 1);
    Marker response = marker;
    response.is_response = true;
    EXPECT_EQ(frames_[0].second, octets(frame_of(response, kOwn.mac)));
    frames_.clear();
    EXPECT_TRUE(system_.receive(1, frame_of(response, kPartner.mac), now_));
    EXPECT_EQ(frames_.size(), 0U);
    const Counters &counters = status(1).counters;
    EXPECT_EQ(counters.markers_in, 1U);
    EXPECT_EQ(counters.marker_responses_out, 1U);
    EXPECT_EQ(counters.marker_responses_in, 1U);
}

TEST_F(LacpSystem, AStormIsBounded) {
    add(1);
    frames_.clear();
    const Marker marker = {false, 9, kPartner.mac, 1};
    for (int i = 0; i < 10000; ++i) {
        EXPECT_TRUE(system_.receive(1, frame_of(marker, kPartner.mac), now_));
    }
    EXPECT_EQ(frames_.size(), 20U);
    EXPECT_EQ(status(1).counters.too_many_in, 10000U - 20);
    pass(seconds(1));
    hear(1, words(1));
    EXPECT_EQ(status(1).receive, ReceiveState::kCurrent);
}

TEST_F(LacpSystem, ItsOwnFramesDoNotMakeAGroup) {
    add(1);
    add(2);
    for (int second = 0; second < 10; ++second) {
        for (const auto &[port, frame] : std::exchange(frames_, {})) {
            system_.receive(static_cast<uint16_t>(3 - port), frame, now_);
        }
        pass(seconds(1));
    }
    for (const uint16_t port : {uint16_t{1}, uint16_t{2}}) {
        EXPECT_EQ(status(port).receive, ReceiveState::kCurrent);
        EXPECT_EQ(status(port).partner.system, kOwn);
        EXPECT_EQ(status(port).mux, MuxState::kDetached);
    }
}

TEST_F(LacpSystem, APartnerThatCannotAggregateIsNotUsed) {
    add(1);
    pass_hearing(seconds(10), 1, kInUse & ~state::kAggregation);
    EXPECT_EQ(status(1).selected, Selected::kUnselected);
    EXPECT_EQ(system_.group(kKey), GroupStatus{});
}

TEST_F(LacpSystem, TellsWhatAGroupHas) {
    use(1);
    use(2);
    hear(1, words(1));
    EXPECT_EQ(system_.group(kKey), (GroupStatus{PartnerGroup{kPartner, kPartnerKey}, {1, 2}}));
    EXPECT_EQ(system_.group(kKey + 1), GroupStatus{});
    system_.remove_port(1, now_);
    system_.remove_port(2, now_);
    EXPECT_EQ(system_.group(kKey), GroupStatus{});
    EXPECT_EQ(system_.find(1), nullptr);
    EXPECT_EQ(system_.next_deadline(), std::nullopt);
}

TEST_F(LacpSystem, APartnerIsToldOfARemovedPort) {
    use(1);
    pass(seconds(1));
    sent(1);
    system_.remove_port(1, now_);
    const auto last = sent(1);
    ASSERT_EQ(last.size(), 1U);
    EXPECT_EQ(last[0].actor.state, state::kActive | state::kShortTimeout | state::kAggregation);
}

TEST_F(LacpSystem, SettingsChangeInPlace) {
    use(1);
    pass(seconds(1));
    sent(1);
    system_.set_port(1, kFast, now_);
    EXPECT_EQ(sent(1).size(), 0U) << "the same settings";
    system_.set_port(1, {.key = kKey, .priority = 5}, now_);
    EXPECT_EQ(status(1).mux, MuxState::kDistributing);
    const auto told = sent(1);
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].actor.port_priority, 5);
    EXPECT_FALSE(told[0].actor.has(state::kShortTimeout));
    system_.set_port(1, {.key = kKey + 1}, now_);
    EXPECT_EQ(status(1).mux, MuxState::kDetached) << "another group";
    EXPECT_EQ(status(1).receive, ReceiveState::kExpired) << "the link is still up";
}

TEST_F(LacpSystem, APortThatIsResumedDistributesAtOnce) {
    system_.resume_port(1, kFast, words_of_use(1), now_);
    EXPECT_EQ(status(1).mux, MuxState::kDetached) << "the link is not known yet";
    system_.set_link(1, true, true, now_);
    EXPECT_EQ(status(1).mux, MuxState::kDistributing);
    const auto first = sent(1);
    ASSERT_EQ(first.size(), 1U);
    EXPECT_EQ(first[0].actor.state, kInUse) << "as before, so that the partner goes on";
    EXPECT_EQ(first[0].partner, words_of_use(1));
    pass_hearing(seconds(100), 1);
    EXPECT_EQ(status(1).mux, MuxState::kDistributing);
}

TEST_F(LacpSystem, APortWhoseLinkIsKnownIsNotResumed) {
    add(1);
    system_.resume_port(1, kFast, words_of_use(1), now_);
    system_.set_link(1, true, true, now_);
    EXPECT_EQ(status(1).receive, ReceiveState::kExpired);
    EXPECT_EQ(status(1).mux, MuxState::kDetached);
}

TEST_F(LacpSystem, APortThatIsResumedInVainIsNotUsed) {
    system_.resume_port(1, kFast, words_of_use(1), now_);
    system_.set_link(1, true, true, now_);
    pass(seconds(3));
    EXPECT_EQ(status(1).mux, MuxState::kAttached);
    pass(seconds(3));
    EXPECT_EQ(status(1).mux, MuxState::kDetached);
    for (const bool was_down : {false, true}) {
        system_.remove_port(1, now_);
        system_.resume_port(1, kFast, words_of_use(1), now_);
        system_.set_link(1, !was_down, true, now_);
        Lacpdu contradiction = words(1, kInSync & ~state::kSynchronization);
        hear(1, contradiction);
        system_.set_link(1, true, true, now_);
        EXPECT_NE(status(1).mux, MuxState::kDistributing);
    }
}

}  // namespace system_test
}  // namespace switchd::lacp
