// How often a port sends, and what it finds in a minute without use.
#include "switchd/lacp/testing/system_fixture.h"

namespace switchd::lacp {
namespace periodic_test {

using namespace test;

constexpr PortSettings kSlow = {.key = kKey};
constexpr PortSettings kPassive = {.key = kKey, .is_active = false, .is_fast = true};

class LacpPeriodic : public SystemTest {};
class LacpChurn : public SystemTest {};

TEST_F(LacpPeriodic, ThePartnerChoosesThePeriod) {
    use(1);
    sent(1);
    pass_hearing(seconds(60), 1);
    EXPECT_EQ(sent(1).size(), 60U);
    hear(1, words(1, kInUse & ~state::kShortTimeout));
    sent(1);
    pass_hearing(seconds(61), 1, kInUse & ~state::kShortTimeout);
    EXPECT_EQ(sent(1).size(), 2U);
    hear(1, words(1));
    EXPECT_EQ(sent(1).size(), 1U) << "at once when the partner wants to hear more";
}

TEST_F(LacpPeriodic, APartnerThatIsLateIsAskedOftener) {
    use(1, kSlow);
    hear(1, words(1, kInUse & ~state::kShortTimeout));
    pass(seconds(90));
    ASSERT_EQ(status(1).receive, ReceiveState::kExpired);
    sent(1);
    pass(milliseconds(2999));
    EXPECT_EQ(sent(1).size(), 2U);
}

TEST_F(LacpPeriodic, AMistakenPartnerIsReminded) {
    constexpr uint8_t kSlowly = kInUse & ~state::kShortTimeout;
    use(1);
    pass_hearing(seconds(2), 1, kSlowly);
    sent(1);
    Lacpdu late = words(1, kSlowly);
    late.partner.set(state::kSynchronization, false);
    hear(1, late);
    EXPECT_EQ(sent(1).size(), 1U);
    hear(1, late);
    EXPECT_EQ(sent(1).size(), 0U) << "not twice in a second";
    Lacpdu wrong = words(1, kSlowly);
    wrong.partner.set(state::kShortTimeout, false);
    hear(1, wrong);
    EXPECT_EQ(sent(1).size(), 1U) << "it would time out";
}

TEST_F(LacpPeriodic, WithoutPartnerAPortSendsAsOftenAsItWantsToHear) {
    add(1);
    add(2, kSlow);
    pass(seconds(4));
    sent(1);
    pass(seconds(60));
    EXPECT_EQ(sent(1).size(), 60U);
    pass(seconds(60));
    EXPECT_EQ(sent(2).size(), 2U);
}

TEST_F(LacpPeriodic, APassivePortSpeaksOnlyWithAnActivePartner) {
    add(1, kPassive);
    pass(seconds(100));
    hear(1, words(1, kInUse & ~state::kActive));
    pass(seconds(2));
    EXPECT_EQ(sent(1).size(), 0U);
    EXPECT_NE(status(1).mux, MuxState::kDistributing) << "nobody maintains the link";
    hear(1, words(1));
    EXPECT_EQ(sent(1).size(), 1U);
}

TEST_F(LacpPeriodic, AtMostThreeAreSentInASecond) {
    use(1);
    hear(1, words(1));
    pass(milliseconds(1500));
    sent(1);
    for (int i = 0; i < 5; ++i) {
        hear(1, words(1, kInUse & ~state::kSynchronization));
        hear(1, words(1));
    }
    EXPECT_EQ(sent(1).size(), 2U) << "a reminder was sent in this second";
    pass(milliseconds(499));
    EXPECT_EQ(sent(1).size(), 0U);
    pass(milliseconds(1));
    EXPECT_EQ(sent(1).size(), 1U) << "what waited";
}

TEST_F(LacpPeriodic, RemindersLeaveRoomForChanges) {
    add(1);
    pass(milliseconds(5500));
    sent(1);
    Lacpdu mistaken = words(1);
    mistaken.partner.set(state::kSynchronization, true);
    hear(1, mistaken);
    EXPECT_EQ(sent(1).size(), 0U) << "there was a reminder half a second ago";
    pass(milliseconds(500));
    EXPECT_EQ(sent(1).size(), 1U);
    hear(1, words(1, kInSync & ~state::kSynchronization));
    pass(milliseconds(1499));
    sent(1);
    pass(milliseconds(1));
    EXPECT_EQ(status(1).mux, MuxState::kAttached);
    hear(1, words(1, kInSync));
    EXPECT_EQ(status(1).mux, MuxState::kCollecting);
    EXPECT_EQ(sent(1).size(), 2U);
}

TEST_F(LacpChurn, IsFoundAfterAMinute) {
    add(1);
    EXPECT_EQ(status(1).actor_churn.state, ChurnState::kMonitor);
    pass(milliseconds(59999));
    EXPECT_EQ(status(1).actor_churn.state, ChurnState::kMonitor);
    pass(milliseconds(1));
    EXPECT_EQ(status(1).actor_churn, (Churn{ChurnState::kChurn, 1}));
    EXPECT_EQ(status(1).partner_churn, (Churn{ChurnState::kChurn, 1}));
    pass_hearing(seconds(3), 1);
    EXPECT_EQ(status(1).actor_churn, (Churn{ChurnState::kNoChurn, 1}));
    EXPECT_EQ(status(1).partner_churn, (Churn{ChurnState::kNoChurn, 1}));
    pass_hearing(seconds(60), 1, kInUse & ~state::kSynchronization);
    EXPECT_EQ(status(1).actor_churn, (Churn{ChurnState::kNoChurn, 1}));
    EXPECT_EQ(status(1).partner_churn, (Churn{ChurnState::kChurn, 2}));
    system_.set_link(1, false, false, now_);
    EXPECT_EQ(status(1).partner_churn, (Churn{ChurnState::kMonitor, 2}));
}

}  // namespace periodic_test
}  // namespace switchd::lacp
