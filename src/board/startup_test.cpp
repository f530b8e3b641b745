// The start-up: its order, and the message of each step that stops it.
#include "tests/support/library_test.h"
#include "tests/support/outcome.h"

namespace startup_test {

using library_test::Outcome;
using library_test::outcome_of;
using ::testing::ElementsAreArray;
using ::testing::StartsWith;

constexpr size_t kReserved = 64;         // entries of the table of reserved addresses
constexpr size_t kBridgeAddresses = 16;  // looked up and written one by one

class StartUp : public library_test::LibraryTest {
  protected:
    /** The names of the driver calls made, one after the other counted once. */
    static std::vector<std::string> steps() {
        std::vector<std::string> names;
        for (const std::string &line : driver().trace()) {
            const std::string name = line.substr(0, line.find('('));
            if (names.empty() || names.back() != name) {
                names.push_back(name);
            }
        }
        return names;
    }
};

TEST_F(StartUp, BringsTheFeaturesUpInOrder) {
    driver().on("user_l2_bpdu_get").sets_bytes("mac", std::vector<uint8_t>(6));  // a free entry
    const std::string tables = library_test::table_bytes();
    EXPECT_EQ(outcome_of(adp_modules_init), Outcome{});
    const std::vector<std::string> names = steps();
    const auto after = std::find(names.begin(), names.end(), "user_field_init");
    EXPECT_THAT(
        std::vector<std::string>(after, names.end()),
        ElementsAreArray({"user_field_init", "user_trunk_init", "user_stg_init", "user_lldp_init", "user_mirror_init",
                          "user_switch_control_set", "user_igmp_snooping_init", "User_mcast_init",
                          "user_switch_control_get", "user_switch_control_set", "user_switch_control_get",
                          "user_switch_control_set", "user_dos_attack_prevent_init"}));
    EXPECT_EQ(driver().count("user_l2_bpdu_get"), kReserved + kBridgeAddresses);
    EXPECT_EQ(driver().count("user_l2_bpdu_set"), kBridgeAddresses);
    EXPECT_EQ(library_test::table_bytes(), tables);
}

/** A driver call whose failure stops the start-up, and what is printed for the result -5. */
struct Stop {
    const char *name;
    const char *call;
    const char *out;
    const char *err;
};

const Stop kStops[] = {
    {"FieldProcessor", "user_field_init", "adp_fp_init:[00428]  error funtion ret=-5 \nswitch fp init fail \n", ""},
    {"Trunk", "user_trunk_init", "switch trunk init fail \n", ""},
    {"SpanningTree", "user_stg_init", "switch stg init fail \n",
     "adp_stg_init 251: MSTP set bcmSwitchCpuProtoBpduPriority failed!\n"},
    {"Lldp", "user_lldp_init", "switch lldp init fail\n", "adp_lldp_init 265:LLDP set default handle failed!\n"},
    {"Mirror", "user_mirror_init", "switch mirror init fail \n", ""},
    {"IgmpSnooping", "user_igmp_snooping_init", "switch igmp init fail \n", ""},
    {"Multicast", "User_mcast_init", "switch igmp init fail \n", ""},
    {"IgmpToCpu", "user_switch_control_get",
     "ret:-5 bcmSwitchIgmpPktToCpu:92 enable:0 \n ret:-5 enable:0\nswitch igmp init fail \n", ""},
    {"DenialOfService", "user_dos_attack_prevent_init", "switch dos init fail \n", ""},
};

class StartUpStop : public StartUp, public ::testing::WithParamInterface<Stop> {};

TEST_P(StartUpStop, PrintsItsMessage) {
    driver().fail_every(GetParam().call, -5);
    EXPECT_EQ(outcome_of(adp_modules_init), (Outcome{-5, GetParam().out, GetParam().err}));
}

INSTANTIATE_TEST_SUITE_P(Steps, StartUpStop, ::testing::ValuesIn(kStops),
                         [](const auto &stop) { return stop.param.name; });

}  // namespace startup_test
