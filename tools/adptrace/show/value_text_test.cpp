// Values as text, by the type that the header gives them.
#include "tools/adptrace/show/value_text.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace value_text_test {
namespace {

using adptrace::known_call;
using adptrace::Length;
using nlohmann::json;

struct Row {
    const char *call;
    const char *arguments;
    const char *expected;
};

constexpr Row kRows[] = {
    {"user_vlan_create", R"({"vid":100,"zero":0,"unit":0})", "unit=0, zero=0, vid=100"},
    {"adp_vlan_port_set", R"({"members":[],"untagged":[0,1,2,4,5,255]})", "members={}, untagged={0-2,4,5,255}"},
    {"adp_vlan_port_set", R"({"members":[1,"x"],"untagged":null})",
     R"(members=[1, "x", 0, 0, 0, 0, 0, 0], untagged=null)"},
    {"adp_add_mac_addr", R"({"mac":"0A","intf":268435457,"vid":4294967295})",
     "mac=0a:00:00:00:00:00, intf=agg1, vid=0xffffffff"},
    {"adp_add_mac_addr", R"({"mac":"0","intf":-1,"vid":1.5})", R"(mac="0", intf=-1, vid=1.5)"},
    {"adp_add_mac_addr", R"({"mac":"\u001b2","intf":{"a":[]}})", R"(mac="\x1b2", intf={a=[]})"},
    {"user_mac_addr_add", R"({"entry":{"vid":7,"mac":"","ports":[4],"reserved24":[1],"new":[1]}})",
     "entry={mac=00:00:00:00:00:00, vid=7, reserved24=[1, 0], ports={4}, new=[1]}"},
    {"GET_AGG_GROUP", R"({"members":[3,268435458]})", "members=[3, agg2, 0, 0, 0, 0, 0, 0]"},
    {"get_vlan_info", R"({"record":[0,7]})", "record=[0, 7, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0]"},
    {"adp_fp_add_entity_qualify",
     R"({"entity":{"qualifies":[{"type":1,"data":"ab","mask":[5]}]},"data":[2048],"data_len":4})",
     "entity={qualifies=[{type=1, data=ab.., mask=[5]}]}, data=[2048], data_len=4"},
    {"adp_fp_add_entity_qualify", R"({"data":"0a","data_len":3,"mask":2048})", "data=0a:00:00, data_len=3, mask=2048"},
    {"adp_receive_frame", R"({"out_frame":14,"out_intf":null})", "out_frame=+14, out_intf=null"},
    {"__adp_receive_frame", R"({"desc":{"frame":"0011","l4_header":38,"vlan_tag":null,"udp_header":"set"}})",
     "desc={frame=00:11, udp_header=set, vlan_tag=null, l4_header=frame+38}"},
    {"__adp_transmit_frame", R"({"destinations":[3,268435458]})", "destinations=[3, agg2]"},
    {"adp_linkscan_register", R"({"handler":"set"})", "handler=set"},
    {"adp_linkscan_register", R"({"handler":null})", "handler=null"},
    {"equeue_send_ucast", R"({"queue":65536,"message":[1,99,0,0,0,0,0,[0,4,1,1]],"timeout":-1})",
     "queue=0x10000, message=[1, 99, 0, 0, 0, 0, 0, [0, 4, 1, 1]], timeout=-1"},
    {"adp_del_mac_addr", R"({"option":[1,2,3]})", "option={1-3}"},
    {"Log_logging_func", R"({"word":"a\"b\\c","later":true})", R"(word="a\"b\\c", later=true)"},
    {"adp_of_tomorrow", R"({"b":[1,[2]],"a":"text"})", R"(a="text", b=[1, [2]])"},
};

TEST(ValueText, ShowsValuesAsTheirHeaderHasThem) {
    for (const Row &row : kRows) {
        const json arguments = json::parse(row.arguments);
        EXPECT_EQ(values_text(known_call(row.call), arguments, arguments, Length::kShort), row.expected) << row.call;
    }
}

TEST(ValueText, ShortensLongValues) {
    const auto *const call = known_call("adp_dump_packet");
    const json values = {{"title", std::string(200, 'a')}, {"data", std::string(200, '0') + "01"}, {"length", 110U}};
    EXPECT_EQ(
        values_text(call, values, values, Length::kShort), "title=\"" + std::string(100, 'a') +
                                                               "\"..(200 octets), data=00" +
                                                               [] {
                                                                   std::string zeros;
                                                                   for (int i = 1; i < 32; ++i) {
                                                                       zeros += ":00";
                                                                   }
                                                                   return zeros;
                                                               }() +
                                                               "..(110 octets), length=110");
    const std::string full = values_text(call, values, values, Length::kFull);
    EXPECT_NE(full.find(std::string(200, 'a') + "\""), std::string::npos);
    EXPECT_NE(full.find(":00:01.."), std::string::npos) << "zeros at the end stay away";
    const json list = {{"members", std::vector<int>(40, 7)}};
    EXPECT_NE(values_text(nullptr, list, list, Length::kShort).find(", 7, ..(40 elements)]"), std::string::npos);
}

TEST(ValueText, BelievesNoCount) {
    const auto *const call = known_call("adp_dump_packet");
    const json values = {{"data", "01"}, {"length", UINT64_MAX}};
    EXPECT_EQ(values_text(call, values, values, Length::kFull), "data=01.., length=18446744073709551615");
}

struct ResultRow {
    const char *call;
    const char *result;
    const char *expected;
};

constexpr ResultRow kResults[] = {
    {"adp_vlan_create", "0", "0"},
    {"adp_vlan_create", "-1", "-1 (ADP_FAIL)"},
    {"adp_vlan_create", "102", "102 (ADP_E_DRIVER)"},
    {"adp_vlan_create", "-11", "-11 (vlan_exists)"},
    {"adp_vlan_create", "4294967398", "4294967398"},
    {"user_vlan_create", "-11", "-11 (vlan_exists)"},
    {"user_vlan_create", "-1", "-1"},
    {"user_vlan_create", "102", "102"},
    {"adp_intf_2_phy_id", "102", "102"},
    {"GET_INTF_MAPPING_AGGINTF", "268435458", "agg2"},
    {"adp_bcmtag_dest_port_intf_2_phy", "null", "void"},
    {"onu_mac2str", R"("\u0007")", R"("\x07")"},
    {"adp_fp_find_data_by_submodetype", R"({"group":-1,"submodule_type":3})", "{submodule_type=3, group=-1}"},
    {"adp_fp_find_data_by_submodetype", "null", "null"},
    {"adp_of_tomorrow", "-11", "-11"},
    {"adp_of_tomorrow", "[1]", "[1]"},
};

TEST(ValueText, NamesResults) {
    for (const ResultRow &row : kResults) {
        EXPECT_EQ(result_text(known_call(row.call), json::parse(row.result), Length::kShort), row.expected) << row.call;
    }
}

}  // namespace
}  // namespace value_text_test
