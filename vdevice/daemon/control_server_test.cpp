// The control socket and clients that send too much or read too little: the others have their turn.
#include "vdevice/daemon/control_server.h"

#include <gtest/gtest.h>
#include <sys/epoll.h>
#include <sys/resource.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <new>
#include <nlohmann/json.hpp>

#include "tests/support/full_epoll.h"
#include "vdevice/remote/testing/device.h"

namespace vdevice {
namespace control_server_test {

using remote::RawClient;

constexpr int kRounds = 50;

class Control : public testing::Test {
  protected:
    [[nodiscard]] std::string path() const { return folder_.path() + "/control"; }
    void run(int rounds) {
        for (int round = 0; round < rounds && loop_.run_once(0); ++round) {
        }
    }
    static void send(const RawClient &client, const std::string &text) {
        client.send_bytes(std::span(reinterpret_cast<const uint8_t *>(text.data()), text.size()));
    }
    static std::string repeated(int times, const std::string &text) {
        std::string all;
        for (int count = 0; count < times; ++count) {
            all += text;
        }
        return all;
    }

    static std::string received(const RawClient &client) {
        std::string text(client.waiting_bytes(), 0);
        client.receive(reinterpret_cast<uint8_t *>(text.data()), text.size());
        return text;
    }
    /** Reads until so many answers are whole, as the server goes on. */
    std::string whole_answers(const RawClient &client, int64_t count) {
        constexpr int kMilliseconds = 10000;
        std::string text = received(client);
        while (std::count(text.begin(), text.end(), '\n') < count && loop_.run_once(kMilliseconds)) {
            text += received(client);
        }
        return text;
    }

    std::string whole_answer(const RawClient &client) { return whole_answers(client, 1); }

    int asked_ = 0;
    size_t answer_size_ = 1;
    bool is_out_of_memory_ = false;
    io::EventLoop loop_;

  private:
    nlohmann::json answer() {
        if (is_out_of_memory_) {
            throw std::bad_alloc{};
        }
        ++asked_;
        return {{"answer", std::string(answer_size_, 'x')}};
    }

    TemporaryFolder folder_;

  protected:
    ControlServer server_{loop_, path(), [this](const nlohmann::json &) { return answer(); },
                          [](const nlohmann::json &request) { return request.contains("long"); }};
};

TEST_F(Control, AnEagerClientWaitsForTheOthersBetweenItsRequests) {
    constexpr int kRequests = 1000;
    const RawClient eager(path());
    const RawClient other(path());
    send(eager, repeated(kRequests, "{}\n"));
    send(other, "{}\n");
    for (int round = 0; other.waiting_bytes() == 0 && round < kRounds; ++round) {
        run(1);
    }
    EXPECT_GT(other.waiting_bytes(), 0u);
    EXPECT_LT(asked_, kRounds);
    for (int round = 0; asked_ <= kRequests && round < kRequests; ++round) {
        eager.skip_waiting();
        run(1);
    }
    EXPECT_EQ(asked_, kRequests + 1) << "what came early is answered without anything more coming";
}

TEST_F(Control, AnswersThatNobodyTakesAreNotMadeInAdvance) {
    answer_size_ = 1 << 20;
    const RawClient deaf(path());
    send(deaf, repeated(kRounds, "{}\n"));
    run(2 * kRounds);
    EXPECT_EQ(asked_, 1);
    std::vector<uint8_t> answer(answer_size_);
    for (int round = 0; asked_ == 1 && round < kRounds; ++round) {
        deaf.skip_waiting();
        run(kRounds);
    }
    EXPECT_EQ(asked_, 2) << "it goes on when the client has read";
}

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

TEST_F(Control, InATurnOneClientIsAnswered) {
    constexpr size_t kClients = 20;
    std::deque<RawClient> clients;
    for (size_t count = 0; count < kClients; ++count) {
        clients.emplace_back(path());
        run(kRounds);
    }
    for (const RawClient &client : clients) {
        send(client, "{}\n");
    }
    for (int turn = 1; turn <= static_cast<int>(kClients); ++turn) {
        run(1);
        EXPECT_EQ(asked_, turn);
    }
    for (const RawClient &client : clients) {
        EXPECT_GT(client.waiting_bytes(), 0u);
    }
}

TEST_F(Control, DriverCallsAreAnsweredBetweenTwoControlAnswers) {
    constexpr size_t kClients = 20;
    constexpr size_t kReplyBytes = 3 * remote::kWordBytes;
    const remote::Folder folder;
    remote::VlanOnly device;
    remote::Server driver(device, folder.socket());
    loop_.add(driver.poll_fd(), EPOLLIN, [&](uint32_t) { driver.serve_ready(); });
    const RawClient caller(folder.socket());
    caller.send_words({remote::kMagic, calls::kInterfaceChecksum});
    std::deque<RawClient> clients;
    for (size_t count = 0; count < kClients; ++count) {
        clients.emplace_back(path());
        run(kRounds);
        caller.skip_waiting();
    }
    for (const RawClient &client : clients) {
        send(client, "{}\n");
    }
    for (int turn = 1; turn <= static_cast<int>(kClients); ++turn) {
        caller.send_words({4, static_cast<uint32_t>(calls::CallId::user_vlan_create), 0, 0, 7});
        run(1);
        EXPECT_EQ(asked_, turn);
        EXPECT_EQ(caller.waiting_bytes(), kReplyBytes);
        caller.skip_waiting();
    }
    loop_.remove(driver.poll_fd());
}

TEST_F(Control, InATurnAPieceOfAnAnswerIsSent) {
    constexpr size_t kPiece = 65536;
    answer_size_ = 2 * kPiece;
    const RawClient client(path());
    run(kRounds);
    send(client, "{}\n");
    run(1);
    EXPECT_EQ(client.waiting_bytes(), kPiece);
    EXPECT_EQ(whole_answer(client).size(), answer_size_ + std::string("{\"answer\":\"\"}\n").size());
}

TEST_F(Control, ALongAnswerIsMadeBesideTheOthers) {
    answer_size_ = 3000000;
    const RawClient first(path());
    const RawClient second(path());
    const RawClient other(path());
    run(kRounds);
    send(first, "{\"long\":1}\n");
    send(second, "{\"long\":1}\n{}\n");
    run(2);
    answer_size_ = 1;
    send(other, "{}\n");
    run(1);
    EXPECT_GT(other.waiting_bytes(), 0u);
    EXPECT_EQ(asked_, 1) << "the long ones are made by another process";
    EXPECT_GT(whole_answer(first).size(), 3000000u) << "and tell of the moment at which that started";
    const std::string answer = "{\"answer\":\"x\"}\n";
    EXPECT_EQ(whole_answers(second, 2), answer + answer) << "its turn comes after the first one";
}

TEST_F(Control, WhoWaitsForALongAnswerMayLeave) {
    auto first = std::make_unique<RawClient>(path());
    auto second = std::make_unique<RawClient>(path());
    const RawClient third(path());
    run(kRounds);
    for (const RawClient *client : std::initializer_list<const RawClient *>{first.get(), second.get(), &third}) {
        send(*client, "{\"long\":1}\n");
        run(1);
    }
    first.reset();
    second.reset();
    EXPECT_EQ(whole_answer(third), "{\"answer\":\"x\"}\n");
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

}  // namespace control_server_test
}  // namespace vdevice
