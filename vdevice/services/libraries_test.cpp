// The two shared libraries as a management program meets them: linked, calling a daemon.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "platform/device_services.h"
#include "platform/netlink_api.h"
#include "vdevice/remote/protocol.h"
#include "vdevice/remote/testing/device.h"
#include "vdevice/remote/vdev_linkscan.h"
#include "vdevice/services/testing/device.h"
#include "vdevice/services/testing/link_changes.h"
#include "vdevice/services/vdev_equeue.h"

namespace libraries_test {

using testing::ElementsAre;
using testing::HasSubstr;
using vdevice::chip::Status;
using vdevice::services::Device;

constexpr uint32_t kVid = Device::kVid;
constexpr int kPollMilliseconds = 20;

/** One daemon for all tests: the libraries read the path of its socket at their first call and keep it. */
class Libraries : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        char name[] = "/tmp/vdevice-test-XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        setenv("VDEVICE_DIR", name, 1);
        ASSERT_EQ(vdevice::remote::driver_socket(), std::string(name) + "/driver");
        start();
    }
    static void TearDownTestSuite() {
        stop();
        std::filesystem::remove_all(vdevice::remote::run_directory());
    }
    static void start() {
        server = std::make_unique<vdevice::remote::Server>(device, vdevice::remote::driver_socket());
        device.link_changed = [](int32_t port, uint32_t link) {
            const std::array<uint32_t, 6> words = {0, static_cast<uint32_t>(port), 1000, 1, 3 * (1 - link), link};
            server->publish_link_change(words);
        };
        server->set_extra_handler(
            [](vdevice::remote::Extra, std::span<const uint32_t> words, std::vector<uint32_t> &answer) {
                if (words.size() != 1 || words[0] != erps_event_queue || looks-- > 0) {
                    return 0;
                }
                answer = {1, 2, 3, 4, 5, 6, 7, 0, 0, 29, 26, 1};
                return 1;
            });
        loop = std::make_unique<vdevice::remote::Loop>(*server);
    }
    static void stop() {
        loop.reset();
        server.reset();
    }

    static Device device;
    static std::unique_ptr<vdevice::remote::Server> server;
    static std::unique_ptr<vdevice::remote::Loop> loop;
    static std::atomic<int> looks; /**< how often the event queue is found empty */
};

Device Libraries::device;
std::unique_ptr<vdevice::remote::Server> Libraries::server;
std::unique_ptr<vdevice::remote::Loop> Libraries::loop;
std::atomic<int> Libraries::looks{0};

vdevice::LinkChanges changes;

int32_t note_change(uint32_t unit, uint32_t port, const uint32_t info[4]) {
    changes.add({unit, port, info[0], info[1], info[2], info[3]});
    return sys_trace_get();  // the callback may call the device
}

TEST_F(Libraries, ReadPortSetsFromTheDevice) {
    adp_ports_t members = {};
    adp_ports_t untagged = {};
    EXPECT_EQ(user_vlan_port_get(0, 0, kVid, members, untagged), 0);
    EXPECT_THAT(members, ElementsAre(1u << 4, 0, 0, 0, 0, 0, 0, 1u << 31));
    EXPECT_THAT(untagged, ElementsAre(0, 2, 0, 0, 0, 0, 0, 0));
}

TEST_F(Libraries, LeaveOutputsAloneWhenTheDeviceRefuses) {
    adp_ports_t members = {7};
    adp_ports_t untagged = {8};
    EXPECT_EQ(user_vlan_port_get(0, 0, kVid + 1, members, untagged), vdevice::chip::code(Status::kVlanMissing));
    EXPECT_EQ(members[0], 7u);
    EXPECT_EQ(untagged[0], 8u);
}

TEST_F(Libraries, ReadAVlanRecordInHostByteOrder) {
    alignas(uint32_t) uint8_t record[DEVICE_VLAN_RECORD_BYTES] = {};
    EXPECT_EQ(get_vlan_info(kVid, record), 0);
    uint32_t words[4];
    std::memcpy(words, record, sizeof words);
    EXPECT_THAT(words, ElementsAre(kVid, 0, 1, 0x80000002));
}

TEST_F(Libraries, LogFormattedText) {
    EXPECT_EQ(Log_logging_func(5, 5, "UPDOWN", "interface %s %d", "aggregateport", 2), 0);
    EXPECT_EQ(device.logged, "UPDOWN: interface aggregateport 2");
    setenv("VDEVICE_LOG_STDERR", "1", 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(Log_logging_func(7, 18, "ACL", "full"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "7 ACL: full\n");
    unsetenv("VDEVICE_LOG_STDERR");
}

TEST_F(Libraries, SendAnEventsRecordWithIt) {
    const uint16_t record[] = {0, 4, 1, 1};
    const uintptr_t message[DEVICE_MESSAGE_WORDS] = {1, 2, 1, 0, 0, 0, 0, reinterpret_cast<uintptr_t>(record)};
    EXPECT_EQ(erps_event_queue, 1u);
    EXPECT_EQ(equeue_send_ucast(erps_event_queue, message, DEVICE_WAIT_FOREVER), 1);
    EXPECT_THAT(device.event, ElementsAre(1, 1, -1, 0, 4, 1, 1));
}

TEST_F(Libraries, MakeTheTextOfAnAddressThemselves) {
    const uint8_t mac[] = {0x02, 0, 0, 0, 0x0A, 0xFF};
    EXPECT_STREQ(onu_mac2str(mac), "02:00:00:00:0a:ff");
    EXPECT_EQ(onu_mac2str(nullptr), nullptr);
    const char *here = onu_mac2str(mac);
    std::thread([] {
        const uint8_t other[] = {1, 1, 1, 1, 1, 1};
        EXPECT_STREQ(onu_mac2str(other), "01:01:01:01:01:01");
    }).join();
    EXPECT_STREQ(here, "02:00:00:00:0a:ff") << "each thread has a text of its own";
}

TEST_F(Libraries, TellOfLinkChangesOnAThreadOfTheirOwn) {
    ASSERT_EQ(vdev_linkscan_register(note_change), 0);
    EXPECT_EQ(user_port_enable_set(0, 0, 29, 0), 0);
    EXPECT_EQ(user_port_enable_set(0, 0, 29, 1), 0);
    EXPECT_THAT(changes.wait_for(2), ElementsAre(ElementsAre(0, 29, 1000, 1, 3, 0), ElementsAre(0, 29, 1000, 1, 0, 1)));
    EXPECT_NE(changes.thread(), std::this_thread::get_id());
    // A burst far beyond what the socket holds arrives whole and in order.
    constexpr uint32_t kBurst = 500;
    for (uint32_t number = 0; number < kBurst; ++number) {
        EXPECT_EQ(user_port_enable_set(0, 0, static_cast<int32_t>(number), 1), 0);
    }
    const auto burst = changes.wait_for(kBurst);
    ASSERT_EQ(burst.size(), kBurst);
    for (uint32_t number = 0; number < kBurst; ++number) {
        EXPECT_EQ(burst[number][1], number);
    }
}

// A change from before the registration may still arrive after it; the next round waits longer.
TEST_F(Libraries, StopTellingWhenNobodyIsRegistered) {
    constexpr std::chrono::milliseconds kLongest{1024};
    std::vector<uint32_t> ports;
    for (std::chrono::milliseconds wait{1}; ports.size() != 1 && wait <= kLongest; wait *= 2) {
        ASSERT_EQ(vdev_linkscan_register(nullptr), 0);
        EXPECT_EQ(user_port_enable_set(0, 0, 4, 1), 0);
        std::this_thread::sleep_for(wait);
        ASSERT_EQ(vdev_linkscan_register(note_change), 0);
        EXPECT_EQ(user_port_enable_set(0, 0, 5, 1), 0);
        ports.clear();
        while (ports.empty() || ports.back() != 5) {
            const auto told = changes.wait_for(1);
            ASSERT_FALSE(told.empty());
            std::transform(told.begin(), told.end(), std::back_inserter(ports),
                           [](const std::vector<uint32_t> &change) { return change[1]; });
        }
    }
    EXPECT_THAT(ports, ElementsAre(5));
}

TEST_F(Libraries, ReadTheEventQueue) {
    uint32_t message[VDEV_EQUEUE_WORDS] = {};
    uint16_t record[VDEV_EQUEUE_RECORD_FIELDS] = {};
    looks = 0;
    EXPECT_EQ(vdev_equeue_receive(erps_event_queue, message, record, 0), 1);
    EXPECT_THAT(message, ElementsAre(1, 2, 3, 4, 5, 6, 7, 0));
    EXPECT_THAT(record, ElementsAre(0, 29, 26, 1));
    looks = 3;
    EXPECT_EQ(vdev_equeue_receive(erps_event_queue, message, record, -1), 1) << "waited for";
    EXPECT_LT(looks, 0);
    EXPECT_EQ(vdev_equeue_receive(erps_event_queue + 1, message, record, 20), 0);
    EXPECT_EQ(vdev_equeue_receive(erps_event_queue, nullptr, record, 0), -1);
    EXPECT_EQ(vdev_equeue_receive(erps_event_queue, message, nullptr, 0), -1);
}

// Last, since they take the daemon away.
TEST_F(Libraries, FindTheLinkScanAgainWhenTheDaemonIsBack) {
    ASSERT_EQ(vdev_linkscan_register(note_change), 0);
    stop();
    testing::internal::CaptureStderr();
    start();
    constexpr auto kPatience = std::chrono::seconds{10};
    const auto end = std::chrono::steady_clock::now() + kPatience;
    std::vector<std::vector<uint32_t>> told;
    while (told.empty() && std::chrono::steady_clock::now() < end) {
        user_port_enable_set(0, 0, 7, 1);  // the first call meets the old connection and fails
        std::this_thread::sleep_for(std::chrono::milliseconds{kPollMilliseconds});
        told = changes.wait_for(0);
    }
    testing::internal::GetCapturedStderr();
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(told.front()[1], 7u);
    EXPECT_EQ(vdev_linkscan_register(nullptr), 0);
}

TEST_F(Libraries, OutliveTheirDaemon) {
    EXPECT_EQ(sys_trace_get(), 1);
    stop();
    testing::internal::CaptureStderr();
    EXPECT_EQ(user_vlan_create(0, 0, kVid), -1);
    EXPECT_EQ(sys_trace_get(), -1);
    EXPECT_EQ(sys_trace_get(), -1);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_THAT(said, HasSubstr("libnetlink_api: user_vlan_create failed: the virtual device at "));
    EXPECT_THAT(said, HasSubstr("libdevice_services: sys_trace_get failed: the virtual device at "));
    EXPECT_GE(std::count(said.begin(), said.end(), '\n'), 2) << said;
    EXPECT_LE(std::count(said.begin(), said.end(), '\n'), 3) << "the link scan may complain too: " << said;
    start();
    EXPECT_EQ(sys_trace_get(), 1);
}

}  // namespace libraries_test
