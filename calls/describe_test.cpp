// Calls as text: each form of argument, independent of word width and byte order.
#include "calls/describe.h"

#include <gtest/gtest.h>

#include <cstring>

#include "platform/device_services.h"
#include "platform/netlink_api.h"

using calls::CallId;
using calls::describe_call;
using calls::describe_result;

namespace describe_test {

/** The addresses of some arguments, as a stub collects them. */
template <typename... T>
struct Collected {
    explicit Collected(const T &...argument) : addresses{&argument...} {}
    const void *addresses[sizeof...(T)];
};

constexpr uint32_t kUnit = 0;
constexpr uint32_t kZero = 0;
constexpr uint32_t kVid = 100;

TEST(Describe, ShowsPortSetsAsPortNumbers) {
    const adp_ports_t member_words = {(1u << 4) | (1u << 5), 1u, 0, 0, 0, 0, 0, 1u << 31};
    const adp_ports_t untagged_words = {};
    const uint32_t *members = member_words;
    const uint32_t *untagged = untagged_words;
    const Collected call(kUnit, kZero, kVid, members, untagged);
    EXPECT_EQ(describe_call(CallId::user_vlan_port_set, call.addresses),
              "user_vlan_port_set(unit=0, zero=0, vid=100, members={4,5,32,255}, untagged={})");
}

TEST(Describe, ShowsThreePortsInARowAsARange) {
    const adp_ports_t words = {0x0000009E, 0, 0, 0, 0, 0, 0, 0xE0000000};
    EXPECT_EQ(calls::ports_text(words, 1), "{1-4,7}");
    EXPECT_EQ(calls::ports_text(words, 8), "{1-4,7,253-255}");
    const adp_ports_t all = {~0U, ~0U, ~0U, ~0U, ~0U, ~0U, ~0U, ~0U};
    EXPECT_EQ(calls::ports_text(all, 8), "{0-255}");
}

TEST(Describe, ShowsANullAddressAsNull) {
    const uint32_t *none = nullptr;
    const Collected call(kUnit, kZero, kVid, none, none);
    EXPECT_EQ(describe_call(CallId::user_vlan_port_set, call.addresses),
              "user_vlan_port_set(unit=0, zero=0, vid=100, members=null, untagged=null)");
}

TEST(Describe, ShowsAPhysicalPortWithItsSign) {
    const int32_t port = -1;
    const uint32_t enable = 0xFFFFFFFF;
    const Collected call(kUnit, kZero, port, enable);
    EXPECT_EQ(describe_call(CallId::user_port_enable_set, call.addresses),
              "user_port_enable_set(unit=0, zero=0, port=-1, enable=4294967295)");
}

TEST(Describe, LeavesOutputsOutOfTheCallAndShowsThemWithTheResult) {
    const int32_t port = 4;
    uint32_t value = 77;
    uint32_t *enable = &value;
    const Collected call(kUnit, kZero, port, enable);
    EXPECT_EQ(describe_call(CallId::user_port_enable_get, call.addresses),
              "user_port_enable_get(unit=0, zero=0, port=4)");
    EXPECT_EQ(describe_result(CallId::user_port_enable_get, call.addresses, 0), "0 {enable=77}");
    EXPECT_EQ(describe_result(CallId::user_port_enable_get, call.addresses, -7), "-7 {enable=77}");
}

TEST(Describe, ShowsABareResultOfACallWithoutOutputs) {
    const Collected call(kUnit, kZero, kVid);
    EXPECT_EQ(describe_result(CallId::user_vlan_create, call.addresses, -1), "-1");
}

TEST(Describe, ShowsStructsWithTheirFields) {
    adp_l2_entry_t entry{};
    entry.flags = NETLINK_L2_STATIC;
    entry.mac[0] = 0x02;
    entry.mac[5] = 0xAB;
    entry.vid = kVid;
    entry.port = -1;
    entry.ports[0] = 1u << 3;
    const Collected call(kUnit, entry);
    EXPECT_EQ(describe_call(CallId::user_mac_addr_add, call.addresses),
              "user_mac_addr_add(unit=0, entry={flags=8, mac=02:00:00:00:00:ab, vid=100, port=-1, reserved16=0, "
              "trunk=0, reserved24=[0, 0], index=0, ports={3}, reserved68=[0, 0, 0, 0, 0]})");
}

TEST(Describe, ShowsAPortSetPassedByValueLikeOneThatIsAddressed) {
    const uint32_t handle = 0;
    const int32_t entry = 9;
    adp_port_set_t data{};
    adp_port_set_t mask{};
    data.word[0] = 1u << 6;
    mask.word[1] = 1u;
    const Collected call(handle, kUnit, entry, data, mask);
    const std::string text = describe_call(CallId::user_field_qualify_InPorts, call.addresses);
    EXPECT_NE(text.find("={6}, "), std::string::npos) << text;
    EXPECT_NE(text.find("={32})"), std::string::npos) << text;
}

TEST(Describe, ShowsBytesAsHexPairsAndCutsTheZerosOfLongBlocks) {
    const uint32_t handle = 0;
    const int32_t entry = 9;
    uint8_t data_bytes[NETLINK_QUALIFIER_BYTES] = {0x01, 0x80, 0xC2};
    uint8_t mask_bytes[NETLINK_QUALIFIER_BYTES] = {};
    std::memset(mask_bytes, 0xFF, sizeof mask_bytes);
    const uint8_t *data = data_bytes;
    const uint8_t *mask = mask_bytes;
    const Collected call(handle, kUnit, entry, data, mask);
    const std::string text = describe_call(CallId::user_field_qualify_DstMac, call.addresses);
    EXPECT_NE(text.find("=01:80:c2.., "), std::string::npos) << text;
    EXPECT_NE(text.find("=ff:ff:ff"), std::string::npos) << text;
    EXPECT_EQ(text.find("ff.."), std::string::npos) << text;
}

TEST(Describe, CutsWordsTo32Bits) {
    const auto queue = static_cast<uintptr_t>(0xFFFFFFFF00000005 & UINTPTR_MAX);
    const uintptr_t *message = nullptr;
    const int32_t timeout = 0;
    const Collected call(queue, message, timeout);
    EXPECT_EQ(describe_call(CallId::equeue_send_ucast, call.addresses),
              "equeue_send_ucast(queue=5, message=null, timeout=0)");
}

TEST(Describe, QuotesTextAndEscapesWhatWouldBreakTheLine) {
    const char *prefix = "f():1";
    const char *message = "say \"hi\"\n\t\\";
    const Collected call(prefix, message);
    EXPECT_EQ(describe_call(CallId::sys_trace_add_log, call.addresses),
              R"(sys_trace_add_log(prefix="f():1", message="say \"hi\"\n\x09\\"))");
}

TEST(Describe, ShowsTheRecordThatAMessageAddresses) {
    const uint16_t record[] = {0, 4, 1, 1};
    const uintptr_t words[8] = {1, 99, 1, 0, 0, 0, 0, reinterpret_cast<uintptr_t>(record)};
    const uintptr_t queue = 3;
    const uintptr_t *message = words;
    const int32_t timeout = -1;
    const Collected call(queue, message, timeout);
    EXPECT_EQ(describe_call(CallId::equeue_send_ucast, call.addresses),
              "equeue_send_ucast(queue=3, message=[1, 99, 1, 0, 0, 0, 0], record=[0, 4, 1, 1], timeout=-1)");
}

TEST(Describe, ShowsNativeWordsOfAByteBlockAsNumbers) {
    uint32_t record[DEVICE_VLAN_RECORD_BYTES / sizeof(uint32_t)] = {kVid, 0, 1, 0x10};
    uint32_t *address = record;
    const Collected call(kVid, address);
    EXPECT_EQ(describe_result(CallId::get_vlan_info, call.addresses, 0),
              "0 {record=[100, 0, 1, 16, 0, 0, 0, 0, 0, 0, "
              "0, 0, 0, 0, 0, 0]}");
}

TEST(Describe, ShowsATextResultInQuotes) {
    const uint8_t bytes[] = {1, 2, 3, 4, 5, 6};
    const uint8_t *mac = bytes;
    const Collected call(mac);
    const char *text = "01:02";
    EXPECT_EQ(describe_result(CallId::onu_mac2str, call.addresses, reinterpret_cast<intptr_t>(text)), "\"01:02\"");
    EXPECT_EQ(describe_result(CallId::onu_mac2str, call.addresses, 0), "null");
}

}  // namespace describe_test
