// Client and server together over a real socket: every call, and every way to lose a daemon.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <vector>

#include "calls/describe.h"
#include "tests/support/plain_call.h"
#include "tests/support/random_call.h"
#include "vdevice/driver/codes.h"
#include "vdevice/remote/testing/device.h"
#include "vdevice/remote/testing/false_daemon.h"

namespace vdevice::remote {
namespace remote_test {

using calls::CallId;
using calls::describe_call;
using calls::describe_result;
using random_call::random_result;
using random_call::RandomCall;
using random_call::write_outputs;
using testing::HasSubstr;

constexpr std::chrono::milliseconds kShortDeadline{300};

/** The last call that the server's thread saw, and answers by the seed of the calling test. */
struct Echo {
    std::string seen;
    uint64_t seed = 0;

    int64_t operator()(CallId id, const void *const *arguments) {
        seen = describe_call(id, arguments);
        write_outputs(id, arguments, seed);
        return random_result(id, seed);
    }
};

TEST(Remote, CarriesEveryCallThereAndBack) {
    const Folder folder;
    Echo echo;
    ObservedServer server(std::ref(echo), folder.socket());
    Client client("test", folder.socket());
    const Loop loop(server);
    uint64_t calls = 0;
    for (size_t number = 0; number < calls::kCallCount; ++number) {
        const auto id = static_cast<CallId>(number);
        if (!is_answered(id)) {
            continue;
        }
        for (const uint64_t seed : {number, number + calls::kCallCount}) {
            const RandomCall sent(id, seed);
            const RandomCall expected(id, seed);
            echo.seed = seed + 1;
            const int32_t result = client.call(id, sent.arguments());
            ++calls;
            EXPECT_EQ(echo.seen, describe_call(id, expected.arguments()));
            ASSERT_EQ(result, random_result(id, echo.seed)) << calls::call(id).name;
            if (result >= 0) {
                write_outputs(id, expected.arguments(), echo.seed);
            }
            EXPECT_EQ(describe_result(id, sent.arguments(), result), describe_result(id, expected.arguments(), result));
        }
    }
    EXPECT_EQ(server.counters().calls, calls);
    EXPECT_EQ(server.counters().connected, 1u);
}

TEST_F(RemoteVlans, DispatchesToTheMethodOfTheCall) {
    Client client("test", folder_.socket());
    const Loop loop(server_);
    EXPECT_EQ(create_vlan(client, 100), 100);
    const int32_t level = 5;
    const char *word = "UPDOWN";
    const char *text = "up";
    const void *const arguments[] = {&level, &level, &word, &text};
    EXPECT_EQ(client.call(CallId::Log_logging_func, arguments), 5);
    EXPECT_EQ(device_.logged, "UPDOWN: up");
}

TEST(Remote, AnswersNotSupportedForWhatADeviceDoesNotOverride) {
    DriverCalls none;
    for (size_t number = 0; number < calls::kCallCount; ++number) {
        const auto id = static_cast<CallId>(number);
        if (is_answered(id)) {
            EXPECT_EQ(dispatch(none, id, PlainCall(id).arguments()), driver::kNotSupported) << calls::call(id).name;
        } else {
            EXPECT_EQ(id, CallId::onu_mac2str);
        }
    }
}

TEST(Remote, FailsACallWithoutADaemonAndSaysWhyOnce) {
    const Folder folder;
    Client client("libtest", folder.socket());
    testing::internal::CaptureStderr();
    EXPECT_EQ(create_vlan(client, 1), kCallLost);
    EXPECT_EQ(create_vlan(client, 1), kCallLost);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(said, "libtest: user_vlan_create failed: the virtual device at " + folder.socket() +
                        " cannot be reached: no vdeviced is running there. Start it, or name its folder in "
                        "VDEVICE_DIR.\n");
}

TEST(Remote, FindsADaemonThatComesLater) {
    const Folder folder;
    VlanOnly device;
    Client client("libtest", folder.socket());
    testing::internal::CaptureStderr();
    EXPECT_EQ(create_vlan(client, 1), kCallLost);
    for (int life = 0; life < 2; ++life) {
        Server server(device, folder.socket());
        const Loop loop(server);
        EXPECT_EQ(create_vlan(client, 7), 7) << "also the first call after the old daemon has gone";
    }
    EXPECT_EQ(create_vlan(client, 7), kCallLost);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}

TEST(Remote, FailsTheCallDuringWhichTheDaemonIsLost) {
    const Folder folder;
    Server server([&](CallId, const void *const *) -> int64_t { std::abort(); }, folder.socket());
    const pid_t daemon = fork();
    if (daemon == 0) {
        testing::internal::CaptureStderr();  // ignore a sanitizer's report of the abort
        signal(SIGABRT, SIG_DFL);
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (std::chrono::steady_clock::now() < end) {
            pollfd ready{server.poll_fd(), POLLIN, 0};
            poll(&ready, 1, kPollMilliseconds);
            server.serve_ready();
        }
        _exit(0);
    }
    Client client("libtest", folder.socket());
    uint32_t enable = 77;
    uint32_t *address = &enable;
    const uint32_t zero = 0;
    const int32_t port = 4;
    const void *const arguments[] = {&zero, &zero, &port, &address};
    testing::internal::CaptureStderr();
    EXPECT_EQ(client.call(CallId::user_port_enable_get, arguments), kCallLost);
    EXPECT_EQ(enable, 77u);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("user_port_enable_get failed"));
    int status = 0;
    EXPECT_EQ(waitpid(daemon, &status, 0), daemon);
    EXPECT_FALSE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the daemon did not die in the call";
}

TEST_F(RemoteVlans, FailsACallThatTheDaemonDoesNotAnswerInTime) {
    Client client("libtest", folder_.socket(), kShortDeadline);
    testing::internal::CaptureStderr();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(create_vlan(client, 1), kCallLost);  // no server runs
    EXPECT_GE(std::chrono::steady_clock::now() - start, kShortDeadline);
    EXPECT_LT(std::chrono::steady_clock::now() - start, Client::kDeadline);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("gave no answer within 300 ms"));
    const Loop loop(server_);
    EXPECT_EQ(create_vlan(client, 9), 9);
}

TEST(Remote, RefusesADaemonThatWasBuiltFromOtherHeaders) {
    const Folder folder;
    const FalseDaemon daemon(folder.socket(), {kMagic, calls::kInterfaceChecksum ^ 1u});
    Client client("libtest", folder.socket());
    testing::internal::CaptureStderr();
    EXPECT_EQ(create_vlan(client, 1), kCallLost);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("was built from other headers"));
}

TEST(Remote, RefusesAnAnswerWhoseOutputsDoNotGoWithItsResult) {
    const struct { uint32_t result, has_outputs; } rows[] = {{static_cast<uint32_t>(-71), 1}, {0, 0}, {0, 2}};
    for (const auto &row : rows) {
        const Folder folder;
        const FalseDaemon daemon(folder.socket(),
                                 {kMagic, calls::kInterfaceChecksum, 3, row.result, row.has_outputs, 1});
        Client client("libtest", folder.socket());
        uint32_t enable = 77;
        uint32_t *address = &enable;
        const uint32_t zero = 0;
        const int32_t port = 4;
        const void *const arguments[] = {&zero, &zero, &port, &address};
        testing::internal::CaptureStderr();
        EXPECT_EQ(client.call(CallId::user_port_enable_get, arguments), kCallLost);
        EXPECT_EQ(enable, 77u);
        EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("sent nonsense"));
    }
}

TEST_F(RemoteVlans, ServesThreadsThatShareAClient) {
    Client client("libtest", folder_.socket());
    const Loop loop(server_);
    constexpr uint32_t kThreads = 4;
    constexpr uint32_t kCalls = 100;
    std::atomic<uint32_t> right{0};
    std::vector<std::thread> threads;
    for (uint32_t thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (uint32_t call = 0; call < kCalls; ++call) {
                const uint32_t vid = thread * kCalls + call;
                right += create_vlan(client, vid) == static_cast<int32_t>(vid) ? 1 : 0;
            }
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(right, kThreads * kCalls);
}

TEST_F(RemoteVlans, GivesAChildOfAForkItsOwnConnection) {
    Client client("libtest", folder_.socket());
    const Loop loop(server_);
    EXPECT_EQ(create_vlan(client, 1), 1);
    const pid_t child = fork();
    if (child == 0) {
        bool right = true;
        for (int32_t vid = 0; vid < 50; ++vid) {
            right = right && create_vlan(client, static_cast<uint32_t>(vid)) == vid;
        }
        _exit(right ? 0 : 1);
    }
    for (int32_t vid = 50; vid < 100; ++vid) {
        EXPECT_EQ(create_vlan(client, static_cast<uint32_t>(vid)), vid);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(server_.counters().connected, 2u);
}

}  // namespace remote_test

}  // namespace vdevice::remote
