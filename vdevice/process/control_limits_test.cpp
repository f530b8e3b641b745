// The control socket where something runs out: room for clients and requests, descriptors, memory.
#include <sys/resource.h>

#include <deque>

#include "tests/support/full_epoll.h"
#include "vdevice/process/testing/control.h"

namespace vdevice {
namespace control_limits_test {

using control_testing::Control;
using control_testing::kRounds;
using control_testing::RawClient;

TEST_F(Control, AnOverlongLineClosesItsClientAlone) {
    constexpr size_t kPiece = 10000;
    for (const bool has_end : {false, true}) {
        const RawClient greedy(path());
        const RawClient other(path());
        run(kRounds);
        const std::string line = std::string(ControlServer::kMaxRequest + 1, ' ') + (has_end ? "\n" : "");
        for (size_t sent = 0; sent < line.size(); sent += kPiece) {
            send(greedy, line.substr(sent, kPiece));
            run(kRounds);
        }
        EXPECT_TRUE(greedy.is_closed());
        send(other, "{}\n");
        run(kRounds);
        EXPECT_GT(other.waiting_bytes(), 0u);
    }
}

TEST_F(Control, RefusesARequestOfTooManyLevels) {
    constexpr int kMostLevels = 16;
    constexpr int kMany = 30000;
    const RawClient client(path());
    run(kRounds);
    for (const int levels : {kMostLevels, kMostLevels + 1, kMany}) {
        send(client, "{\"x\":" + repeated(levels - 1, "[") + repeated(levels - 1, "]") + "}\n");
        EXPECT_EQ(whole_answer(client).find("error") != std::string::npos, levels > kMostLevels) << levels;
    }
}

TEST_F(Control, AnAnswerForWhichThereIsNoMemoryEndsItsClientOrIsTold) {
    is_out_of_memory_ = true;
    const RawClient greedy(path());
    const RawClient other(path());
    run(kRounds);
    send(greedy, "{}\n");
    run(kRounds);
    EXPECT_TRUE(greedy.is_closed());
    send(other, "{\"long\":1}\n");
    EXPECT_EQ(whole_answer(other), "{\"error\":\"The device could not make the answer. It may be out of memory.\"}\n");
    is_out_of_memory_ = false;
    send(other, "{}\n");
    EXPECT_EQ(whole_answer(other), "{\"answer\":\"x\"}\n");
}

TEST_F(Control, ALongAnswerThatCannotBeStartedIsTold) {
    const RawClient client(path());
    run(kRounds);
    send(client, "{\"long\":1}\n");
    const FullEpoll full;
    EXPECT_EQ(whole_answer(client), "{\"error\":\"The device could not make the answer. It may be out of memory.\"}\n");
}

TEST_F(Control, OneClientTooManyIsToldUnlessAnotherOneIsIdle) {
    std::deque<RawClient> clients;
    for (size_t count = 0; count < ControlServer::kMaxClients; ++count) {
        clients.emplace_back(path());
        run(kRounds);
    }
    for (int tick = 0; tick < ControlServer::kIdleTicks; ++tick) {
        server_.tick();
    }
    {
        const RawClient one_too_many(path());
        run(kRounds);
        EXPECT_EQ(received(one_too_many),
                  "{\"error\":\"The device serves 256 control clients already. Try again later.\"}\n");
        EXPECT_TRUE(one_too_many.is_closed());
    }
    const RawClient &idle = clients.back();
    for (const RawClient &client : clients) {
        if (&client != &idle) {
            send(client, "{}\n");
            run(kRounds);
            EXPECT_GT(client.waiting_bytes(), 0u);
        }
    }
    server_.tick();
    const RawClient next(path());
    send(next, "{}\n");
    run(kRounds);
    EXPECT_GT(next.waiting_bytes(), 0u);
    EXPECT_TRUE(idle.is_closed());
}

TEST_F(Control, WithoutDescriptorsItWaitsForATick) {
    const RawClient client(path());
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{1, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_TRUE(loop_.run_once(0));
    EXPECT_FALSE(loop_.run_once(0)) << "it would be asked to accept again and again";
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    server_.tick();
    send(client, "{}\n");
    run(kRounds);
    EXPECT_GT(client.waiting_bytes(), 0u);
}

TEST_F(Control, AClientThatTheKernelDoesNotWatchIsClosedAlone) {
    const RawClient first(path());
    run(kRounds);
    const RawClient second(path());
    {
        const FullEpoll full;
        run(1);
    }
    EXPECT_TRUE(second.is_closed());
    send(first, "{}\n");
    run(kRounds);
    EXPECT_GT(first.waiting_bytes(), 0u);
}

}  // namespace control_limits_test
}  // namespace vdevice
