// Clients that send too much, read too little, are too slow or too many: the others have their turn.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <array>
#include <chrono>
#include <deque>
#include <memory>
#include <vector>

#include "tests/support/full_epoll.h"
#include "vdevice/remote/testing/device.h"

namespace vdevice::remote {

using calls::CallId;

TEST_F(RemoteVlans, WaitsForTheRestOfAMessageAndForgetsAClientThatLeavesWithinOne) {
    const Loop loop(server_);
    {
        const RawClient slow(folder_.socket());
        slow.send_words({kMagic});
        slow.send_words({calls::kInterfaceChecksum, 4});
        slow.send_words({static_cast<uint32_t>(CallId::user_vlan_create), 0, 0});
        slow.send_words({55});
        uint8_t answer[(kHandshakeWords + 3) * kWordBytes] = {};
        ASSERT_EQ(slow.receive(answer, sizeof answer), sizeof answer);
        EXPECT_EQ(answer[sizeof answer - kWordBytes - 1], 55);
        slow.send_words({4, static_cast<uint32_t>(CallId::user_vlan_create)});
    }
    Client client("libtest", folder_.socket());
    EXPECT_EQ(create_vlan(client, 3), 3);
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (server_.clients() > 1 && std::chrono::steady_clock::now() < end) {
        EXPECT_EQ(create_vlan(client, 3), 3);
    }
    EXPECT_EQ(server_.clients(), 1u);
    EXPECT_EQ(server_.counters().malformed, 0u);
}

// A client that asks and never reads must not grow the server: it is not read from until it takes its answers.
TEST_F(RemoteVlans, StopsReadingFromAClientThatDoesNotTakeItsAnswers) {
    constexpr uint64_t kRequests = 100000;
    // The kernel's buffers hold far fewer answers.
    constexpr uint64_t kMostAnswered = kRequests / 4;
    const RawClient greedy(folder_.socket());
    {
        const Loop loop(server_);
        greedy.send_words({kMagic, calls::kInterfaceChecksum});
        Writer writer;
        for (uint64_t request = 0; request < kRequests; ++request) {
            for (const uint32_t word : {4u, static_cast<uint32_t>(CallId::user_vlan_create), 0u, 0u, 1u}) {
                writer.word(word);
            }
        }
        EXPECT_LT(greedy.send_without_reading(writer.buffer()), writer.buffer().size());
        Client other("libtest", folder_.socket());
        EXPECT_EQ(create_vlan(other, 4), 4);
    }
    EXPECT_LT(server_.counters().calls, kMostAnswered);
}

// The kernel holds fewer answers than these, so the server stops answering and goes on when the client reads.
TEST_F(RemoteVlans, AnswersEveryRequestThatWasSentAhead) {
    constexpr uint32_t kRequests = 4000;
    constexpr size_t kAnswerWords = 3;
    constexpr int kPauseMilliseconds = 100;
    const RawClient eager(folder_.socket());
    const Loop loop(server_);
    eager.send_words({kMagic, calls::kInterfaceChecksum});
    std::thread sender([&eager] {
        for (uint32_t request = 0; request < kRequests; ++request) {
            eager.send_words({4, static_cast<uint32_t>(CallId::user_vlan_create), 0, 0, request});
        }
    });
    poll(nullptr, 0, kPauseMilliseconds);  // the answers pile up
    std::vector<uint8_t> answers((kHandshakeWords + kAnswerWords * kRequests) * kWordBytes);
    EXPECT_EQ(eager.receive(answers.data(), answers.size()), answers.size());
    sender.join();
    Reader reader(answers);
    reader.word();
    reader.word();
    for (uint32_t request = 0; request < kRequests; ++request) {
        ASSERT_EQ(reader.word(), kAnswerWords - 1);
        ASSERT_EQ(reader.word(), request);
        reader.word();
    }
}

// A client that sends many requests at once lets the others have their turn.
TEST_F(RemoteVlans, ServesOthersBetweenTheRequestsOfAnEagerClient) {
    constexpr uint32_t kRequests = 2000;
    constexpr uint64_t kMostCalls = 200;
    constexpr size_t kAnswerBytes = (kHandshakeWords + 3) * kWordBytes;
    const RawClient eager(folder_.socket());
    const RawClient other(folder_.socket());
    eager.send_words({kMagic, calls::kInterfaceChecksum});
    Writer requests;
    for (uint32_t request = 0; request < kRequests; ++request) {
        for (const uint32_t word : {4u, static_cast<uint32_t>(CallId::user_vlan_create), 0u, 0u, request}) {
            requests.word(word);
        }
    }
    EXPECT_EQ(eager.send_without_reading(requests.buffer()), requests.buffer().size());
    other.send_words({kMagic, calls::kInterfaceChecksum, 4, static_cast<uint32_t>(CallId::user_vlan_create), 0, 0, 7});
    for (int turn = 0; other.waiting_bytes() < kAnswerBytes && turn < static_cast<int>(kRequests); ++turn) {
        server_.serve_ready();
    }
    EXPECT_EQ(other.waiting_bytes(), kAnswerBytes);
    EXPECT_LT(server_.counters().calls, kMostCalls);
    while (server_.counters().calls < kRequests + 1 && eager.waiting_bytes() > 0) {
        eager.skip_waiting();
        server_.serve_ready();
    }
    EXPECT_EQ(server_.counters().calls, kRequests + 1) << "what came early is answered without anything more coming";
}

/** Room for the server's and the clients' ends, which are all in this process. */
void allow_many_descriptors() {
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    limit.rlim_cur = limit.rlim_max;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
}

TEST_F(RemoteVlans, HalfMessagesDoNotKeepAnybodyWaiting) {
    allow_many_descriptors();
    const Loop loop(server_);
    std::deque<RawClient> silent;
    for (size_t count = 0; count + 1 < Server::kMaxClients; ++count) {
        silent.emplace_back(folder_.socket());
        // The first word of a message of the greatest length.
        silent.back().send_words({kMagic, calls::kInterfaceChecksum, kMaxMessageWords, 0});
    }
    Client client("libtest", folder_.socket());
    EXPECT_EQ(create_vlan(client, 5), 5);
    EXPECT_EQ(server_.counters().malformed, 0u);
}

TEST_F(RemoteVlans, TellsAClientThatIsOneTooMany) {
    allow_many_descriptors();
    const Loop loop(server_);
    std::deque<RawClient> clients;
    for (size_t count = 0; count < Server::kMaxClients; ++count) {
        clients.emplace_back(folder_.socket());
    }
    const RawClient one_too_many(folder_.socket());
    std::array<uint8_t, kHandshakeWords * kWordBytes> answer{};
    ASSERT_EQ(one_too_many.receive(answer.data(), answer.size()), answer.size());
    Reader reader(answer);
    EXPECT_EQ(reader.word(), kFull);
    EXPECT_EQ(reader.word(), Server::kMaxClients);
    EXPECT_TRUE(one_too_many.is_closed());
    EXPECT_EQ(server_.counters().refused, 1u);
}

/** The tests below serve by hand, so that nothing happens between two turns. */
class Turns : public RemoteVlans {
  protected:
    [[nodiscard]] bool is_ready() const {
        pollfd waiting{server_.poll_fd(), POLLIN, 0};
        return poll(&waiting, 1, 0) > 0;
    }
    void serve() {
        constexpr int kMostTurns = 100;
        for (int turn = 0; is_ready() && turn < kMostTurns; ++turn) {
            server_.serve_ready();
        }
    }
};

TEST_F(Turns, AHandshakeHasToBeFinishedInTime) {
    const RawClient silent(folder_.socket());
    const RawClient half(folder_.socket());
    const RawClient whole(folder_.socket());
    half.send_words({kMagic});
    whole.send_words({kMagic, calls::kInterfaceChecksum});
    for (int tick = 0; tick < Server::kHandshakeTicks; ++tick) {
        serve();
        server_.tick();
    }
    EXPECT_EQ(server_.clients(), 3u);
    server_.tick();
    EXPECT_EQ(server_.clients(), 1u);
    EXPECT_EQ(server_.counters().late, 2u);
    EXPECT_TRUE(silent.is_closed());
    EXPECT_TRUE(half.is_closed());
    whole.send_words({4, static_cast<uint32_t>(CallId::user_vlan_create), 0, 0, 9});
    serve();
    EXPECT_EQ(whole.waiting_bytes(), (kHandshakeWords + 3) * kWordBytes);
}

TEST_F(Turns, WithoutDescriptorsItWaitsForATickOrForAClientToLeave) {
    auto first = std::make_unique<RawClient>(folder_.socket());
    serve();
    const RawClient second(folder_.socket());
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{1, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    for (int tick = 0; tick < 3; ++tick) {
        EXPECT_TRUE(is_ready()) << "it tries again";
        serve();
        EXPECT_FALSE(is_ready()) << "it would be asked to serve again and again";
        server_.tick();
    }
    serve();
    EXPECT_EQ(server_.clients(), 1u);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    first.reset();
    serve();
    EXPECT_EQ(server_.clients(), 1u);
    second.send_words({kMagic, calls::kInterfaceChecksum});
    serve();
    EXPECT_EQ(server_.counters().connected, 1u);
}

TEST_F(Turns, AClientThatTheKernelDoesNotWatchIsClosedAlone) {
    const RawClient first(folder_.socket());
    serve();
    const RawClient second(folder_.socket());
    {
        const FullEpoll full;
        serve();
    }
    EXPECT_TRUE(second.is_closed());
    first.send_words({kMagic, calls::kInterfaceChecksum});
    serve();
    EXPECT_EQ(server_.counters().connected, 1u);
}

}  // namespace vdevice::remote
