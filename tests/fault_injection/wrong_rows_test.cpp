// Rows that are wrong on purpose, each in another way. Each of them must give a complaint.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/fault_injection/report.h"

namespace fault_injection {
namespace wrong_rows_test {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

struct WrongRow {
    std::string name;
    std::string row;
    std::string complaint;
};

void PrintTo(const WrongRow &row, std::ostream *out) {
    *out << row.name;
}

Report report_of(const std::string &rows) {
    std::istringstream text(rows);
    return inject_failures(parse_family("wrong", text));
}

const std::vector<WrongRow> kWrongRows = {
    {"Status", "adp_vlan_create 100 | any: user_vlan_create 102", "failing with 77: it returns 77, not 102"},
    {"StatusOfSuccess", "adp_vlan_create 100 | any: user_vlan_create own; returns 5", "it returns 0, not 5"},
    {"NegativeOnly", "adp_vlan_create 100 | any: user_vlan_create own else ignored",
     "failing with 77: it returns 77, not 0"},
    {"OtherCall", "adp_vlan_create 100 | any: user_vlan_destroy own",
     "it makes the call user_vlan_create(unit=0, zero=0, vid=100) as number 0, not user_vlan_destroy()"},
    {"Argument", "adp_vlan_create 100 | any: user_vlan_create(vid=10) own", "not user_vlan_create(vid=10)"},
    {"OneCallMore", "adp_vlan_create 100 | any: user_vlan_create own; user_vlan_create own",
     "it makes the call none as number 1"},
    {"OneCallLess", "adp_vlan_create 100 | any: 0", "it goes on with user_vlan_create"},
    {"GoesOn", "adp_delete_dot1p_map 0 | any: 8*(user_cosq_mapping_set ignored)", "it makes the call none as number 1"},
    {"Stops", "adp_control_ipmc_lookup_miss_action 2 | any: ports(User_switch_ipmc_lookup_miss_action 102)",
     "it goes on with User_switch_ipmc_lookup_miss_action"},
    {"OtherMembers", "adp_double_tag_set $intf 1 | in: agg3 | group: configured(user_port_dtag_mode_set 102)",
     "not user_port_dtag_mode_set(port=5)"},
    {"Table",
     "adp_del_msti_member 5 100 | before: aiVlanStg[100]=7"
     "| any: ports(user_stg_stp_set ignored); user_stg_vlan_remove own",
     "a table differs"},
    {"TableAfterFailure", "adp_add_msti_member 5 100 | any: user_stg_vlan_add(vid=100) own; writes aiVlanStg[100]=5",
     "user_stg_vlan_add, failing with -9: a table differs"},
    {"Output", "adp_vlan_default_get | given: user_vlan_default_get.vid=7 | any: user_vlan_default_get own <vid=8>",
     "output 0 differs at byte"},
    {"OutputAfterFailure", "adp_get_l2_cache_size | any: writes size=8192; user_l2_cache_size_get own",
     "user_l2_cache_size_get, failing with 77: output 0 differs at byte"},
    {"Rules",
     "adp_fp_delete_entity_rule 2 7 0 | before: adp_fp_add_entity_rule {submodule_type=2 entity_id=7} | any: 0",
     "the list of rules holds"},
    {"Memory", "adp_set_max_phy_port_num 3 | any: 0", "it keeps 2 blocks of memory"},
    {"Allocations", "adp_set_max_phy_port_num 3 | any: 0", "it allocates 2 times"},
    {"Descriptors", "adp_pkt_init | any: socket own; returns 1000", "it leaves 1 descriptors open"},
    {"MissingState", "adp_double_tag_set $intf 1 | port: user_port_dtag_mode_set own",
     "nothing is said of the state foreign"},
    {"NoState", "adp_vlan_create 100 | given: user_vlan_default_get.vid=7", "nothing is ever run"},
    {"UnknownFunction", "adp_vlan_make 100 | any: 0", "no exported function is called adp_vlan_make"},
    {"UnknownRule", "adp_vlan_create 100 | any: user_vlan_create perhaps", "'perhaps' is not a number"},
    {"UnknownTable", "adp_vlan_create 100 | any: user_vlan_create own; writes aiVlan[1]=2",
     "there is no parameter or table aiVlan"},
};

class WrongRows : public testing::TestWithParam<WrongRow> {};

TEST_P(WrongRows, GiveAComplaint) {
    EXPECT_THAT(report_of(GetParam().row).complaints, Contains(HasSubstr(GetParam().complaint)));
}

INSTANTIATE_TEST_SUITE_P(FaultInjection, WrongRows, testing::ValuesIn(kWrongRows),
                         [](const auto &row) { return row.param.name; });

TEST(RightRow, GivesNoComplaint) {
    const Report report = report_of("adp_vlan_create 100 | any: user_vlan_create(vid=100) own");
    EXPECT_THAT(report.complaints, IsEmpty());
    EXPECT_EQ(report.counts.rows, 1U);
    // In two states: undisturbed, two failures of the one call, and two of every call.
    EXPECT_EQ(report.counts.runs, 10U);
    EXPECT_EQ(report.counts.failed_calls, 4U);
}

}  // namespace wrong_rows_test
}  // namespace fault_injection
