// Calls as JSON: the form of each kind of argument, what is left out, and results.
#include "calls/json_text.h"

#include <adp/adp.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "calls/call_table.h"
#include "calls/exported.h"

namespace json_text_test {

std::span<const calls::Param> params_of(const char *name) {
    if (const exported::Call *call = exported::find_call(name)) {
        return call->params;
    }
    return calls::call(calls::find_call(name).value()).params;
}

/** The text of a call's arguments, given as the call gets them. */
template <typename... T>
std::string arguments_of(std::span<const calls::Param> params, const T &...argument) {
    const void *const addresses[] = {&argument...};
    EXPECT_EQ(std::size(addresses), params.size());
    std::string text;
    append_arguments(text, params, blocks_of(params, addresses));
    return text;
}

template <typename... T>
std::string arguments_of(const char *name, const T &...argument) {
    return arguments_of(params_of(name), argument...);
}

/** The text of the outputs, after something has been done to the memory. */
template <typename Action, typename... T>
std::string outputs_of(const char *name, Action action, const T &...argument) {
    const void *const addresses[] = {&argument...};
    const auto params = params_of(name);
    const calls::Blocks blocks = blocks_of(params, addresses);
    std::vector<uint8_t> storage;
    const calls::Blocks before = copies_of(params, blocks, storage);
    action();
    std::string text;
    append_outputs(text, params, blocks, before);
    return text;
}

constexpr uint32_t kUnit = 0;

TEST(JsonText, IntegersHaveTheSignOfTheirType) {
    EXPECT_EQ(arguments_of("user_port_enable_set", kUnit, kUnit, int32_t{-1}, uint32_t{0xFFFFFFFF}),
              R"({"unit":0,"zero":0,"port":-1,"enable":4294967295})");
    EXPECT_EQ(arguments_of("user_qos_dscp_map_set", uintptr_t{0}, uintptr_t{0}, uintptr_t{0xFFFFFFFF}, uintptr_t{7}),
              R"({"unit":0,"zero":0,"dscp":4294967295,"priority":7})");
}

TEST(JsonText, TextIsEscaped) {
    const char *name = "a\"b\\c\n\x7F\xFF~";
    EXPECT_EQ(arguments_of("get_nic_index", name), R"({"name":"a\"b\\c\u000A\u007F\u00FF~"})");
    name = nullptr;
    EXPECT_EQ(arguments_of("get_nic_index", name), R"({"name":null})");
}

TEST(JsonText, SetsArePortNumbers) {
    const adp_ports_t words = {1U << 4 | 1U << 5, 1, 0, 0, 0, 0, 0, 1U << 31};
    const uint32_t *members = words;
    const uint32_t *untagged = nullptr;
    EXPECT_EQ(arguments_of("adp_vlan_port_set", uint32_t{100}, members, untagged),
              R"({"vid":100,"members":[4,5,32,255],"untagged":null})");
    EXPECT_EQ(arguments_of("adp_vlan_port_add", uint32_t{100}, reinterpret_cast<uintptr_t>(members), uintptr_t{0}),
              R"({"vid":100,"ports":[4,5,32,255],"untagged":null})");
}

TEST(JsonText, ZerosAtTheEndAreLeftOut) {
    adp_l2_entry_t entry{};
    entry.mac[1] = 0xAB;
    entry.port = -1;
    entry.reserved68[1] = 3;
    EXPECT_EQ(arguments_of("user_mac_addr_add", kUnit, entry),
              R"({"unit":0,"entry":{"flags":0,"mac":"00AB","vid":0,"port":-1,"reserved16":0,"trunk":0,)"
              R"("reserved24":[],"index":0,"ports":[],"reserved68":[0,3]}})");
}

TEST(JsonText, WhatACallOnlyWritesIsAnArgumentIfItIsNotZero) {
    uint32_t value = 0;
    uint32_t *enable = &value;
    const auto text = [&] { return arguments_of("user_port_enable_get", kUnit, kUnit, int32_t{4}, enable); };
    EXPECT_EQ(text(), R"({"unit":0,"zero":0,"port":4})");
    value = 9;
    EXPECT_EQ(text(), R"({"unit":0,"zero":0,"port":4,"enable":9})");
    enable = nullptr;
    EXPECT_EQ(text(), R"({"unit":0,"zero":0,"port":4,"enable":null})");
}

TEST(JsonText, OutputsAreWhatHasChanged) {
    adp_ports_t members = {2};
    adp_ports_t untagged = {4};
    uint32_t *members_at = members;
    uint32_t *untagged_at = untagged;
    const auto outputs = [&](auto action) {
        return outputs_of("adp_vlan_port_get", action, uint32_t{1}, members_at, untagged_at);
    };
    EXPECT_EQ(outputs([] {}), "{}");
    EXPECT_EQ(outputs([&] { untagged[0] = 0; }), R"({"untagged":[]})");
    EXPECT_EQ(outputs([&] { members[7] = untagged[0] = 1; }), R"({"members":[1,224],"untagged":[0]})");
}

TEST(JsonText, ConditionsOfARuleAreWhatTheirTypeSays) {
    FpEntity entity{};
    entity.qualify_num = 2;
    entity.qualifies[0] = {ADP_FP_QUALIFY_SRC_MAC, {2, 0, 0, 0, 0, 1}, {0xFF}};
    entity.qualifies[1].type = ADP_FP_QUALIFY_OUTER_VLAN_ID;
    const uint32_t vid = 100;
    std::memcpy(entity.qualifies[1].data, &vid, sizeof vid);
    entity.actions[0].type = ADP_FP_ACTION_METER;
    std::memcpy(entity.actions[0].param2, &vid, sizeof vid);
    EXPECT_EQ(arguments_of("adp_fp_add_entity_rule", entity),
              R"({"entity":{"submodule_type":0,"unit":0,"entity_id":0,"true_entry":0,"priority":0,"qualify_num":2,)"
              R"("action_num":0,"qualifies":[{"type":6,"data":"020000000001","mask":"FF"},)"
              R"({"type":18,"data":[100],"mask":[]}],"actions":[{"type":53,"param":[],"param2":[100]}]}})");
}

std::string condition(uint32_t type, const void *data, uint32_t length) {
    FpEntity *entity = nullptr;
    const void *mask = nullptr;
    return arguments_of("adp_fp_add_entity_qualify", entity, type, data, length, mask, int32_t{0});
}

TEST(JsonText, DataOfTwoOctetsIsANumber) {
    const uint16_t vid = 0x0102;
    EXPECT_EQ(condition(ADP_FP_QUALIFY_OUTER_VLAN_ID, &vid, sizeof vid),
              R"({"entity":null,"type":18,"data":258,"data_len":2,"mask":null,"mask_len":0})");
    EXPECT_EQ(condition(ADP_FP_QUALIFY_SRC_MAC, &vid, sizeof vid),
              R"({"entity":null,"type":6,"data":258,"data_len":2,"mask":null,"mask_len":0})");
}

TEST(JsonText, DataIsReadAsFarAsTheCallReadsIt) {
    const std::array<uint32_t, 17> words = {7, 0, 9};
    EXPECT_EQ(condition(ADP_FP_QUALIFY_IN_PORTS, words.data(), 64),
              R"({"entity":null,"type":13,"data":[7,0,9],"data_len":64,"mask":null,"mask_len":0})");
    EXPECT_EQ(condition(ADP_FP_QUALIFY_IN_PORTS, words.data(), 65),
              R"({"entity":null,"type":13,"data":[],"data_len":65,"mask":null,"mask_len":0})");
}

TEST(JsonText, OctetsThatAreNoWholeWordsStayOctets) {
    const std::array<uint8_t, 3> octets = {1, 2, 3};
    EXPECT_EQ(condition(ADP_FP_QUALIFY_DSCP, octets.data(), 3),
              R"({"entity":null,"type":31,"data":"010203","data_len":3,"mask":null,"mask_len":0})");
}

TEST(JsonText, TheValueOfARemarkRuleIsWhatItsFieldSays) {
    RemarkRule rule{};
    rule.match_field = ADP_REMARK_SRC_MAC;
    rule.match_value[0] = 0x0A;
    const RemarkRule *at = &rule;
    const auto value = [&] {
        const std::string text = arguments_of("adp_add_remark_rule", at);
        return text.substr(text.find("\"match_value\""));
    };
    EXPECT_EQ(value(), R"("match_value":"0A"}})");
    rule.match_field = ADP_REMARK_ETHER_TYPE;
    const uint32_t type = 0x0800;
    std::memcpy(rule.match_value, &type, sizeof type);
    EXPECT_EQ(value(), R"("match_value":[2048]}})");
}

TEST(JsonText, AFrameIsAsLongAsTheLow16BitsOfItsLength) {
    const uint8_t octets[] = {1, 2, 3, 4};
    const uint8_t *frame = octets;
    EXPECT_EQ(arguments_of("adp_transmit_frame", frame, uint32_t{0x10003}, kUnit, adp_intf_t{1}, uint32_t{3}),
              R"({"frame":"010203","length":65539,"unused":0,"intf":1,"opcode":3})");
}

TEST(JsonText, AddressesInTheRecordOfAFrameAreOffsets) {
    uint8_t memory[25] = {0, 1, 2};
    uint8_t *frame = memory + 1;
    adp_rx_frame_t record{};
    record.frame = frame;
    record.length = 24;
    record.vlan_tag = frame + 12;
    record.l4_header = memory;
    adp_rx_frame_t *at = &record;
    EXPECT_EQ(arguments_of("__adp_receive_frame", at, int32_t{1}),
              R"({"desc":{"reserved1":0,"reserved2":0,"frame":"0102","length":24,"ethernet_header":null,)"
              R"("udp_header":null,"ipv4_header":null,"ipv6_header":null,"vlan_tag":12,"l4_header":null,)"
              R"("intf":0,"phy":0},"check_vlan":1})");
    EXPECT_EQ(outputs_of(
                  "__adp_receive_frame", [&] { frame[23] = 1; }, at, int32_t{1})
                  .substr(0, 107),
              R"({"desc":{"reserved1":0,"reserved2":0,)"
              R"("frame":"010200000000000000000000000000000000000000000001","length":24)");
    record.frame = nullptr;
    EXPECT_NE(arguments_of("__adp_receive_frame", at, int32_t{1}).find(R"("frame":null,"length":24)"),
              std::string::npos);
}

TEST(JsonText, AnAddressThatTheCallSetsIsAnOffset) {
    uint8_t octets[20] = {};
    uint8_t *frame = octets;
    uint8_t *start = reinterpret_cast<uint8_t *>(&frame);
    uint8_t **out_frame = &start;
    uint16_t *out_length = nullptr;
    uint8_t *out_flag = nullptr;
    adp_intf_t *out_intf = nullptr;
    const uint32_t length = sizeof octets;
    EXPECT_EQ(arguments_of("adp_receive_frame", frame, out_frame, length, out_length, out_flag, out_intf),
              R"({"frame":"","length":20,"out_length":null,"out_flag":null,"out_intf":null})");
    const auto outputs = [&](uint8_t *set) {
        return outputs_of(
            "adp_receive_frame", [&] { start = set; }, frame, out_frame, length, out_length, out_flag, out_intf);
    };
    EXPECT_EQ(outputs(octets + 6), R"({"out_frame":6})");
    EXPECT_EQ(outputs(nullptr), R"({"out_frame":null})");
}

TEST(JsonText, AListIsItsInterfaces) {
    const adp_tx_frame_t *frame = nullptr;
    adp_tx_dest_t first{};
    adp_tx_dest_t second{};
    adp_list_link_t head = {&first.link, &second.link};
    first = {{&second.link, &head}, 3};
    second = {{&head, &first.link}, ADP_AGG_INTF(2)};
    const adp_list_link_t *at = &head;
    EXPECT_EQ(arguments_of("__adp_transmit_frame", frame, at, ADP_NO_VLAN, uint32_t{0}),
              R"({"desc":null,"destinations":[3,268435458],"vid":4294967295,"mode":0})");
    head = {&head, &head};
    EXPECT_EQ(arguments_of("__adp_transmit_frame", frame, at, uint32_t{5}, uint32_t{0}),
              R"({"desc":null,"destinations":[],"vid":5,"mode":0})");
}

TEST(JsonText, ACallbackIsSetOrNull) {
    adp_link_event_cb_t handler = nullptr;
    EXPECT_EQ(arguments_of("adp_linkscan_register", handler), R"({"handler":null})");
    handler = [](uint32_t, uint32_t, uint32_t) { return 0; };
    EXPECT_EQ(arguments_of("adp_linkscan_register", handler), R"({"handler":"set"})");
}

TEST(JsonText, AMessageEndsWithItsRecord) {
    const uint16_t record[] = {0, 5, 3, 1};
    uintptr_t words[] = {1, 2, 1, 0, 0, 0, 0, reinterpret_cast<uintptr_t>(record)};
    const uintptr_t *message = words;
    EXPECT_EQ(arguments_of("equeue_send_ucast", uintptr_t{9}, message, int32_t{-1}),
              R"({"queue":9,"message":[1,2,1,0,0,0,0,[0,5,3,1]],"timeout":-1})");
    words[7] = 0;
    EXPECT_EQ(arguments_of("equeue_send_ucast", uintptr_t{9}, message, int32_t{-1}),
              R"({"queue":9,"message":[1,2,1,0,0,0,0,null],"timeout":-1})");
}

TEST(JsonText, TheLoggerHasItsText) {
    const char *word = "ACL";
    const char *format = "%d";
    const char *text = "12";
    EXPECT_EQ(arguments_of(calls::log_params(), int32_t{7}, int32_t{18}, word, format, text),
              R"({"level":7,"module":18,"word":"ACL","format":"%d","text":"12"})");
}

TEST(JsonText, TypesOfPointersToVoidAreKnown) {
    uint64_t counter = 1ULL << 40;
    void *value = &counter;
    EXPECT_EQ(arguments_of("adp_intf_stat_get", adp_intf_t{1}, uint32_t{0}, value),
              R"({"intf":1,"selector":0,"value":1099511627776})");
    adp_cable_diag_t result = {{1, 0, 1}, {2}};
    value = &result;
    EXPECT_EQ(arguments_of("adp_intf_cablediag", adp_intf_t{1}, value),
              R"({"intf":1,"result":{"state":[1,0,1],"length":[2]}})");
}

}  // namespace json_text_test
