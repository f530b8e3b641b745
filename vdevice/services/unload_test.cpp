// The two shared libraries as a plug-in loads them: opened and closed again and again, while they are at work.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <atomic>
#include <filesystem>
#include <iterator>
#include <string>

#include "tests/support/temporary_folder.h"
#include "vdevice/remote/testing/device.h"
#include "vdevice/remote/vdev_linkscan.h"

namespace unload_test {

using vdevice::remote::Server;

std::atomic<uint32_t> told{0};

int32_t count_change(uint32_t /*unit*/, uint32_t /*port*/, const uint32_t * /*info*/) {
    ++told;
    return 0;
}

size_t open_descriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(all), end(all)));
}

template <typename Function>
Function *symbol(void *library, const char *name) {
    return reinterpret_cast<Function *>(dlsym(library, name));
}

/** Uses both libraries as long as they are open. */
void load_and_unload() {
    void *const netlink_api = dlopen(NETLINK_API, RTLD_NOW | RTLD_LOCAL);
    void *const services = dlopen(DEVICE_SERVICES, RTLD_NOW | RTLD_LOCAL);
    ASSERT_TRUE(netlink_api != nullptr && services != nullptr) << dlerror();
    auto *const create = symbol<int32_t(uint32_t, uint32_t, uint32_t)>(netlink_api, "user_vlan_create");
    auto *const watch = symbol<int32_t(vdev_linkscan_callback_t)>(netlink_api, "vdev_linkscan_register");
    auto *const trace = symbol<int32_t()>(services, "sys_trace_get");
    ASSERT_TRUE(create != nullptr && watch != nullptr && trace != nullptr) << dlerror();
    EXPECT_EQ(watch(count_change), 0);
    EXPECT_EQ(create(0, 0, 1), 1);
    EXPECT_EQ(trace(), 7);
    EXPECT_EQ(dlclose(services), 0);
    EXPECT_EQ(dlclose(netlink_api), 0);
}

TEST(Unload, LeavesNothingBehindAndTheLinkScanAtWork) {
    constexpr int kTimes = 1000;
    constexpr uint32_t kLeast = 100;
    const vdevice::remote::Folder folder;
    setenv("VDEVICE_DIR", folder.path().c_str(), 1);
    Server *running = nullptr;
    vdevice::remote::ObservedServer server(
        [&](calls::CallId id, const void *const *) {
            running->publish_link_change(Server::LinkChange{0, 4, 1000, 1, 0, 1});
            return id == calls::CallId::sys_trace_get ? 7 : 1;
        },
        folder.socket());
    running = &server;
    const vdevice::remote::Loop loop(server);
    load_and_unload();
    const size_t descriptors = open_descriptors();
    for (int time = 0; time < kTimes; ++time) {
        load_and_unload();
    }
    EXPECT_EQ(open_descriptors(), descriptors);
    EXPECT_EQ(server.counters().connected, 3u) << "calls of both libraries, and the link scan";
    EXPECT_GT(told, kLeast);
}

}  // namespace unload_test
