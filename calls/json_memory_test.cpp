// Arguments from JSON: members that are left out, and JSON that is not what the call takes.
#include "calls/json_memory.h"

#include <adp/adp.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "calls/call_table.h"
#include "calls/exported.h"

namespace json_memory_test {

using calls::BadValue;
using calls::Blocks;
using calls::Memory;
using nlohmann::json;

std::span<const calls::Param> params_of(const char *name) {
    const exported::Call *call = exported::find_call(name);
    return call != nullptr ? call->params : calls::call(calls::find_call(name).value()).params;
}

std::string complaint(const char *name, const json &arguments) {
    try {
        const Memory memory(params_of(name), arguments);
    } catch (const BadValue &bad) {
        return bad.what();
    }
    return "none";
}

template <typename T>
T &value_in(const Memory &memory, size_t index) {
    return *static_cast<T *>(const_cast<void *>(memory.blocks()[index].at));
}

TEST(JsonMemory, MembersThatAreLeftOutAreZero) {
    const Memory l2(params_of("user_mac_addr_add"), json::parse(R"({"entry":{"vid":5,"mac":"02"}})"));
    EXPECT_EQ(value_in<uint32_t>(l2, 0), 0U);
    EXPECT_EQ(value_in<adp_l2_entry_t>(l2, 1).vid, 5);
    EXPECT_EQ(value_in<adp_l2_entry_t>(l2, 1).mac[0], 2);
    EXPECT_EQ(value_in<adp_l2_entry_t>(l2, 1).mac[5], 0);

    for (const exported::Call &call : exported::calls()) {
        const Memory memory(call.params, json::object());
        for (size_t index = 0; index < call.params.size(); ++index) {
            // A word that is the address of a set is null when it is 0.
            const bool is_null = call.params[index].shape == calls::Shape::kPortsWord;
            EXPECT_EQ(memory.blocks()[index].at == nullptr, is_null) << call.name << " " << call.params[index].name;
        }
    }
}

TEST(JsonMemory, ACallbackIsThatOfTheTable) {
    const auto params = params_of("adp_linkscan_register");
    const Memory set(params, json::parse(R"({"handler":"set"})"));
    EXPECT_EQ(value_in<void (*)()>(set, 0), params[0].element.callback->report);
    const Memory none(params, json::parse(R"({"handler":null})"));
    EXPECT_EQ(value_in<void (*)()>(none, 0), nullptr);
}

TEST(JsonMemory, WordsOfAnotherMachineAreCut) {
    const Memory memory(params_of("user_qos_dscp_map_set"), json::parse(R"({"dscp":18446744073709551615})"));
    EXPECT_EQ(value_in<uintptr_t>(memory, 2), UINTPTR_MAX);
}

TEST(JsonMemory, ACountThatTheCallRefusesIsNone) {
    const Memory memory(params_of("adp_fp_add_entity_qualify"), json::parse(R"({"data_len":4294967295})"));
    EXPECT_EQ(memory.blocks()[2].count, 0U);
    EXPECT_NE(memory.blocks()[2].at, nullptr);
}

TEST(JsonMemory, AddressesOfAFrameHaveRoomBehindThem) {
    const Memory memory(params_of("__adp_receive_frame"),
                        json::parse(R"({"desc":{"frame":"01","length":1,"vlan_tag":65535},"check_vlan":1})"));
    const auto &record = value_in<adp_rx_frame_t>(memory, 0);
    EXPECT_EQ(record.vlan_tag, record.frame + 65535);
    EXPECT_EQ(record.vlan_tag[3], 0);
}

struct Bad {
    const char *call;
    const char *arguments;
    const char *complaint;
};

void PrintTo(const Bad &bad, std::ostream *out) {
    *out << bad.call << bad.arguments;
}

class JsonMemoryBad : public testing::TestWithParam<Bad> {};

TEST_P(JsonMemoryBad, IsRefusedWithASentence) {
    EXPECT_EQ(complaint(GetParam().call, json::parse(GetParam().arguments)), GetParam().complaint);
}

constexpr Bad kBad[] = {
    {"user_vlan_create", "[]", "The arguments are not an object."},
    {"user_qos_trust_sel_group_init", "[]", "The arguments are not an object."},
    {"user_vlan_create", "null", "The arguments are not an object."},
    {"user_vlan_create", R"({"vid":"5"})", "The argument 'vid' is not a number from 0 to 4294967295."},
    {"user_vlan_create", R"({"vid":-1})", "The argument 'vid' is not a number from 0 to 4294967295."},
    {"user_vlan_create", R"({"vid":4294967296})", "The argument 'vid' is not a number from 0 to 4294967295."},
    {"user_vlan_create", R"({"vid":1.5})", "The argument 'vid' is not a number from 0 to 4294967295."},
    {"user_vlan_create", R"({"vid":true})", "The argument 'vid' is not a number from 0 to 4294967295."},
    {"user_vlan_create", R"({"vid":null})", "The argument 'vid' is not a number from 0 to 4294967295."},
    {"user_vlan_create", R"({"vid":[1]})", "The argument 'vid' is not a number from 0 to 4294967295."},
    {"user_vlan_create", R"({"vid":1e300})", "The argument 'vid' is not a number from 0 to 4294967295."},
    {"user_port_enable_set", R"({"port":2147483648})",
     "The argument 'port' is not a number from -2147483648 to 2147483647."},
    {"user_port_enable_set", R"({"port":18446744073709551615})",
     "The argument 'port' is not a number from -2147483648 to 2147483647."},
    {"user_port_enable_set", R"({"port":{}})", "The argument 'port' is not a number from -2147483648 to 2147483647."},
    {"adp_vlan_port_set", R"({"members":[256]})", "The argument 'members' is not a number from 0 to 255."},
    {"adp_vlan_port_set", R"({"members":{"1":2}})", "The argument 'members' is not an array."},
    {"adp_vlan_port_add", R"({"ports":5})", "The argument 'ports' is not an array."},
    {"adp_vlan_port_add", R"({"untagged":[-1]})", "The argument 'untagged' is not a number from 0 to 255."},
    {"get_nic_index", R"({"name":7})", "The argument 'name' is not a text."},
    {"get_nic_index", R"({"name":"a\u0100"})", "The argument 'name' has a character above U+00FF."},
    {"get_nic_index", R"({"name":"\u20ac"})", "The argument 'name' has a character above U+00FF."},
    {"get_nic_index", R"({"name":"a\u0000"})", "The argument 'name' has a character U+0000."},
    {"user_mac_addr_delete", R"({"key":"0"})", "The argument 'key' is not hexadecimal text, two digits for an octet."},
    {"user_mac_addr_delete", R"({"key":"0x"})", "The argument 'key' is not hexadecimal text, two digits for an octet."},
    {"user_mac_addr_delete", R"({"key":"-1"})", "The argument 'key' is not hexadecimal text, two digits for an octet."},
    {"user_mac_addr_delete", R"({"key":" 1"})", "The argument 'key' is not hexadecimal text, two digits for an octet."},
    {"user_mac_addr_delete", R"({"key":[1]})", "The argument 'key' is not hexadecimal text."},
    {"user_mac_addr_delete", R"({"key":"000000000000000000"})",
     "The argument 'key' has 18 digits, and there is room for 16."},
    {"user_mac_addr_add", R"({"entry":[]})", "The argument 'entry' is not an object."},
    {"user_mac_addr_add", R"({"entry":{"vid":65536}})",
     "The argument 'entry' has a bad member 'vid': it is not a number from 0 to 65535."},
    {"user_mac_addr_add", R"({"entry":{"reserved24":[1,2,3]}})",
     "The argument 'entry' has a bad member 'reserved24': it has 3 elements, and there is room for 2."},
    {"adp_fp_add_entity_rule", R"({"entity":{"qualifies":[{"type":6,"data":[1]}]}})",
     "The argument 'entity' has a bad member 'qualifies': it has a bad member 'data': it is not hexadecimal text."},
    {"adp_fp_add_entity_rule", R"({"entity":{"qualifies":[{"type":18,"data":"01"}]}})",
     "The argument 'entity' has a bad member 'qualifies': it has a bad member 'data': it is not an array."},
    {"adp_fp_add_entity_qualify", R"({"type":18,"data_len":4,"data":[1,2]})",
     "The argument 'data' has 2 elements, and there is room for 1."},
    {"adp_dump_packet", R"({"length":2000000000,"data":"00"})",
     "The argument 'data' has 2000000000 elements by its count, more than 1048576."},
    {"adp_dump_packet", R"({"length":-1,"data":"00"})", "The argument 'data' has 2 digits, and there is room for 0."},
    {"adp_transmit_frame", R"({"length":65537,"frame":"0001"})",
     "The argument 'frame' has 4 digits, and there is room for 2."},
    {"user_stg_each_time_list", R"({"chunk_size":4294967295})",
     "The argument 'groups' has 4294967295 elements by its count, more than 1048576."},
    {"__adp_transmit_frame", R"({"desc":{"length":4294967295,"frame":""}})",
     "The argument 'desc' has 4294967295 elements by its count, more than 1048576."},
    {"__adp_transmit_frame", R"({"desc":{"length":1,"frame":"0102"}})",
     "The argument 'desc' has 4 digits, and there is room for 2."},
    {"__adp_transmit_frame", R"({"destinations":7})", "The argument 'destinations' is not an array."},
    {"__adp_transmit_frame", R"({"destinations":["a"]})",
     "The argument 'destinations' is not a number from 0 to 4294967295."},
    {"__adp_receive_frame", R"({"desc":{"frame":"01","length":1,"udp_header":65536}})",
     "The argument 'desc' has a bad member 'udp_header': it is not a number from 0 to 65535."},
    {"__adp_receive_frame", R"({"desc":{"udp_header":1}})",
     "The argument 'desc' has a bad member 'udp_header': it is an offset into a null address."},
    {"__adp_receive_frame", R"({"desc":{"frame":1}})", "The argument 'desc' is not hexadecimal text."},
    {"adp_receive_frame", R"({"length":4,"out_frame":5})", "The argument 'out_frame' is not a number from 0 to 4."},
    {"adp_receive_frame", R"({"frame":null,"out_frame":0})",
     "The argument 'out_frame' is an offset into a null address."},
    {"adp_linkscan_register", R"({"handler":1})", R"(The argument 'handler' is neither "set" nor null.)"},
    {"adp_linkscan_register", R"({"handler":"0x1234"})", R"(The argument 'handler' is neither "set" nor null.)"},
    {"equeue_send_ucast", R"({"message":[1,2,3,4,5,6,7,8]})", "The argument 'message' is not an array."},
    {"equeue_send_ucast", R"({"message":[1,2,3,4,5,6,7,8,9]})",
     "The argument 'message' has 9 elements, and there is room for 8."},
    {"equeue_send_ucast", R"({"message":[1,2,3,4,5,6,7,[1,2,3,4,5]]})",
     "The argument 'message' has 5 elements, and there is room for 4."},
};

INSTANTIATE_TEST_SUITE_P(Values, JsonMemoryBad, testing::ValuesIn(kBad));

TEST(JsonStore, WritesNothingIfAnythingIsBad) {
    const auto params = params_of("adp_vlan_port_get");
    const Memory memory(params, json::parse(R"({"members":[1],"untagged":[2]})"));
    EXPECT_THROW(store(params, memory.blocks(), json::parse(R"({"members":[3],"untagged":"x"})")), BadValue);
    EXPECT_EQ(value_in<uint32_t>(memory, 1), 1U << 1);
    store(params, memory.blocks(), json::parse(R"({"members":[3]})"));
    EXPECT_EQ(value_in<uint32_t>(memory, 1), 1U << 3);
    EXPECT_EQ(value_in<uint32_t>(memory, 2), 1U << 2);
}

TEST(JsonStore, LeavesWhatTheCallMayNotWriteAlone) {
    const auto params = params_of("user_port_enable_get");
    const Memory memory(params, json::parse(R"({"port":4})"));
    store(params, memory.blocks(), json::parse(R"({"port":5,"enable":1})"));
    EXPECT_EQ(value_in<int32_t>(memory, 2), 4);
    EXPECT_EQ(value_in<uint32_t>(memory, 3), 1U);
}

TEST(JsonStore, ANullAddressTakesNoValue) {
    const auto params = params_of("user_port_enable_get");
    const Memory memory(params, json::parse(R"({"enable":null})"));
    EXPECT_NO_THROW(store(params, memory.blocks(), json::parse(R"({"enable":null})")));
    EXPECT_THROW(store(params, memory.blocks(), json::parse(R"({"enable":1})")), BadValue);
    const Memory other(params, json::object());
    EXPECT_THROW(store(params, other.blocks(), json::parse(R"({"enable":null})")), BadValue);
}

TEST(JsonStore, AFrameStaysInItsMemory) {
    const auto params = params_of("__adp_receive_frame");
    const Memory memory(params, json::parse(R"({"desc":{"frame":"0102","length":2}})"));
    EXPECT_THROW(store(params, memory.blocks(), json::parse(R"({"desc":{"frame":"010203","length":3}})")), BadValue);
    const Memory none(params, json::parse(R"({"desc":{"frame":null,"length":2}})"));
    EXPECT_THROW(store(params, none.blocks(), json::parse(R"({"desc":{"frame":"01"}})")), BadValue);
}

}  // namespace json_memory_test
