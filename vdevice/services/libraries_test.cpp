// The two shared libraries as a management program meets them: linked, calling a daemon.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <thread>

#include "platform/device_services.h"
#include "platform/netlink_api.h"
#include "vdevice/services/testing/libraries.h"
#include "vdevice/services/vdev_equeue.h"

namespace libraries_test {

using testing::ElementsAre;
using testing::HasSubstr;
using vdevice::chip::Status;
using vdevice::services::Libraries;

constexpr uint32_t kVid = vdevice::services::Device::kVid;

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
