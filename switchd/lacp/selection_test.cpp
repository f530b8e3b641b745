// Which ports of a group are used together, and which end decides.
#include "switchd/lacp/selection.h"

#include "switchd/lacp/testing/system_fixture.h"

namespace switchd::lacp {
namespace selection_test {

using namespace test;

constexpr SystemId kOther = {0x8000, {0x02, 0, 0, 0, 0, 0x03}};
constexpr SystemId kBetter = {0x7000, {0x02, 0, 0, 0, 0, 0x04}};

class LacpSelection : public SystemTest {
  protected:
    /** The port has heard this partner. */
    void hear_from(uint16_t port, const SystemId &partner, uint16_t key = kPartnerKey, uint16_t partner_port = 1) {
        add(port);
        Lacpdu pdu = words(port);
        pdu.actor.system = partner;
        pdu.actor.key = key;
        pdu.actor.port = partner_port;
        hear(port, pdu);
    }

    std::vector<uint16_t> ports_that_are(Selected selected, uint16_t last = 12) const {
        std::vector<uint16_t> list;
        for (uint16_t port = 1; port <= last; ++port) {
            if (const auto *status = system_.find(port); status != nullptr && status->selected == selected) {
                list.push_back(port);
            }
        }
        return list;
    }

    using Ports = std::vector<uint16_t>;
};

TEST_F(LacpSelection, APartnersOtherGroupOrAnotherPartnerIsNotSelected) {
    hear_from(1, kPartner);
    hear_from(2, kPartner, kPartnerKey + 1);
    hear_from(3, kOther);
    hear_from(4, kPartner);
    EXPECT_EQ(ports_that_are(Selected::kSelected), (Ports{1, 4}));
    EXPECT_EQ(ports_that_are(Selected::kUnselected), (Ports{2, 3}));
}

TEST_F(LacpSelection, AGroupKeepsItsPartnerUntilNoPortLeadsToIt) {
    hear_from(5, kPartner);
    hear_from(6, kPartner);
    hear_from(1, kOther);
    hear_from(2, kOther);
    EXPECT_EQ(ports_that_are(Selected::kSelected), (Ports{5, 6}));
    system_.set_link(5, false, false, now_);
    EXPECT_EQ(ports_that_are(Selected::kSelected), Ports{6});
    system_.set_link(6, false, false, now_);
    EXPECT_EQ(ports_that_are(Selected::kSelected), (Ports{1, 2}));
    EXPECT_EQ(system_.group(kKey).partner, (PartnerGroup{kOther, kPartnerKey}));
}

TEST_F(LacpSelection, TheNextPartnerIsThatOfTheBestPort) {
    hear_from(5, kPartner);
    hear_from(2, kOther);
    hear_from(3, kBetter);
    system_.set_port(3, {.key = kKey, .priority = 1, .is_fast = true}, now_);
    system_.set_link(5, false, false, now_);
    EXPECT_EQ(ports_that_are(Selected::kSelected), Ports{3});
}

TEST_F(LacpSelection, NineOfOneGroupLeaveOneStandingBy) {
    for (uint16_t port = 1; port <= 9; ++port) {
        hear_from(port, kPartner, kPartnerKey, static_cast<uint16_t>(20 - port));
    }
    EXPECT_EQ(ports_that_are(Selected::kStandby), Ports{9}) << "this end's identifier is the lower one";
    pass(seconds(2));
    EXPECT_EQ(status(9).mux, MuxState::kWaiting);
    system_.set_link(4, false, false, now_);
    EXPECT_EQ(ports_that_are(Selected::kStandby), Ports{});
    EXPECT_EQ(status(9).mux, MuxState::kDistributing) << "it has waited already";
}

TEST_F(LacpSelection, APortOfBetterPriorityTakesThePlaceOfAnother) {
    for (uint16_t port = 1; port <= 9; ++port) {
        hear_from(port, kPartner, kPartnerKey, port);
    }
    pass(seconds(2));
    ASSERT_EQ(status(8).mux, MuxState::kDistributing);
    system_.set_port(9, {.key = kKey, .priority = 1, .is_fast = true}, now_);
    EXPECT_EQ(ports_that_are(Selected::kStandby), Ports{8});
    EXPECT_EQ(status(8).mux, MuxState::kWaiting);
    EXPECT_FALSE(status(8).actor.has(state::kSynchronization));
}

TEST_F(LacpSelection, TheEndWithTheLowerIdentifierDecides) {
    for (uint16_t port = 1; port <= 9; ++port) {
        hear_from(port, kBetter, kPartnerKey, static_cast<uint16_t>(20 - port));
    }
    EXPECT_EQ(ports_that_are(Selected::kStandby), Ports{1}) << "the partner's last port";
}

}  // namespace selection_test
}  // namespace switchd::lacp
