// The four statements: on which ports each makes its call, in what order, and what the caller gets.
#include "core/resolve.h"

#include "tests/support/library_test.h"

namespace resolve_test {

using adp::Failure;
using adp::Intf;
using adp::Members;
using adp::PhyPort;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 3;
constexpr Intf kAgg{ADP_AGG_INTF(kGroup)};
constexpr Intf kPort{7};
constexpr int32_t kPhyOfPort = 10;  // of the default map: three more than the interface
constexpr uint32_t kOtherGroups[] = {0, 9, 15, 0x0FFFFFFF};
constexpr uint32_t kOtherTypes[] = {0x20000001, 0x80000003, 0xF0000000};

// The driver call of the statements that take one: it records its port and returns the scripted result.
std::vector<int32_t> asked;
int32_t failing = 0;  // the port that fails; 0 for none
constexpr int32_t kOwnResult = -7;
constexpr uint32_t kRead = 55;

int32_t result_at(int32_t port) {
    asked.push_back(port);
    return port == failing ? kOwnResult : 0;
}

int32_t get_value(uint32_t unit, uint32_t zero, int32_t port, uint32_t *value) {
    EXPECT_EQ(unit, 0u);
    EXPECT_EQ(zero, 0u);
    *value = kRead;
    return result_at(port);
}

class Resolve : public library_test::LibraryTest {
  protected:
    void SetUp() override {
        library_test::LibraryTest::SetUp();
        asked.clear();
        failing = 0;
    }

    /** Active members 1 and 2 (ports 4 and 5), configured members 1, 2 and 6, managed by 2. */
    static void make_group() {
        set_active(kGroup, {4, 5});
        set_configured(kGroup, 1u << 1 | 1u << 2 | 1u << 6);
        SET_AGG_MANAGE_INTF(number(kAgg), 2);
    }

    static adp_status_t on_members(Intf intf, adp::Fan fan) {
        return adp::on_port_or_members(intf, fan, [](PhyPort port) { return result_at(number(port)); });
    }
};

/** Unknown interfaces, and the status that all statements but on_port_only() give for them. */
template <typename Call>
void expect_refused(Call call) {
    for (const uint32_t group : kOtherGroups) {
        EXPECT_EQ(call(Intf(ADP_AGG_INTF(0) | group)), ADP_FAIL) << group;
    }
    for (const uint32_t intf : kOtherTypes) {
        EXPECT_EQ(call(Intf(intf)), ADP_E_INTF_TYPE) << intf;
    }
    EXPECT_THAT(asked, IsEmpty());
}

TEST_F(Resolve, OnPortOrMembersTranslatesAUserPort) {
    EXPECT_EQ(on_members(kPort, Members::kActive | Failure::kOwnOnPort), ADP_OK);
    EXPECT_THAT(asked, ElementsAre(kPhyOfPort));
}

TEST_F(Resolve, OnPortOrMembersVisitsActiveOrConfiguredMembersInOrder) {
    make_group();
    EXPECT_EQ(on_members(kAgg, Members::kActive | Failure::kOwnOnPort), ADP_OK);
    EXPECT_THAT(asked, ElementsAre(4, 5));
    asked.clear();
    EXPECT_EQ(on_members(kAgg, Members::kConfigured | Failure::kOwnOnPort), ADP_OK);
    EXPECT_THAT(asked, ElementsAre(4, 5, 9));
}

TEST_F(Resolve, OnPortOrMembersStopsAtTheFirstFailure) {
    make_group();
    failing = 4;
    EXPECT_EQ(on_members(kAgg, Members::kConfigured | Failure::kDriverError), ADP_E_DRIVER);
    EXPECT_THAT(asked, ElementsAre(4));
}

/** A failure policy, and what the caller gets for a failing port and for a failing member. */
struct Policy {
    Failure failure;
    adp_status_t on_port;
    adp_status_t on_group;
};

TEST_F(Resolve, FailurePolicyDecidesWhatTheCallerGets) {
    make_group();
    for (const Policy &policy : {Policy{Failure::kOwnOnPort, kOwnResult, ADP_E_DRIVER},
                                 Policy{Failure::kDriverError, ADP_E_DRIVER, ADP_E_DRIVER},
                                 Policy{Failure::kOwnResult, kOwnResult, kOwnResult}}) {
        for (const Members which : {Members::kActive, Members::kConfigured}) {
            failing = kPhyOfPort;
            EXPECT_EQ(on_members(kPort, which | policy.failure), policy.on_port);
            failing = 5;
            EXPECT_EQ(on_members(kAgg, which | policy.failure), policy.on_group);
        }
    }
}

TEST_F(Resolve, OnPortOrMembersSucceedsWithoutMembers) {
    EXPECT_EQ(on_members(kAgg, Members::kActive | Failure::kDriverError), ADP_OK);
    EXPECT_THAT(asked, IsEmpty());
}

TEST_F(Resolve, OnPortOrMembersRefusesUnknownInterfaces) {
    expect_refused([](Intf intf) { return on_members(intf, Members::kActive | Failure::kOwnResult); });
}

TEST_F(Resolve, OnPortOrManagerReadsTheManagerOfAGroup) {
    make_group();
    uint32_t value = 0;
    EXPECT_EQ(adp::on_port_or_manager(kPort, Failure::kOwnResult, get_value, &value), ADP_OK);
    EXPECT_EQ(adp::on_port_or_manager(kAgg, Failure::kOwnResult, get_value, &value), ADP_OK);
    EXPECT_THAT(asked, ElementsAre(kPhyOfPort, 5));
    EXPECT_EQ(value, kRead);
}

TEST_F(Resolve, OnPortOrManagerReadsTheCpuPortWithoutAManager) {
    adp_add_cpu_port(0, 0, 0, 33, 0);
    uint32_t value = 0;
    EXPECT_EQ(adp::on_port_or_manager(kAgg, Failure::kDriverError, get_value, &value), ADP_OK);
    EXPECT_THAT(asked, ElementsAre(33));
}

TEST_F(Resolve, OnPortOrManagerReturnsTheOwnResultOrDriverError) {
    make_group();
    uint32_t value = 0;
    failing = 5;
    EXPECT_EQ(adp::on_port_or_manager(kAgg, Failure::kOwnResult, get_value, &value), kOwnResult);
    EXPECT_EQ(adp::on_port_or_manager(kAgg, Failure::kDriverError, get_value, &value), ADP_E_DRIVER);
}

TEST_F(Resolve, OnPortOrManagerRefusesUnknownInterfaces) {
    expect_refused([](Intf intf) {
        uint32_t value = 0;
        return adp::on_port_or_manager(intf, Failure::kOwnResult, get_value, &value);
    });
}

TEST_F(Resolve, OnPortOrAnsweringMemberPrefersTheManager) {
    make_group();
    uint32_t value = 0;
    EXPECT_EQ(adp::on_port_or_answering_member(kPort, get_value, &value), ADP_OK);
    EXPECT_EQ(adp::on_port_or_answering_member(kAgg, get_value, &value), ADP_OK);
    SET_AGG_MANAGE_INTF(number(kAgg), 0);
    EXPECT_EQ(adp::on_port_or_answering_member(kAgg, get_value, &value), ADP_OK);
    EXPECT_THAT(asked, ElementsAre(kPhyOfPort, 5, 4));
}

TEST_F(Resolve, OnPortOrAnsweringMemberNeedsAMember) {
    uint32_t value = 0;
    EXPECT_EQ(adp::on_port_or_answering_member(kAgg, get_value, &value), ADP_E_NO_MEMBER);
    EXPECT_EQ(value, 0u);
    EXPECT_THAT(asked, IsEmpty());
}

TEST_F(Resolve, OnPortOrAnsweringMemberReportsAFailureAsDriverError) {
    make_group();
    uint32_t value = 0;
    for (const auto &[intf, port] : {std::pair{kPort, kPhyOfPort}, std::pair{kAgg, 5}}) {
        failing = port;
        EXPECT_EQ(adp::on_port_or_answering_member(intf, get_value, &value), ADP_E_DRIVER);
    }
}

TEST_F(Resolve, OnPortOrAnsweringMemberRefusesUnknownInterfaces) {
    expect_refused([](Intf intf) {
        uint32_t value = 0;
        return adp::on_port_or_answering_member(intf, get_value, &value);
    });
}

TEST_F(Resolve, OnPortOnlyAcceptsUserPortsOnly) {
    make_group();
    uint32_t value = 0;
    EXPECT_EQ(adp::on_port_only(kAgg, get_value, &value), ADP_E_DRIVER);
    for (const uint32_t group : kOtherGroups) {
        EXPECT_EQ(adp::on_port_only(Intf(ADP_AGG_INTF(0) | group), get_value, &value), ADP_E_DRIVER) << group;
    }
    for (const uint32_t intf : kOtherTypes) {
        EXPECT_EQ(adp::on_port_only(Intf(intf), get_value, &value), ADP_E_INTF_TYPE) << intf;
    }
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_EQ(adp::on_port_only(kPort, get_value, &value), ADP_OK);
    EXPECT_THAT(asked, ElementsAre(kPhyOfPort));
    failing = kPhyOfPort;
    EXPECT_EQ(adp::on_port_only(kPort, get_value, &value), ADP_E_DRIVER);
}

TEST_F(Resolve, RepresentativeOfAGroupIsItsManager) {
    EXPECT_EQ(adp::representative_of(kPort), kPort);
    EXPECT_EQ(adp::representative_of(kAgg), adp::kNoIntf);
    make_group();
    EXPECT_EQ(adp::representative_of(kAgg), Intf(2));
    EXPECT_EQ(adp::representative_of(Intf(kOtherTypes[0])), Intf(kOtherTypes[0]));
}

}  // namespace resolve_test
