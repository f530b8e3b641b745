// The receive and the mux machine of a port, one event after the other.
#include <functional>
#include <vector>

#include "switchd/lacp/testing/system_fixture.h"

namespace switchd::lacp {
namespace machines_test {

using namespace test;

constexpr PortSettings kSlow = {.key = kKey};

class LacpReceive : public SystemTest {};
class LacpMux : public SystemTest {};

TEST_F(LacpReceive, APartnerThatIsNotHeardIsGivenUpAfterThreeSeconds) {
    system_.set_port(1, kSlow, now_);
    EXPECT_EQ(status(1).receive, ReceiveState::kPortDisabled);
    system_.set_link(1, true, true, now_);
    EXPECT_EQ(status(1).receive, ReceiveState::kExpired);
    EXPECT_TRUE(status(1).actor.has(state::kExpired));
    pass(milliseconds(2999));
    EXPECT_EQ(status(1).receive, ReceiveState::kExpired);
    pass(milliseconds(1));
    EXPECT_EQ(status(1).receive, ReceiveState::kDefaulted);
    EXPECT_FALSE(status(1).actor.has(state::kExpired));
    EXPECT_TRUE(status(1).actor.has(state::kDefaulted));
    EXPECT_EQ(status(1).partner, Info{});
}

TEST_F(LacpReceive, APartnerIsKnownUntilItsTimeout) {
    for (const auto &[settings, timeout] : {std::pair{kFast, seconds(3)}, std::pair{kSlow, seconds(90)}}) {
        add(1, settings);
        hear(1, words(1));
        EXPECT_EQ(status(1).receive, ReceiveState::kCurrent);
        EXPECT_EQ(status(1).partner.system, kPartner);
        EXPECT_FALSE(status(1).actor.has(state::kDefaulted));
        pass(timeout - milliseconds(1));
        EXPECT_EQ(status(1).receive, ReceiveState::kCurrent);
        pass(milliseconds(1));
        EXPECT_EQ(status(1).receive, ReceiveState::kExpired);
        EXPECT_EQ(status(1).partner.system, kPartner);
        pass(seconds(3));
        EXPECT_EQ(status(1).receive, ReceiveState::kDefaulted);
        EXPECT_EQ(status(1).partner, Info{});
        system_.remove_port(1, now_);
    }
}

TEST_F(LacpReceive, HalfDuplexTurnsTheProtocolOff) {
    use(1);
    system_.set_link(1, true, false, now_);
    EXPECT_EQ(status(1).receive, ReceiveState::kLacpDisabled);
    EXPECT_EQ(status(1).mux, MuxState::kDetached);
    sent(1);
    hear(1, words(1));
    pass(seconds(10));
    EXPECT_EQ(status(1).receive, ReceiveState::kLacpDisabled);
    EXPECT_EQ(sent(1).size(), 0U);
    system_.set_link(1, true, true, now_);
    EXPECT_EQ(status(1).receive, ReceiveState::kExpired);
}

TEST_F(LacpReceive, NothingIsHeardWithoutALink) {
    system_.set_port(1, kFast, now_);
    hear(1, words(1));
    EXPECT_EQ(status(1).receive, ReceiveState::kPortDisabled);
    EXPECT_EQ(status(1).partner, Info{});
}

TEST_F(LacpReceive, APartnerThatWasMovedIsForgottenWhereItWas) {
    use(1);
    system_.set_link(1, false, false, now_);
    EXPECT_EQ(status(1).partner.port, 1) << "kept, since the cable may come back";
    add(2);
    Lacpdu moved = words(2);
    moved.actor.port = 1;
    hear(2, moved);
    EXPECT_EQ(status(1).partner, Info{});
    EXPECT_EQ(status(2).partner.port, 1);
}

TEST_F(LacpReceive, APartnerThatIsMistakenAboutUsIsOutOfSyncAndCorrected) {
    const std::vector<std::function<void(Info &)>> mistakes = {
        [](Info &us) { us.system.priority = 1; },
        [](Info &us) { us.system.mac[5] = 0x55; },
        [](Info &us) { us.key = 99; },
        [](Info &us) { us.port_priority = 1; },
        [](Info &us) { us.port = 99; },
        [](Info &us) { us.set(state::kAggregation, false); },
    };
    use(1);
    for (size_t i = 0; i < mistakes.size(); ++i) {
        pass_hearing(seconds(3), 1);
        ASSERT_EQ(status(1).mux, MuxState::kDistributing);
        pass(seconds(1));
        sent(1);
        Lacpdu pdu = words(1);
        mistakes[i](pdu.partner);
        hear(1, pdu);
        EXPECT_FALSE(status(1).partner.has(state::kSynchronization)) << i;
        EXPECT_EQ(status(1).mux, MuxState::kAttached) << i;
        EXPECT_EQ(sent(1).size(), 1U) << i;
    }
}

TEST_F(LacpReceive, APartnerOfAnotherIdentityStartsAgain) {
    const std::vector<std::function<void(Info &)>> changes = {
        [](Info &partner) { partner.system.priority = 1; },
        [](Info &partner) { partner.system.mac[5] = 0x55; },
        [](Info &partner) { partner.key = 99; },
        [](Info &partner) { partner.port_priority = 1; },
        [](Info &partner) { partner.port = 99; },
    };
    for (size_t i = 0; i < changes.size(); ++i) {
        use(1);
        Lacpdu pdu = words(1);
        changes[i](pdu.actor);
        hear(1, pdu);
        EXPECT_EQ(status(1).mux, MuxState::kWaiting) << i;
        EXPECT_FALSE(status(1).actor.has(state::kSynchronization)) << i;
        system_.remove_port(1, now_);
    }
}

TEST_F(LacpReceive, APartnerThatCannotAggregateNeedNotKnowUs) {
    add(1);
    Lacpdu pdu = words(1, kInUse & ~state::kAggregation);
    pdu.partner = {};
    hear(1, pdu);
    EXPECT_TRUE(status(1).partner.has(state::kSynchronization));
}

TEST_F(LacpReceive, APassivePartnerIsInSyncOnlyWithAnActiveEnd) {
    for (const bool is_active : {true, false}) {
        add(1, {.key = kKey, .is_active = is_active, .is_fast = true});
        Lacpdu pdu = words(1, kInUse & ~state::kActive);
        pdu.partner.set(state::kActive, true);
        hear(1, pdu);
        EXPECT_EQ(status(1).partner.has(state::kSynchronization), is_active);
    }
}

TEST_F(LacpReceive, APartnerFromBeforeTheLinkWasUpIsNotSelected) {
    use(1);
    system_.set_link(1, false, false, now_);
    system_.set_link(1, true, true, now_);
    EXPECT_EQ(status(1).receive, ReceiveState::kExpired);
    EXPECT_EQ(status(1).partner.system, kPartner);
    EXPECT_EQ(status(1).selected, Selected::kUnselected);
}

TEST_F(LacpMux, APortComesIntoUseStepByStep) {
    add(1);
    EXPECT_EQ(status(1).mux, MuxState::kDetached);
    hear(1, words(1, kInSync & ~state::kSynchronization));
    EXPECT_EQ(status(1).selected, Selected::kSelected);
    EXPECT_EQ(status(1).mux, MuxState::kWaiting);
    pass(milliseconds(1999));
    EXPECT_EQ(status(1).mux, MuxState::kWaiting);
    pass(milliseconds(1));
    EXPECT_EQ(status(1).mux, MuxState::kAttached);
    EXPECT_EQ(status(1).actor.state,
              state::kActive | state::kShortTimeout | state::kAggregation | state::kSynchronization);
    hear(1, words(1, kInSync));
    EXPECT_EQ(status(1).mux, MuxState::kCollecting);
    EXPECT_EQ(status(1).actor.state & (state::kCollecting | state::kDistributing), state::kCollecting);
    hear(1, words(1, kInSync | state::kCollecting));
    EXPECT_EQ(status(1).mux, MuxState::kDistributing);
    EXPECT_EQ(status(1).actor.state & (state::kCollecting | state::kDistributing),
              state::kCollecting | state::kDistributing);
}

TEST_F(LacpMux, EachStepThatThePartnerWaitsForIsToldAtOnce) {
    add(1);
    hear(1, words(1, kInSync));
    pass(milliseconds(1999));
    sent(1);
    pass(milliseconds(1));
    ASSERT_EQ(status(1).mux, MuxState::kCollecting);
    EXPECT_EQ(sent(1).back().actor.state, kInSync | state::kCollecting);
    hear(1, words(1));
    EXPECT_EQ(status(1).mux, MuxState::kDistributing);
    EXPECT_EQ(sent(1).size(), 0U);
    hear(1, words(1, kInSync));
    EXPECT_EQ(status(1).mux, MuxState::kCollecting);
    const auto told = sent(1);
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].actor.state, kInSync | state::kCollecting);
}

TEST_F(LacpMux, APortGoesBackAsThePartnerDoes) {
    use(1);
    hear(1, words(1, kInSync));
    EXPECT_EQ(status(1).mux, MuxState::kCollecting) << "the partner no longer collects";
    hear(1, words(1, kInUse & ~state::kSynchronization));
    EXPECT_EQ(status(1).mux, MuxState::kAttached);
    hear(1, words(1));
    EXPECT_EQ(status(1).mux, MuxState::kDistributing);
    system_.set_link(1, false, false, now_);
    EXPECT_EQ(status(1).mux, MuxState::kDetached);
    EXPECT_EQ(status(1).actor.state & kInUse, state::kActive | state::kShortTimeout | state::kAggregation);
}

TEST_F(LacpMux, ASilentPartnerIsNotUsed) {
    use(1);
    hear(1, words(1));
    pass(milliseconds(2999));
    EXPECT_EQ(status(1).mux, MuxState::kDistributing);
    pass(milliseconds(1));
    EXPECT_EQ(status(1).mux, MuxState::kAttached);
    pass(seconds(3));
    EXPECT_EQ(status(1).mux, MuxState::kDetached);
}

TEST_F(LacpMux, PortsOfAGroupAttachTogether) {
    add(1);
    add(2);
    hear(1, words(1));
    pass(seconds(1));
    hear(1, words(1));
    hear(2, words(2));
    pass(seconds(1));
    EXPECT_EQ(status(1).mux, MuxState::kWaiting) << "for the other one";
    pass(seconds(1));
    EXPECT_EQ(status(1).mux, MuxState::kDistributing);
    EXPECT_EQ(status(2).mux, MuxState::kDistributing);
}

TEST_F(LacpMux, OtherGroupsAreNotWaitedFor) {
    add(1);
    add(2, {.key = kKey + 1, .is_fast = true});
    hear(1, words(1));
    pass(seconds(1));
    hear(2, words(2));
    pass(seconds(1));
    EXPECT_EQ(status(1).mux, MuxState::kDistributing);
    EXPECT_EQ(status(2).mux, MuxState::kWaiting);
}

}  // namespace machines_test
}  // namespace switchd::lacp
