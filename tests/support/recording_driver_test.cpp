// The recording driver itself: what it records, answers and rejects.
#include "tests/support/recording_driver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/device_services.h"
#include "platform/netlink_api.h"

using recording::driver;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;

namespace recording_driver_test {

constexpr uint32_t kVid = 100;

class RecordingDriver : public testing::Test {
  protected:
    void SetUp() override { driver().reset(); }
};

TEST_F(RecordingDriver, WritesCallsDownInOrder) {
    EXPECT_EQ(user_vlan_create(0, 0, kVid), 0);
    const adp_ports_t members = {1u << 4};
    EXPECT_EQ(user_vlan_port_set(0, 0, kVid, members, nullptr), 0);
    EXPECT_THAT(driver().trace(),
                ElementsAre("user_vlan_create(unit=0, zero=0, vid=100)",
                            "user_vlan_port_set(unit=0, zero=0, vid=100, members={4}, untagged=null)"));
    EXPECT_EQ(driver().count(), 2u);
    EXPECT_EQ(driver().count("user_vlan_create"), 1u);
    EXPECT_EQ(driver().count("user_vlan_destroy"), 0u);
}

TEST_F(RecordingDriver, LeavesOutputsAloneUnlessScripted) {
    uint32_t enable = 77;
    EXPECT_EQ(user_port_enable_get(0, 0, 4, &enable), 0);
    EXPECT_EQ(enable, 77u);
}

TEST_F(RecordingDriver, PlaysScriptedResultsAndOutputs) {
    driver().on("user_port_enable_get").returns(-7).sets("enable", 1);
    uint32_t enable = 77;
    EXPECT_EQ(user_port_enable_get(0, 0, 4, &enable), -7);
    EXPECT_EQ(user_port_enable_get(0, 0, 5, &enable), -7);
    EXPECT_EQ(enable, 1u);
}

TEST_F(RecordingDriver, SetsTheFirstElementsOfAnArray) {
    driver().on("user_vlan_port_get").sets("members", {5, 6});
    adp_ports_t members = {1, 1, 1, 1, 1, 1, 1, 1};
    adp_ports_t untagged = {2, 2, 2, 2, 2, 2, 2, 2};
    EXPECT_EQ(user_vlan_port_get(0, 0, kVid, members, untagged), 0);
    EXPECT_THAT(members, ElementsAre(5, 6, 1, 1, 1, 1, 1, 1));
    EXPECT_THAT(untagged, ElementsAre(2, 2, 2, 2, 2, 2, 2, 2));
}

TEST_F(RecordingDriver, SetsStructsWhole) {
    adp_l2_entry_t entry{};
    entry.flags = NETLINK_L2_FOUND_TRUNK;
    entry.trunk = 3;
    size_t scripted = 0;
    for (const auto &call : calls::calls()) {
        for (const auto &param : call.params) {
            if (param.is_written() && param.element.kind == calls::Kind::kStruct &&
                param.element.layout->size == sizeof entry) {
                driver().on(call.name).sets_object(param.name, entry);
                ++scripted;
            }
        }
    }
    EXPECT_GT(scripted, 0u);
    const uint8_t key[NETLINK_MAC_KEY_BYTES] = {};
    adp_l2_entry_t found{};
    EXPECT_EQ(user_mac_addr_get(0, key, kVid, &found), 0);
    EXPECT_EQ(found.trunk, 3);
    EXPECT_EQ(found.flags, NETLINK_L2_FOUND_TRUNK);
}

TEST_F(RecordingDriver, SetsBytesByWidthOfTheElement) {
    driver().on("get_vlan_info").sets("record", {kVid, 0, 1, 2});
    alignas(uint32_t) uint8_t record[DEVICE_VLAN_RECORD_BYTES] = {};
    EXPECT_EQ(get_vlan_info(kVid, record), 0);
    uint32_t words[4];
    std::copy(record, record + sizeof words, reinterpret_cast<uint8_t *>(words));
    EXPECT_THAT(words, ElementsAre(kVid, 0, 1, 2));

    driver().on("get_vlan_info").sets_bytes("record", {9, 8}).returns(-1);
    EXPECT_EQ(get_vlan_info(kVid, record), -1);
    EXPECT_EQ(record[0], 9);
    EXPECT_EQ(record[1], 8);
}

TEST_F(RecordingDriver, PlaysQueuedScriptsOnceEach) {
    driver().on("user_vlan_create").returns(5);
    driver().on("user_vlan_create").once().returns(1);
    driver().once("user_vlan_create").returns(2);
    EXPECT_EQ(user_vlan_create(0, 0, kVid), 1);
    EXPECT_EQ(user_vlan_create(0, 0, kVid), 2);
    EXPECT_EQ(user_vlan_create(0, 0, kVid), 5);
}

TEST_F(RecordingDriver, FailsTheKthCallFromNow) {
    driver().on("user_port_enable_get").sets("enable", 1);
    uint32_t enable = 77;
    EXPECT_EQ(user_vlan_create(0, 0, kVid), 0);
    driver().fail_call(1);
    EXPECT_EQ(user_vlan_create(0, 0, kVid), 0);
    EXPECT_EQ(user_port_enable_get(0, 0, 4, &enable), -1);
    EXPECT_EQ(enable, 77u) << "a failing call writes nothing";
    EXPECT_EQ(user_port_enable_get(0, 0, 4, &enable), 0);
    EXPECT_EQ(driver().count(), 4u);
}

TEST_F(RecordingDriver, FailsTheKthCallAfterItHasWritten) {
    driver().on("user_port_enable_get").sets("enable", 1);
    uint32_t enable = 77;
    driver().fail_call_after_writing(0, -3);
    EXPECT_EQ(user_port_enable_get(0, 0, 4, &enable), -3);
    EXPECT_EQ(enable, 1u);
    driver().fail_call_after_writing(0);
    EXPECT_EQ(user_vlan_create(0, 0, kVid), -1) << "nothing is scripted for it";
}

TEST_F(RecordingDriver, FailsEveryCallOfAName) {
    driver().fail_every("user_vlan_create", -9);
    EXPECT_EQ(user_vlan_create(0, 0, kVid), -9);
    EXPECT_EQ(user_vlan_destroy(0, 0, kVid), 0);
    EXPECT_EQ(user_vlan_create(0, 0, kVid), -9);
    driver().fail_nothing();
    EXPECT_EQ(user_vlan_create(0, 0, kVid), 0);
}

TEST_F(RecordingDriver, RunsATestsOwnAction) {
    driver().on("user_port_enable_get").does([](recording::Arguments &arguments) {
        *static_cast<uint32_t *>(arguments.pointer("enable")) = arguments.u32("port") + 1;
        return arguments.i32("port") < 0 ? -2 : 0;
    });
    uint32_t enable = 77;
    EXPECT_EQ(user_port_enable_get(0, 0, 4, &enable), 0);
    EXPECT_EQ(enable, 5u);
    EXPECT_EQ(user_port_enable_get(0, 0, -1, &enable), -2);
}

TEST_F(RecordingDriver, HandsBlocksAndTextsToAnAction) {
    std::string prefix;
    driver().on("sys_trace_add_log").does([&](recording::Arguments &arguments) {
        prefix = arguments.text("prefix");
        return 0;
    });
    EXPECT_EQ(sys_trace_add_log("f():1", "text"), 0);
    EXPECT_EQ(prefix, "f():1");

    size_t members = 0;
    size_t untagged = 1;
    driver().on("user_vlan_port_set").does([&](recording::Arguments &arguments) {
        members = arguments.bytes("members").size();
        untagged = arguments.bytes("untagged").size();
        return 0;
    });
    const adp_ports_t ports = {};
    EXPECT_EQ(user_vlan_port_set(0, 0, kVid, ports, nullptr), 0);
    EXPECT_EQ(members, sizeof ports);
    EXPECT_EQ(untagged, 0u);
}

TEST_F(RecordingDriver, WritesLogMessagesDownFormatted) {
    EXPECT_EQ(Log_logging_func(5, 5, "UPDOWN", "interface %s %d", "aggregateport", 2), 0);
    EXPECT_THAT(driver().trace(),
                ElementsAre("Log_logging_func(level=5, module=5, word=\"UPDOWN\", format=\"interface %s %d\", "
                            "text=\"interface aggregateport 2\")"));
    EXPECT_EQ(driver().count("Log_logging_func"), 1u);
}

TEST_F(RecordingDriver, AnswersServicesWithTheirOwnSuccess) {
    const uintptr_t message[8] = {1};
    EXPECT_EQ(equeue_send_ucast(erps_event_queue, message, -1), 1);
    const uint8_t mac[] = {0x02, 0, 0, 0, 0, 0xAB};
    EXPECT_STREQ(onu_mac2str(mac), "02:00:00:00:00:ab");
    EXPECT_EQ(onu_mac2str(nullptr), nullptr);
    driver().on("onu_mac2str").returns_text("odd");
    EXPECT_STREQ(onu_mac2str(mac), "odd");
    driver().fail_call(0);
    EXPECT_EQ(onu_mac2str(mac), nullptr);
}

TEST_F(RecordingDriver, CountsAndAnswersWithoutATraceWhenNotRecording) {
    driver().record(false);
    driver().on("user_vlan_create").returns(3);
    EXPECT_EQ(user_vlan_create(0, 0, kVid), 3);
    driver().note("not seen");
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(driver().count("user_vlan_create"), 1u);
}

TEST_F(RecordingDriver, MixesTheTestsOwnLinesIntoTheTrace) {
    driver().note("usleep(500000)");
    EXPECT_EQ(user_vlan_create(0, 0, kVid), 0);
    EXPECT_THAT(driver().take(), ElementsAre("usleep(500000)", "user_vlan_create(unit=0, zero=0, vid=100)"));
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(RecordingDriver, ForgetsEverythingOnReset) {
    driver().on("user_vlan_create").returns(3);
    driver().fail_every("user_vlan_destroy");
    EXPECT_EQ(user_vlan_create(0, 0, kVid), 3);
    driver().reset();
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(driver().count(), 0u);
    EXPECT_EQ(user_vlan_create(0, 0, kVid), 0);
    EXPECT_EQ(user_vlan_destroy(0, 0, kVid), 0);
}

TEST_F(RecordingDriver, RefusesScriptsThatNoCallCouldPlay) {
    EXPECT_THROW(driver().on("user_vlan_creat"), std::logic_error);
    EXPECT_THROW(driver().fail_every("nobody"), std::logic_error);
    EXPECT_THROW((void)driver().count("nobody"), std::logic_error);
    EXPECT_THROW(driver().on("user_port_enable_get").sets("nobody", 1), std::logic_error);
    EXPECT_THROW(driver().on("user_port_enable_get").sets("port", 1), std::logic_error) << "only read";
    EXPECT_THROW(driver().on("user_port_enable_get").sets("enable", {1, 2}), std::logic_error) << "one word";
}

}  // namespace recording_driver_test
