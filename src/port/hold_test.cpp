// The administrative state and the protocol's hold: what each changes, and the state that combines them.
#include "port/hold.h"
#include "port/testing/attribute.h"

namespace {

using namespace attribute_test;
using adp::HoldState;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kPort = 3;
constexpr uint32_t kAggStateIndex = ADP_USER_PORTS + kGroup;

/** The state by combined index: user ports 1..26, then aggregation interfaces 27..34. */
HoldState &state(uint32_t index) {
    return adp::port_hold_state[index - 1];
}

std::string enable_line(int32_t port, uint32_t value) {
    return line_of({"user_port_enable_set", value_of("enable", value)}, port);
}

Lines member_lines(const std::vector<int32_t> &ports, uint32_t value) {
    Lines lines;
    for (const int32_t port : ports) {
        lines.push_back(enable_line(port, value));
        lines.push_back(kPause);
    }
    return lines;
}

/** One of the two selectors set to a value in a state, and the outcome. */
struct Transition {
    const char *name;
    uint32_t selector;
    uint32_t value;
    HoldState before;
    HoldState after;
    bool reaches_the_port;
};

const Transition kTransitions[] = {
    {"EnableFree", 3, 1, HoldState::kFree, HoldState::kFree, true},
    {"EnableFreeByAnyOtherValue", 3, 9, HoldState::kFree, HoldState::kFree, true},
    {"EnableHeld", 3, 1, HoldState::kHeld, HoldState::kHeld, false},
    {"EnableDisabled", 3, 1, HoldState::kDisabled, HoldState::kFree, true},
    {"DisableFree", 3, 0, HoldState::kFree, HoldState::kDisabled, true},
    {"DisableHeld", 3, 0, HoldState::kHeld, HoldState::kDisabled, true},
    {"DisableDisabled", 3, 0, HoldState::kDisabled, HoldState::kDisabled, true},
    {"ReleaseFree", 11, 1, HoldState::kFree, HoldState::kFree, false},
    {"ReleaseHeld", 11, 1, HoldState::kHeld, HoldState::kFree, true},
    {"ReleaseHeldByAnyOtherValue", 11, 0x80000000, HoldState::kHeld, HoldState::kFree, true},
    {"ReleaseDisabled", 11, 1, HoldState::kDisabled, HoldState::kDisabled, false},
    {"HoldFree", 11, 0, HoldState::kFree, HoldState::kHeld, true},
    {"HoldHeld", 11, 0, HoldState::kHeld, HoldState::kHeld, true},
    {"HoldDisabled", 11, 0, HoldState::kDisabled, HoldState::kHeld, true},
};

void PrintTo(const Transition &transition, std::ostream *out) {
    *out << transition.name;
}

class HoldTransition : public AttributeTest, public ::testing::WithParamInterface<Transition> {
  protected:
    static adp_status_t set(uint32_t intf) {
        return adp_set_phy_port_attr(intf, GetParam().selector, GetParam().value, 0);
    }

    /** The tables after the transition: only the state has changed. */
    static std::string tables_after(uint32_t index) {
        const HoldState old = state(index);
        state(index) = GetParam().after;
        std::string bytes = library_test::table_bytes();
        state(index) = old;
        return bytes;
    }
};

TEST_P(HoldTransition, OfAUserPort) {
    state(kPort) = GetParam().before;
    const std::string after = tables_after(kPort);
    EXPECT_EQ(set(kPort), 0);
    EXPECT_EQ(driver().take(), GetParam().reaches_the_port ? Lines{enable_line(6, GetParam().value)} : Lines{})
        << "and no pause";
    EXPECT_EQ(library_test::table_bytes(), after);
}

TEST_P(HoldTransition, OfAGroupLeavesItsMembersStatesAlone) {
    for (const HoldState of_members : {HoldState::kFree, HoldState::kHeld, HoldState::kDisabled}) {
        start_over();
        set_configured(kGroup, 1u << 26 | 1u << 1 | 1u << 3);
        for (const uint32_t member : {1u, 3u, 26u}) {
            state(member) = of_members;
        }
        state(kAggStateIndex) = GetParam().before;
        const std::string after = tables_after(kAggStateIndex);
        EXPECT_EQ(set(kAgg), 0);
        EXPECT_EQ(driver().take(), GetParam().reaches_the_port ? member_lines({4, 6, 29}, GetParam().value) : Lines{});
        EXPECT_EQ(library_test::table_bytes(), after);
    }
}

TEST_P(HoldTransition, OfAMemberLeavesItsGroupsStateAlone) {
    for (const HoldState of_group : {HoldState::kFree, HoldState::kHeld, HoldState::kDisabled}) {
        start_over();
        set_configured(kGroup, 1u << kPort);
        state(kAggStateIndex) = of_group;
        state(kPort) = GetParam().before;
        const std::string after = tables_after(kPort);
        EXPECT_EQ(set(kPort), 0);
        EXPECT_EQ(library_test::table_bytes(), after);
    }
}

TEST_P(HoldTransition, OfAGroupWithoutMembersSucceeds) {
    state(kAggStateIndex) = GetParam().before;
    const std::string after = tables_after(kAggStateIndex);
    EXPECT_EQ(set(kAgg), 0);
    EXPECT_THAT(driver().take(), IsEmpty());
    EXPECT_EQ(library_test::table_bytes(), after);
}

TEST_P(HoldTransition, HasHappenedWhenTheDriverFailsOnAUserPort) {
    state(kPort) = GetParam().before;
    const std::string after = tables_after(kPort);
    driver().fail_every("user_port_enable_set", kDriverError);
    const bool is_reported = GetParam().selector == ADP_ATTR_ADMIN_STATE && GetParam().reaches_the_port;
    EXPECT_EQ(set(kPort), is_reported ? 102 : 0);
    EXPECT_EQ(library_test::table_bytes(), after);
    EXPECT_EQ(driver().count(), GetParam().reaches_the_port ? 1u : 0u);
}

TEST_P(HoldTransition, HasHappenedWhenAMemberFailsAndNoPauseFollows) {
    if (!GetParam().reaches_the_port) {
        return;  // covered above: there is no call that could fail
    }
    const auto prepare = [] {
        set_configured(kGroup, 1u << 26 | 1u << 1 | 1u << 3);
        state(kAggStateIndex) = GetParam().before;
    };
    expect_each_failure(prepare, [] { return set(kAgg); });
    EXPECT_EQ(state(kAggStateIndex), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(Selectors, HoldTransition, ::testing::ValuesIn(kTransitions), name_of<Transition>);

/** Both selectors. The value 0 is off for either, and on a free interface it always reaches the driver. */
class Hold : public AttributeTest, public ::testing::WithParamInterface<uint32_t> {
  protected:
    static adp_status_t turn_off(uint32_t intf) { return adp_set_phy_port_attr(intf, GetParam(), 0, 0); }
    static HoldState off_state() { return GetParam() == ADP_ATTR_HOLD ? HoldState::kHeld : HoldState::kDisabled; }
};

TEST_P(Hold, EveryUserPortAndGroupHasAStateOfItsOwn) {
    for (uint32_t index = 1; index <= adp::kHoldStates; ++index) {
        start_over();
        EXPECT_EQ(turn_off(index <= ADP_USER_PORTS ? index : ADP_AGG_INTF(index - ADP_USER_PORTS)), 0);
        for (uint32_t other = 1; other <= adp::kHoldStates; ++other) {
            EXPECT_EQ(state(other), other == index ? off_state() : HoldState::kFree) << index << " " << other;
        }
    }
}

TEST_P(Hold, InterfaceWithoutAStateIsAlwaysFree) {
    const std::string tables = library_test::table_bytes();
    const int32_t cpu_port = 0;
    const int32_t no_port = -1;
    EXPECT_EQ(turn_off(0), 0);
    EXPECT_EQ(turn_off(35), 0);
    EXPECT_EQ(turn_off(0x0FFFFFFF), 0);
    EXPECT_THAT(driver().take(),
                ElementsAre(enable_line(cpu_port, 0), enable_line(no_port, 0), enable_line(no_port, 0)));
    EXPECT_EQ(library_test::table_bytes(), tables);
    // So it can always be enabled, and never released.
    EXPECT_EQ(adp_set_phy_port_attr(35, ADP_ATTR_HOLD, 1, 0), 0);
    EXPECT_THAT(driver().take(), IsEmpty());
    EXPECT_EQ(adp_set_phy_port_attr(35, ADP_ATTR_ADMIN_STATE, 1, 0), 0);
    EXPECT_THAT(driver().take(), ElementsAre(enable_line(no_port, 1)));
    EXPECT_EQ(library_test::table_bytes(), tables);
}

TEST_P(Hold, UnknownGroupsAreRefused) {
    for (const uint32_t intf : {ADP_AGG_INTF(9), 0x1FFFFFFFu}) {
        const std::string tables = library_test::table_bytes();
        EXPECT_EQ(turn_off(intf), -1);
        EXPECT_EQ(library_test::table_bytes(), tables);
    }
    EXPECT_THAT(driver().take(), IsEmpty());
}

TEST_P(Hold, ActiveMembersFollowWhenNoneIsConfigured) {
    set_active(kGroup, {29, 0, 200, 4});
    EXPECT_EQ(turn_off(kAgg), 0);
    EXPECT_EQ(driver().take(), member_lines({29, -1, 4}, 0));
}

TEST_P(Hold, EachMemberTakesHalfASecond) {
    for (const size_t members : {1u, 3u, 8u, 9u}) {
        std::vector<uint8_t> ports;
        for (size_t member = 0; member < members; ++member) {
            ports.push_back(static_cast<uint8_t>(4 + member));
        }
        set_active(kGroup, ports);
        const uint64_t before = system().slept();
        EXPECT_EQ(turn_off(kAgg), 0);
        EXPECT_EQ(system().slept() - before, members * 500000u);
    }
    set_active(kGroup, {});
    set_configured(kGroup, 0x07FFFFFE);
    const uint64_t before = system().slept();
    EXPECT_EQ(turn_off(kAgg), 0);
    EXPECT_EQ(system().slept() - before, 26 * 500000u);
}

TEST_P(Hold, NothingSleepsOnAUserPort) {
    EXPECT_EQ(turn_off(kPort), 0);
    EXPECT_EQ(system().slept(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Selectors, Hold, ::testing::Values(ADP_ATTR_ADMIN_STATE, ADP_ATTR_HOLD), selector_name);

class HoldStory : public AttributeTest {
  protected:
    uint32_t admin_state(uint32_t intf) {
        uint32_t value = kUnwritten;
        EXPECT_EQ(adp_get_phy_port_attr(intf, ADP_ATTR_ADMIN_STATE, &value), 0);
        return value;
    }
};

TEST_F(HoldStory, HeldPortStaysDownWhenEnabledAndReadsAsEnabled) {
    driver().on("user_port_enable_get").sets("enable", 0);
    EXPECT_EQ(adp_set_phy_port_attr(kPort, ADP_ATTR_HOLD, 0, 0), 0);
    EXPECT_EQ(adp_set_phy_port_attr(kPort, ADP_ATTR_ADMIN_STATE, 1, 0), 0);
    EXPECT_EQ(admin_state(kPort), 1u);
    EXPECT_THAT(driver().take(), ElementsAre(enable_line(6, 0)));
    EXPECT_EQ(adp_set_phy_port_attr(kPort, ADP_ATTR_HOLD, 1, 0), 0);
    EXPECT_THAT(driver().take(), ElementsAre(enable_line(6, 1)));
    EXPECT_EQ(admin_state(kPort), 0u) << "the driver's own state, now that the hold is gone";
}

TEST_F(HoldStory, DisabledPortStaysDownWhenReleased) {
    driver().on("user_port_enable_get").sets("enable", 0);
    EXPECT_EQ(adp_set_phy_port_attr(kPort, ADP_ATTR_ADMIN_STATE, 0, 0), 0);
    EXPECT_EQ(adp_set_phy_port_attr(kPort, ADP_ATTR_HOLD, 1, 0), 0);
    EXPECT_THAT(driver().take(), ElementsAre(enable_line(6, 0)));
    EXPECT_EQ(admin_state(kPort), 0u);
}

TEST_F(HoldStory, DisablingOverridesAHold) {
    EXPECT_EQ(adp_set_phy_port_attr(kPort, ADP_ATTR_HOLD, 0, 0), 0);
    EXPECT_EQ(adp_set_phy_port_attr(kPort, ADP_ATTR_ADMIN_STATE, 0, 0), 0);
    EXPECT_EQ(adp_set_phy_port_attr(kPort, ADP_ATTR_HOLD, 1, 0), 0);
    EXPECT_EQ(adp_set_phy_port_attr(kPort, ADP_ATTR_ADMIN_STATE, 1, 0), 0);
    EXPECT_THAT(driver().take(), ElementsAre(enable_line(6, 0), enable_line(6, 0), enable_line(6, 1)));
}

TEST_F(HoldStory, HeldGroupLetsItsMembersBeEnabledOneByOne) {
    set_configured(kGroup, 1u << kPort);
    EXPECT_EQ(adp_set_phy_port_attr(kAgg, ADP_ATTR_HOLD, 0, 0), 0);
    EXPECT_EQ(adp_set_phy_port_attr(kPort, ADP_ATTR_ADMIN_STATE, 1, 0), 0);
    EXPECT_EQ(adp_set_phy_port_attr(kAgg, ADP_ATTR_ADMIN_STATE, 1, 0), 0);
    EXPECT_THAT(driver().take(), ElementsAre(enable_line(6, 0), kPause, enable_line(6, 1)));
    EXPECT_EQ(admin_state(kAgg), 1u);
}

}  // namespace
