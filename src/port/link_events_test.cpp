// Link changes are forwarded to the device's sink, and as a message to the ring-protection queue.
#include <device_services.h>
#include <pthread.h>

#include <array>
#include <thread>

#include "port/hold.h"
#include "tests/support/library_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kUnit = 3;  // never used
constexpr uintptr_t kQueue = 0x1234;
const std::string kSendFailed = "[adp_link_event_fast_send_unicast_msg:113]Send link event message to ERPS FAILED!\n";

std::string state_line(int32_t port) {
    return "user_port_enable_get(unit=0, zero=0, port=" + std::to_string(port) + ")";
}

std::string sink_line(uint32_t intf, int32_t status) {
    return "link_event_handle_cb(intf=" + std::to_string(intf) + ", status=" + std::to_string(status) + ")";
}

class LinkEvent : public library_test::LibraryTest {
  protected:
    void SetUp() override {
        LibraryTest::SetUp();
        driver().on("link_event_handle_cb").returns(55);
    }

    static void script_admin_state(uint32_t state) { driver().on("user_port_enable_get").sets("enable", state); }
};

TEST_F(LinkEvent, IsForwardedWithTheSinksResult) {
    script_admin_state(1);
    for (uint32_t intf = 1; intf <= ADP_USER_PORTS; ++intf) {
        const uint32_t port = intf + library_test::kPortOffset;
        EXPECT_EQ(adp_link_event_handle_cb(kUnit, port, 1), 55);
        EXPECT_THAT(driver().take(), ElementsAre(state_line(static_cast<int32_t>(port)), sink_line(intf, 1)));
    }
    driver().on("link_event_handle_cb").returns(-7);
    EXPECT_EQ(adp_link_event_handle_cb(kUnit, 28, -1), -7);
    EXPECT_THAT(driver().take(), ElementsAre(state_line(28), sink_line(25, -1)));
}

TEST_F(LinkEvent, IsDroppedOnTheUplinksOnlyWhileTheyAreDisabled) {
    script_admin_state(0);
    for (uint32_t intf = 1; intf <= ADP_USER_PORTS; ++intf) {
        const uint32_t port = intf + library_test::kPortOffset;
        const bool is_uplink = intf == 25 || intf == 26;
        EXPECT_EQ(adp_link_event_handle_cb(kUnit, port, 0), is_uplink ? 0 : 55) << intf;
        EXPECT_EQ(driver().take().size(), is_uplink ? 1u : 2u) << intf;
    }
    EXPECT_EQ(driver().count("link_event_handle_cb"), 24u);
}

TEST_F(LinkEvent, CountsAsDisabledWhenTheStateCannotBeRead) {
    script_admin_state(1);
    driver().fail_every("user_port_enable_get");
    EXPECT_EQ(adp_link_event_handle_cb(kUnit, 28, 1), 0);
    EXPECT_EQ(adp_link_event_handle_cb(kUnit, 29, 1), 0);
    EXPECT_EQ(adp_link_event_handle_cb(kUnit, 27, 1), 55);
    EXPECT_THAT(driver().take(), ElementsAre(state_line(28), state_line(29), state_line(27), sink_line(24, 1)));
}

TEST_F(LinkEvent, UsesTheStateAndIgnoresTheResultOfReadingIt) {
    script_admin_state(2);
    driver().on("user_port_enable_get").returns(-1);
    EXPECT_EQ(adp_link_event_handle_cb(kUnit, 28, 1), 55);
}

TEST_F(LinkEvent, OfAHeldUplinkIsForwardedWithoutADriverCall) {
    adp::port_hold_state[25 - 1] = adp::HoldState::kHeld;
    EXPECT_EQ(adp_link_event_handle_cb(kUnit, 28, 0), 55);
    EXPECT_THAT(driver().take(), ElementsAre(sink_line(25, 0)));
}

TEST_F(LinkEvent, OfAPortWithoutAnInterfaceIsForwardedAsNone) {
    script_admin_state(0);
    EXPECT_EQ(adp_link_event_handle_cb(kUnit, 30, 1), 55);
    EXPECT_THAT(driver().take(), ElementsAre(sink_line(0xFFFFFFFF, 1)));
}

TEST_F(LinkEvent, OfTheCpuPortIsForwarded) {
    script_admin_state(0);
    EXPECT_EQ(adp_link_event_handle_cb(kUnit, 0, 1), 55);
    EXPECT_THAT(driver().take(), ElementsAre(state_line(0), sink_line(0, 1)));
}

TEST_F(LinkEvent, ChangesNoTable) {
    const std::string tables = library_test::table_bytes();
    EXPECT_EQ(adp_link_event_handle_cb(kUnit, 28, 1), 0);
    EXPECT_EQ(adp_link_event_handle_cb(kUnit, 4, 1), 55);
    EXPECT_EQ(library_test::table_bytes(), tables);
}

class LinkMessage : public library_test::LibraryTest {
  protected:
    using Message = std::array<uintptr_t, DEVICE_MESSAGE_WORDS>;

    void SetUp() override {
        LibraryTest::SetUp();
        erps_event_queue = kQueue;
        script_queue(1);
    }

    void TearDown() override {
        erps_event_queue = 0;
        LibraryTest::TearDown();
    }

    /** Keeps the message and the record that its last word points at, as they are when the queue gets them. */
    void script_queue(int32_t result) {
        driver().on("equeue_send_ucast").does([this, result](recording::Arguments &call) {
            EXPECT_EQ(call.word("queue"), kQueue);
            EXPECT_EQ(call.i32("timeout"), -1);
            const auto bytes = call.bytes("message");
            EXPECT_EQ(bytes.size(), sizeof message);
            std::memcpy(message.data(), bytes.data(), sizeof message);
            record = *reinterpret_cast<const adp_link_data_t *>(message[7]);
            return result;
        });
    }

    static std::vector<uint32_t> numbers(const adp_link_data_t &data) {
        return {data.unit, data.port, data.intf, data.status};
    }

    Message message = {};
    adp_link_data_t record = {};
};

using Numbers = std::vector<uint32_t>;

TEST_F(LinkMessage, PointsAtTheInterfacesRecord) {
    EXPECT_EQ(adp_link_event_fast_send_unicast_msg(0, 29, 1), 1);
    EXPECT_EQ(driver().count(), 1u);
    EXPECT_THAT(message, ElementsAre(1, static_cast<uintptr_t>(pthread_self()), 1, 0, 0, 0, 0,
                                     reinterpret_cast<uintptr_t>(&g_intf_link_data[26])));
    EXPECT_EQ(numbers(record), (Numbers{0, 29, 26, 1})) << "written before the message is sent";
    EXPECT_EQ(numbers(g_intf_link_data[26]), (Numbers{0, 29, 26, 1}));
}

TEST_F(LinkMessage, RecordsAreFour16BitNumbersEach) {
    static_assert(sizeof g_intf_link_data == 27 * 8);
    for (uint32_t intf = 0; intf <= ADP_USER_PORTS; ++intf) {
        start_over();
        script_queue(1);
        const uint32_t port = intf == 0 ? 0 : intf + library_test::kPortOffset;
        EXPECT_EQ(adp_link_event_fast_send_unicast_msg(7, port, 2), 1);
        std::array<uint16_t, 27 * 4> words;
        std::memcpy(words.data(), g_intf_link_data, sizeof words);
        for (size_t word = 0; word < words.size(); ++word) {
            const uint32_t expected[] = {7, port, intf, 2};
            EXPECT_EQ(words[word], word / 4 == intf ? expected[word % 4] : 0u) << intf << " " << word;
        }
        EXPECT_EQ(message[7], reinterpret_cast<uintptr_t>(&g_intf_link_data[intf]));
    }
}

TEST_F(LinkMessage, NumbersAreCutTo16Bits) {
    ASSERT_EQ(adp_add_phy_port(3, 0, 0, 0x00051234, 0), ADP_OK);
    EXPECT_EQ(adp_link_event_fast_send_unicast_msg(0x00010002, 0x00051234, -1), 1);
    EXPECT_EQ(numbers(g_intf_link_data[3]), (Numbers{2, 0x1234, 3, 0xFFFF}));
}

TEST_F(LinkMessage, SecondChangeOverwritesTheRecordOfTheFirst) {
    EXPECT_EQ(adp_link_event_fast_send_unicast_msg(0, 4, 1), 1);
    const uintptr_t first = message[7];
    EXPECT_EQ(adp_link_event_fast_send_unicast_msg(0, 4, 0), 1);
    EXPECT_EQ(message[7], first);
    EXPECT_EQ(numbers(g_intf_link_data[1]), (Numbers{0, 4, 1, 0}));
}

TEST_F(LinkMessage, NamesTheSendingThread) {
    uintptr_t sender = 0;
    std::thread other([&] {
        sender = static_cast<uintptr_t>(pthread_self());
        adp_link_event_fast_send_unicast_msg(0, 4, 1);
    });
    other.join();
    EXPECT_EQ(message[1], sender);
    EXPECT_NE(message[1], static_cast<uintptr_t>(pthread_self()));
}

TEST_F(LinkMessage, PositiveResultOfTheQueueIsReturnedSilently) {
    for (const int32_t result : {1, 2, INT32_MAX}) {
        script_queue(result);
        ::testing::internal::CaptureStderr();
        EXPECT_EQ(adp_link_event_fast_send_unicast_msg(0, 4, 1), result);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    }
}

TEST_F(LinkMessage, AnyOtherResultIsPrintedAndTheChangeStaysRecorded) {
    for (const int32_t result : {0, -1, INT32_MIN}) {
        start_over();
        script_queue(result);
        ::testing::internal::CaptureStderr();
        EXPECT_EQ(adp_link_event_fast_send_unicast_msg(0, 4, 1), static_cast<int32_t>(kSendFailed.size()));
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), kSendFailed);
        EXPECT_EQ(numbers(g_intf_link_data[1]), (Numbers{0, 4, 1, 1}));
        EXPECT_EQ(driver().count(), 1u);
    }
}

TEST_F(LinkMessage, PortWithoutARecordIsRefused) {
    library_test::make_default_map(30);
    const std::string tables = library_test::table_bytes();
    // Interface 27 is in the map, port 200 is not.
    for (const uint32_t port : {30u, 33u, 200u, 0xFFFFFFFFu}) {
        EXPECT_EQ(adp_link_event_fast_send_unicast_msg(0, port, 1), -1) << port;
    }
    EXPECT_EQ(adp_link_event_fast_send_unicast_msg_ex(27, 1), -1);
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(library_test::table_bytes(), tables);
}

TEST_F(LinkMessage, OfAnInterfaceNamesItsPortOnUnit0) {
    EXPECT_EQ(adp_link_event_fast_send_unicast_msg_ex(26, 1), 1);
    EXPECT_EQ(numbers(g_intf_link_data[26]), (Numbers{0, 29, 26, 1}));
    EXPECT_EQ(message[7], reinterpret_cast<uintptr_t>(&g_intf_link_data[26]));
    EXPECT_EQ(adp_link_event_fast_send_unicast_msg_ex(0, 1), 1);
    EXPECT_EQ(numbers(g_intf_link_data[0]), (Numbers{0, 0, 0, 1}));
    EXPECT_EQ(driver().count(), 2u);
}

TEST_F(LinkMessage, OfAnInterfaceWithoutAPortIsRefused) {
    const std::string tables = library_test::table_bytes();
    for (const uint32_t intf : {27u, ADP_AGG_INTF(2), 0x20000001u, 0xFFFFFFFFu}) {
        EXPECT_EQ(adp_link_event_fast_send_unicast_msg_ex(static_cast<int32_t>(intf), 1), -1);
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(library_test::table_bytes(), tables);
}

TEST_F(LinkMessage, OfPortsThatShareANumberGoesToTheLowestInterface) {
    ASSERT_EQ(adp_add_phy_port(5, 0, 0, 4, 0), ADP_OK);
    EXPECT_EQ(adp_link_event_fast_send_unicast_msg_ex(5, 1), 1);
    EXPECT_EQ(numbers(g_intf_link_data[1]), (Numbers{0, 4, 1, 1}));
    EXPECT_EQ(numbers(g_intf_link_data[5]), (Numbers{0, 0, 0, 0}));
}

}  // namespace
