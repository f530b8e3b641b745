// Settings that are refused, and how that is said.
#include "switchd/groups/settings.h"

#include <gtest/gtest.h>

namespace switchd {
namespace settings_test {

constexpr uint32_t kUserPorts = 26;

GroupsSettings good() {
    GroupsSettings settings;
    settings.groups[1].members = {{1, 1}, {2, 1}};
    settings.groups[8].members = {{26, 1}};
    return settings;
}

std::string fault_after(void (*change)(GroupsSettings &)) {
    GroupsSettings settings = good();
    change(settings);
    return fault_of(settings, kUserPorts);
}

TEST(GroupsSettings, GoodOnesHaveNoFault) {
    EXPECT_EQ(fault_of(good(), kUserPorts), "");
    EXPECT_EQ(fault_of({}, kUserPorts), "");
}

TEST(GroupsSettings, FaultsAreNamed) {
    using Settings = GroupsSettings;
    EXPECT_EQ(fault_after([](Settings &s) { s.groups[9].members = {{5, 1}}; }), "agg9: the groups are agg1 to agg8.");
    EXPECT_EQ(fault_after([](Settings &s) { s.groups[0].members = {{5, 1}}; }), "agg0: the groups are agg1 to agg8.");
    EXPECT_EQ(fault_after([](Settings &s) { s.groups[2].members = {}; }), "agg2: it has no members.");
    EXPECT_EQ(fault_after([](Settings &s) { s.groups[1].members[0] = 1; }), "agg1: there is no port 0.");
    EXPECT_EQ(fault_after([](Settings &s) { s.groups[1].members[27] = 1; }), "agg1: there is no port 27.");
    EXPECT_EQ(fault_after([](Settings &s) { s.groups[8].members[2] = 1; }),
              "agg8: port 2 is a member of another group, too.");
    EXPECT_EQ(fault_after([](Settings &s) { s.groups[1].balance = 0; }), "agg1: the balancing mode must be 1 to 6.");
    EXPECT_EQ(fault_after([](Settings &s) { s.groups[1].balance = 7; }), "agg1: the balancing mode must be 1 to 6.");
    EXPECT_EQ(fault_after([](Settings &s) { s.groups[1].minimum_links = 0; }),
              "agg1: the minimum of links must be 1 to 8.");
    EXPECT_EQ(fault_after([](Settings &s) { s.groups[1].minimum_links = 9; }),
              "agg1: the minimum of links must be 1 to 8.");
    EXPECT_EQ(fault_of(good(), 25), "agg8: there is no port 26.");
}

}  // namespace settings_test
}  // namespace switchd
