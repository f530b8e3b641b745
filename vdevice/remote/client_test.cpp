// The client in trouble: cancelled threads, daemons that stall or go, too many clients, closed standard descriptors.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>
#include <thread>
#include <vector>

#include "vdevice/remote/testing/device.h"
#include "vdevice/remote/testing/false_daemon.h"

namespace vdevice::remote {
namespace client_test {

using calls::CallId;
using testing::HasSubstr;
using Clock = Client::Clock;

constexpr std::chrono::milliseconds kShortDeadline{300};
constexpr std::chrono::seconds kLongDeadline{60};
/** Far below the long deadline, and long enough for a machine with much to do. */
constexpr std::chrono::seconds kAtOnce{20};

/** A thread that makes a call. C++ has no cancellation, so it is one of the system's. */
class CallingThread {
  public:
    explicit CallingThread(Client &client) { EXPECT_EQ(pthread_create(&thread_, nullptr, make_call, &client), 0); }

    /** Whether it ended because it was cancelled, and soon. */
    [[nodiscard]] bool is_cancelled_at_once() const {
        const auto begin = Clock::now();
        void *result = nullptr;
        EXPECT_EQ(pthread_cancel(thread_), 0);
        EXPECT_EQ(pthread_join(thread_, &result), 0);
        return result == PTHREAD_CANCELED && Clock::now() - begin < kAtOnce;
    }

  private:
    static void *make_call(void *client) {
        create_vlan(*static_cast<Client *>(client), 1000);
        return nullptr;
    }

    pthread_t thread_{};
};

/** Gives a thread the time to send its request and to wait. */
void let_it_wait() {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
}

TEST_F(RemoteVlans, NoCallGetsTheAnswerOfACancelledOne) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the sanitizer misses the locks that a cancelled thread gives back";
#endif
    Client client("libtest", folder_.socket(), kLongDeadline);
    {
        const Loop loop(server_);
        ASSERT_EQ(create_vlan(client, 1), 1);
    }
    const CallingThread thread(client);  // the server stalls
    let_it_wait();
    EXPECT_TRUE(thread.is_cancelled_at_once());
    const Loop loop(server_);
    for (int32_t vid = 2; vid < 100; ++vid) {
        ASSERT_EQ(create_vlan(client, static_cast<uint32_t>(vid)), vid);
    }
}

TEST_F(RemoteVlans, AThreadThatForbidsItIsNotCancelledInACall) {
    Client client("libtest", folder_.socket(), kShortDeadline);
    testing::internal::CaptureStderr();
    std::atomic<int> result{0};
    std::thread thread([&] {
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
        result = create_vlan(client, 1);
    });
    pthread_cancel(thread.native_handle());
    thread.join();
    EXPECT_EQ(result, kCallLost) << "the server stalls";
    testing::internal::GetCapturedStderr();
}

TEST_F(RemoteVlans, WaitingForAnotherThreadCountsTowardsTheDeadline) {
    constexpr size_t kThreads = 20;
    Client client("libtest", folder_.socket(), kShortDeadline);
    testing::internal::CaptureStderr();
    std::vector<std::thread> threads;
    Clock::duration longest{};
    std::mutex mutex;
    for (size_t number = 0; number < kThreads; ++number) {
        threads.emplace_back([&] {
            const auto begin = Clock::now();
            EXPECT_EQ(create_vlan(client, 1), kCallLost) << "the server stalls";
            const std::lock_guard guard(mutex);
            longest = std::max(longest, Clock::now() - begin);
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    EXPECT_LT(longest, kThreads / 2 * kShortDeadline) << "one after the other needs twice as long";
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("gave no answer within 300 ms"));
}

TEST(RemoteClient, DoesNotTakeForAnAnswerWhatWasNotAskedFor) {
    const Folder folder;
    const FalseDaemon daemon(folder.socket(), {kMagic, calls::kInterfaceChecksum, 3, 1, 1, 0, 3, 99, 1, 0});
    Client client("libtest", folder.socket(), kShortDeadline);
    uint32_t enable = 77;
    uint32_t *address = &enable;
    const uint32_t zero = 0;
    const int32_t port = 4;
    const void *const arguments[] = {&zero, &zero, &port, &address};
    EXPECT_EQ(client.call(CallId::user_port_enable_get, arguments), 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(client.call(CallId::user_port_enable_get, arguments), kCallLost) << "the daemon serves one connection";
    testing::internal::GetCapturedStderr();
}

TEST(RemoteClient, MakesNoRequestTwice) {
    const Folder folder;
    VlanOnly device;
    auto server = std::make_unique<ObservedServer>(device, folder.socket());
    Client client("libtest", folder.socket(), std::chrono::seconds(10));
    {
        const Loop loop(*server);
        ASSERT_EQ(create_vlan(client, 1), 1);
    }
    testing::internal::CaptureStderr();
    int32_t result = 0;
    std::thread thread([&] { result = create_vlan(client, 2); });  // nobody answers
    let_it_wait();
    server = nullptr;  // takes the request along
    auto next = std::make_unique<ObservedServer>(device, folder.socket());
    const Loop loop(*next);
    thread.join();
    EXPECT_EQ(result, kCallLost);
    EXPECT_EQ(next->counters().connected, 0u);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("user_vlan_create failed"));
    EXPECT_EQ(create_vlan(client, 3), 3);
}

TEST(RemoteClient, SaysThatTheDeviceServesTooMany) {
    const Folder folder;
    const FalseDaemon daemon(folder.socket(), {kFull, 64});
    Client client("libtest", folder.socket());
    testing::internal::CaptureStderr();
    EXPECT_EQ(create_vlan(client, 1), kCallLost);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("turned this process away: it serves at most 64 programs at a time.\n"));
}

TEST_F(RemoteVlans, LeavesTheStandardDescriptorsFree) {
    const Loop loop(server_);
    const pid_t child = fork();
    if (child == 0) {
        bool right = true;
        for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
            close(descriptor);
        }
        Client client("libtest", folder_.socket());
        for (int32_t vid = 1; vid < 10; ++vid) {
            right = right && create_vlan(client, static_cast<uint32_t>(vid)) == vid;
            for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
                right = right && fcntl(descriptor, F_GETFD) == -1;
            }
        }
        _exit(right ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(RemoteVlans, DoesNotTalkToAFolderThatOthersMayWriteTo) {
    const Loop loop(server_);
    Client client("libtest", folder_.socket());
    ASSERT_EQ(chmod(folder_.path().c_str(), 0777), 0);
    testing::internal::CaptureStderr();
    EXPECT_EQ(create_vlan(client, 1), kCallLost);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("cannot be reached: it is another user's, or others may write to its folder.\n"));
    ASSERT_EQ(chmod(folder_.path().c_str(), 0700), 0);
    EXPECT_EQ(create_vlan(client, 1), 1);
}

}  // namespace client_test
}  // namespace vdevice::remote
