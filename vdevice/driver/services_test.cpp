// The device's services, and the parts that they are made of.
#include <gtest/gtest.h>

#include <cstring>

#include "vdevice/driver/mac_text.h"
#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace services_test {

using namespace std::chrono_literals;
using chip::Mac;
using chip::PortSet;
using chip::Status;
using namespace test;

constexpr int32_t kMacSyntax = chip::code(Status::kMacSyntax);
constexpr uint32_t kFlag = 1;

TEST(Board, MapsUserPortsBothWays) {
    const Board board;
    EXPECT_EQ(board.chip_port(1), 4);
    EXPECT_EQ(board.chip_port(26), 29);
    for (const int missing : {-1, 0, 27, 0x10000001}) {
        EXPECT_EQ(board.chip_port(missing), std::nullopt);
    }
    for (int user_port = 1; user_port <= board.user_ports; ++user_port) {
        EXPECT_EQ(board.user_port(*board.chip_port(user_port)), user_port);
    }
    for (const int unused : {-1, 0, 3, 30, 31, 255}) {
        EXPECT_EQ(board.user_port(unused), std::nullopt);
    }
}

TEST(Board, MustFitTheChip) {
    EXPECT_TRUE(Board{}.is_possible());
    EXPECT_TRUE((Board{31, 1}).is_possible());
    EXPECT_FALSE((Board{31, 2}).is_possible());
    EXPECT_FALSE((Board{0, 4}).is_possible());
    EXPECT_FALSE((Board{1, 0}).is_possible()) << "port 0 is the CPU's";
    EXPECT_FALSE((Board{2147483647, 1}).is_possible());
    EXPECT_FALSE((Board{1, 2147483647}).is_possible());
}

TEST(MacText, GoesBothWays) {
    const Mac mac{0x0123456789AB};
    EXPECT_EQ(to_text(mac), "01:23:45:67:89:ab");
    EXPECT_EQ(parse_mac("01:23:45:67:89:AB"), mac);
    EXPECT_EQ(parse_mac(to_text(mac)), mac);
}

TEST(MacText, RefusesWhatIsNoAddress) {
    for (const char *text : {"", "01:23:45:67:89", "01:23:45:67:89:ab:", "01:23:45:67:89:a", "01-23-45-67-89-ab",
                             "01:23:45:67:89:ag", "0123456789ab", " 1:23:45:67:89:ab", "01:23:45:67:89:ab "}) {
        EXPECT_EQ(parse_mac(text), std::nullopt) << text;
    }
}

TEST(Journal, KeepsTheNewestLinesAndCutsLongOnes) {
    Journal journal;
    for (size_t i = 0; i < Journal::kMaxLines + 10; ++i) {
        journal.add({chip::Time{}, 0, 0, "", std::to_string(i)});
    }
    EXPECT_EQ(journal.lines().size(), Journal::kMaxLines);
    EXPECT_EQ(journal.total(), Journal::kMaxLines + 10);
    EXPECT_EQ(journal.lines().front().text, "10");
    journal.add({chip::Time{}, 0, 0, "", std::string(2 * Journal::kMaxText, 'x')});
    EXPECT_EQ(journal.lines().back().text.size(), Journal::kMaxText);
}

TEST(Journal, DoesNotHoldTheMemoryOfWhatItCutOff) {
    Journal journal;
    const std::string text(64 * Journal::kMaxText, 'x');
    journal.add({chip::Time{}, 0, 0, text, text});
    EXPECT_LT(journal.lines().back().word.capacity(), 2 * Journal::kMaxText);
    EXPECT_LT(journal.lines().back().text.capacity(), 2 * Journal::kMaxText);
}

class DriverServices : public test::DriverTest {
  protected:
    static uint64_t wide_at(const uint8_t *record, size_t offset) {
        uint32_t words[2];
        std::memcpy(words, record + offset, sizeof(words));
        return (uint64_t{words[0]} << 32) | words[1];
    }

    void make_vlan(uint32_t vid, const PortSet &members) {
        ASSERT_EQ(chip_.vlans().create({vid, vid}), Status::kOk);
        ASSERT_EQ(chip_.vlans().set_ports(vid, members, members), Status::kOk);
    }

    uint8_t record_[64] = {};
};

TEST_F(DriverServices, TheVlanRecordNumbersUserPorts) {
    make_vlan(10, ports({0, 3, 4, 29, 30}));
    EXPECT_EQ(driver_.get_vlan_info(10, record_), kOk);
    uint32_t vid = 0;
    std::memcpy(&vid, record_, sizeof(vid));
    EXPECT_EQ(vid, 10U);
    EXPECT_EQ(wide_at(record_, 8), 1ULL << 1 | 1ULL << 26) << "chip ports 0, 3 and 30 are no user ports";
    EXPECT_EQ(wide_at(record_, 16), 1ULL << 1 | 1ULL << 26);
}

TEST_F(DriverServices, TheVlanRecordHasABitForEachUserPortAndGroup) {
    for (int user_port = 1; user_port <= 26; ++user_port) {
        const uint32_t vid = 100 + static_cast<uint32_t>(user_port);
        make_vlan(vid, PortSet::of(user_port + 3));
        ASSERT_EQ(driver_.get_vlan_info(vid, record_), kOk);
        EXPECT_EQ(wide_at(record_, 8), 1ULL << user_port);
    }
    for (int group = 1; group <= 8; ++group) {
        ASSERT_EQ(chip_.create_trunk(group - 1), Status::kOk);
        ASSERT_EQ(chip_.set_trunk(group - 1, {group + 3}), Status::kOk);
        ASSERT_EQ(driver_.get_vlan_info(100 + static_cast<uint32_t>(group), record_), kOk);
        EXPECT_EQ(wide_at(record_, 8), 1ULL << group | 1ULL << (26 + group));
    }
}

TEST_F(DriverServices, AMissingVlanHasNoRecord) {
    std::memset(record_, 0xEE, sizeof(record_));
    for (const uint32_t vid : {0U, 2U, 4095U, 0x10001U, 0xFFFFFFFFU}) {
        EXPECT_EQ(driver_.get_vlan_info(vid, record_), -1);
    }
    EXPECT_EQ(driver_.get_vlan_info(1, nullptr), -1);
    for (const uint8_t octet : record_) {
        EXPECT_EQ(octet, 0xEE);
    }
}

TEST_F(DriverServices, AGroupIsFoundByItsMembers) {
    uint32_t group = 99;
    EXPECT_EQ(driver_.get_group_by_interface(3, &group), kOk);
    EXPECT_EQ(group, 0U);
    ASSERT_EQ(chip_.create_trunk(1), Status::kOk);
    ASSERT_EQ(chip_.set_trunk(1, {6, 7}), Status::kOk);
    EXPECT_EQ(driver_.get_group_by_interface(3, &group), kOk);
    EXPECT_EQ(group, 0x10000002U);
    ASSERT_EQ(chip_.set_trunk_configured(1, {6, 7, 8}), Status::kOk);
    EXPECT_EQ(driver_.get_group_by_interface(5, &group), kOk);
    EXPECT_EQ(group, 0x10000002U) << "on standby";
    ASSERT_EQ(chip_.set_trunk_configured(1, {7}), Status::kOk);
    ASSERT_EQ(chip_.set_trunk(1, {7}), Status::kOk);
    EXPECT_EQ(driver_.get_group_by_interface(3, &group), kOk);
    EXPECT_EQ(group, 0U);
    EXPECT_EQ(driver_.get_group_by_interface(27, &group), kNotFrontPort);
    EXPECT_EQ(group, 0U);
}

TEST_F(DriverServices, StaticAddressesAreRefusedForAReason) {
    EXPECT_EQ(driver_.add_mac_static_addr("nonsense", 1, 1, kFlag), kMacSyntax);
    EXPECT_EQ(driver_.add_mac_static_addr(nullptr, 1, 1, kFlag), kMacSyntax);
    EXPECT_EQ(driver_.add_mac_static_addr("02:00:00:00:00:01", 27, 1, kFlag), kNotFrontPort);
    EXPECT_EQ(driver_.add_mac_static_addr("02:00:00:00:00:01", 0x10000001, 1, kFlag), kNotFrontPort);
    EXPECT_EQ(driver_.add_mac_static_addr("02:00:00:00:00:01", 1, 10, kFlag), chip::code(Status::kVlanMissing));
    EXPECT_EQ(driver_.add_mac_static_addr("01:00:5e:00:00:01", 1, 1, kFlag), chip::code(Status::kMacNotUnicast));
    EXPECT_EQ(driver_.del_mac_addr("nonsense", 1, kFlag), kMacSyntax);
    EXPECT_EQ(driver_.del_mac_addr("02:00:00:00:00:01", 4095, kFlag), chip::code(Status::kVlanRange));
    EXPECT_EQ(chip_.macs().size(), 0U);
}

TEST_F(DriverServices, ClearingAPortLeavesStaticAndForeignAddresses) {
    chip_.macs().learn(Mac{0x020000000001}, 1, 4, 0s);
    chip_.macs().learn(Mac{0x020000000002}, 2, 4, 0s);
    chip_.macs().learn(Mac{0x020000000003}, 1, 5, 0s);
    ASSERT_EQ(driver_.add_mac_static_addr("02:00:00:00:00:04", 1, 1, kFlag), kOk);
    EXPECT_EQ(driver_.set_mac_tbl_clear_by_port(1, 7, 3), kOk);
    const auto left = chip_.macs().list();
    ASSERT_EQ(left.size(), 2U);
    EXPECT_EQ(left[0].mac, Mac{0x020000000003});
    EXPECT_EQ(left[1].mac, Mac{0x020000000004});
    EXPECT_EQ(driver_.set_mac_tbl_clear_by_port(27, 7, 3), kNotFrontPort);
    EXPECT_EQ(driver_.set_mac_tbl_clear_by_port(1, 6, 3), chip::code(Status::kBadArgument));
    EXPECT_EQ(driver_.set_mac_tbl_clear_by_port(1, 7, 4), chip::code(Status::kBadArgument));
}

TEST_F(DriverServices, LogTraceAndLinkChangesAreNoted) {
    now_ = 5s;
    EXPECT_EQ(driver_.log_line(5, 18, "ACL", "rule 1"), kOk);
    EXPECT_EQ(driver_.log_line(5, 18, nullptr, nullptr), kOk);
    EXPECT_EQ(driver_.sys_trace_add_log("f():1", "message"), kOk);
    EXPECT_EQ(driver_.link_event_handle_cb(3, 1), kOk);
    EXPECT_EQ(driver_.link_event_handle_cb(3, 0), kOk);
    const auto &lines = driver_.journal().lines();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0].time, 5s);
    EXPECT_EQ(lines[0].module, 18);
    EXPECT_EQ(lines[0].word, "ACL");
    EXPECT_EQ(lines[0].text, "rule 1");
    EXPECT_EQ(lines[1].text, "");
    EXPECT_EQ(lines[2].text, "f():1 message");
    EXPECT_EQ(lines[3].text, "interface 3 is up");
    EXPECT_EQ(lines[4].text, "interface 3 is down");
}

TEST_F(DriverServices, TheTraceIsOffUntilItIsSwitchedOn) {
    EXPECT_EQ(driver_.sys_trace_get(), 0);
    driver_.set_trace(2);
    EXPECT_EQ(driver_.sys_trace_get(), 2);
}

TEST_F(DriverServices, TheEventQueueCopiesTheRecord) {
    uint16_t record[4] = {0, 29, 26, 1};
    const uintptr_t message[8] = {9, 8, 7, 6, 5, 4, 3, reinterpret_cast<uintptr_t>(record)};
    now_ = 3s;
    EXPECT_GT(driver_.equeue_send_ucast(1, message, -1), 0);
    record[1] = 0;
    ASSERT_EQ(driver_.events().events().size(), 1U);
    const Event &event = driver_.events().events().front();
    EXPECT_EQ(event.time, 3s);
    EXPECT_EQ(event.queue, 1U);
    EXPECT_EQ(event.words, (std::array<uint32_t, 8>{9, 8, 7, 6, 5, 4, 3, 0}));
    EXPECT_EQ(event.record, (std::array<uint16_t, 4>{0, 29, 26, 1}));
}

TEST_F(DriverServices, AFullEventQueueRefuses) {
    const uintptr_t message[8] = {};
    for (size_t i = 0; i < EventQueue::kCapacity; ++i) {
        ASSERT_GT(driver_.equeue_send_ucast(1, message, -1), 0);
    }
    EXPECT_EQ(driver_.equeue_send_ucast(1, message, -1), chip::code(Status::kQueueFull));
    EXPECT_EQ(driver_.events().events().size(), EventQueue::kCapacity);
}

TEST_F(DriverServices, EventsAreTakenInOrderFromTheirQueue) {
    uintptr_t message[8] = {};
    for (const uintptr_t number : {1U, 2U, 3U}) {
        message[0] = number;
        ASSERT_GT(driver_.equeue_send_ucast(number == 2 ? 9 : 1, message, -1), 0);
    }
    EXPECT_FALSE(driver_.events().take(5).has_value());
    EXPECT_EQ(driver_.events().take(1)->words[0], 1U);
    EXPECT_EQ(driver_.events().take(1)->words[0], 3U);
    EXPECT_FALSE(driver_.events().take(1).has_value());
    EXPECT_EQ(driver_.events().take(9)->words[0], 2U);
}

}  // namespace services_test
}  // namespace vdevice::driver
