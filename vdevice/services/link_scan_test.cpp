// The link scan of libnetlink_api: what it tells, when, and after what.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/netlink_api.h"
#include "vdevice/remote/vdev_linkscan.h"
#include "vdevice/services/testing/libraries.h"
#include "vdevice/services/testing/link_changes.h"

namespace link_scan_test {

using testing::ElementsAre;
using vdevice::services::Libraries;
using Changes = std::vector<std::vector<uint32_t>>;

// Never destroyed: the link scan goes on while the process ends.
vdevice::LinkChanges &changes = *new vdevice::LinkChanges;

int32_t note_change(uint32_t unit, uint32_t port, const uint32_t info[4]) {
    changes.add({unit, port, info[0], info[1], info[2], info[3]});
    return sys_trace_get();  // the callback may call the device
}

/** Stands in the callback's way. */
class Gate {
  public:
    void set_open(bool is_open) {
        const std::lock_guard guard(mutex_);
        is_open_ = is_open;
        news_.notify_all();
    }
    void pass() {
        std::unique_lock lock(mutex_);
        news_.wait(lock, [&] { return is_open_; });
    }

  private:
    std::mutex mutex_;
    std::condition_variable news_;
    bool is_open_ = true;
};

Gate &gate = *new Gate;

int32_t note_change_at_gate(uint32_t unit, uint32_t port, const uint32_t info[4]) {
    gate.pass();
    return note_change(unit, port, info);
}

const std::vector<uint32_t> kUp4 = {0, 4, 1000, 1, 0, 1};
const std::vector<uint32_t> kUp29 = {0, 29, 1000, 1, 0, 1};
const std::vector<uint32_t> kDown29 = {0, 29, 1000, 1, 3, 0};

/** What is told until this is. */
Changes told_until(const std::vector<uint32_t> &last) {
    Changes told;
    while (told.empty() || told.back() != last) {
        const Changes next = changes.wait_for(1);
        if (next.empty()) {
            ADD_FAILURE() << "never told";
            return told;
        }
        told.insert(told.end(), next.begin(), next.end());
    }
    return told;
}

TEST_F(Libraries, TellOfLinkChangesOnAThreadOfTheirOwn) {
    ASSERT_EQ(vdev_linkscan_register(note_change), 0);
    EXPECT_THAT(changes.wait_for(2), ElementsAre(kUp4, kUp29)) << "what is when it begins";
    EXPECT_EQ(user_port_enable_set(0, 0, 29, 0), 0);
    EXPECT_EQ(user_port_enable_set(0, 0, 29, 1), 0);
    EXPECT_THAT(changes.wait_for(2), ElementsAre(kDown29, kUp29));
    EXPECT_NE(changes.thread(), std::this_thread::get_id());
    // A burst far beyond what the socket holds arrives whole and in order.
    constexpr uint32_t kFirst = 100;
    constexpr uint32_t kBurst = 500;
    for (uint32_t number = 0; number < kBurst; ++number) {
        EXPECT_EQ(user_port_enable_set(0, 0, static_cast<int32_t>(kFirst + number), 1), 0);
    }
    const auto burst = changes.wait_for(kBurst);
    ASSERT_EQ(burst.size(), kBurst);
    for (uint32_t number = 0; number < kBurst; ++number) {
        EXPECT_EQ(burst[number][1], kFirst + number);
    }
}

TEST_F(Libraries, TellEachWatcherWhatIsWhenItBegins) {
    ASSERT_EQ(vdev_linkscan_register(note_change), 0);
    told_until(kUp29);
    EXPECT_EQ(user_port_enable_set(0, 0, 29, 0), 0);
    told_until(kDown29);
    ASSERT_EQ(vdev_linkscan_register(note_change_at_gate), 0);
    EXPECT_THAT(changes.wait_for(2), ElementsAre(kUp4, kDown29));
    EXPECT_EQ(user_port_enable_set(0, 0, 29, 1), 0);
    EXPECT_THAT(changes.wait_for(1), ElementsAre(kUp29));
}

TEST_F(Libraries, TellWhatIsWhenTheWatcherHasMissedChanges) {
    ASSERT_EQ(vdev_linkscan_register(note_change_at_gate), 0);
    told_until(kUp29);
    gate.set_open(false);
    EXPECT_EQ(user_port_enable_set(0, 0, kStormPort, 1), 0);
    EXPECT_EQ(user_port_enable_set(0, 0, 29, 0), 0);
    gate.set_open(true);
    const auto told = told_until(kDown29);
    EXPECT_LT(told.size(), static_cast<size_t>(kStorm)) << "none was missed";
    EXPECT_EQ(user_port_enable_set(0, 0, 29, 1), 0);
    told_until(kUp29);
}

// A change from before the registration may still arrive after it; the next round waits longer.
TEST_F(Libraries, StopTellingWhenNobodyIsRegistered) {
    constexpr std::chrono::milliseconds kLongest{1024};
    std::vector<uint32_t> ports;
    for (std::chrono::milliseconds wait{1}; ports.size() != 3 && wait <= kLongest; wait *= 2) {
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
    EXPECT_THAT(ports, ElementsAre(4, 29, 5)) << "what is, and one change";
}

TEST_F(Libraries, TellWhatIsWhenTheDaemonIsBack) {
    ASSERT_EQ(vdev_linkscan_register(note_change), 0);
    told_until(kUp29);
    stop();
    links.at(29) = 0;
    testing::internal::CaptureStderr();
    start();
    told_until(kDown29);
    EXPECT_EQ(user_port_enable_set(0, 0, 29, 1), 0) << "the first call that the new daemon gets";
    told_until(kUp29);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(vdev_linkscan_register(nullptr), 0);
}

#ifdef __SANITIZE_THREAD__
constexpr bool kChildHasThreads = false;  // not with this sanitizer
#else
constexpr bool kChildHasThreads = true;
#endif

size_t open_sockets() {
    size_t count = 0;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const std::string target = std::filesystem::read_symlink(entry, gone);
        count += target.starts_with("socket:") ? size_t{1} : 0;
    }
    return count;
}

// In a process that has watched, too: the child has neither the thread that waits for an answer nor that of the scan.
TEST_F(Libraries, ForkAtOnceInTheMiddleOfAnotherThreadsCall) {
    constexpr int kNoScan = 2;
    ASSERT_EQ(vdev_linkscan_register(note_change), 0);
    ASSERT_EQ(sys_trace_get(), 1);
    ASSERT_EQ(user_port_enable_set(0, 0, 4, 1), 0);
    stall();
    const size_t servers = 1 + server->clients();
    const size_t sockets = open_sockets();
    std::atomic<bool> is_waiting = true;
    int32_t result = -1;
    std::thread caller([&] {
        result = user_port_enable_set(0, 0, 4, 1);
        is_waiting = false;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const pid_t child = fork();
    if (child == 0) {
        if (open_sockets() != servers) {
            _exit(1);
        }
        if (kChildHasThreads && vdev_linkscan_register(note_change) != 0) {
            _exit(kNoScan);
        }
        _exit(user_port_enable_set(0, 0, 4, 1) == 0 && sys_trace_get() == 1 ? 0 : 3);
    }
    EXPECT_TRUE(is_waiting) << "the fork has waited for the call";
    EXPECT_EQ(sockets, servers + 3) << "of the two libraries and of the link scan";
    resume();
    caller.join();
    EXPECT_EQ(result, 0) << "the parent's call is not disturbed";
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(vdev_linkscan_register(nullptr), 0);
}

}  // namespace link_scan_test
