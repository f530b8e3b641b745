// The server and clients that misbehave, and the server's socket.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <deque>
#include <stdexcept>
#include <vector>

#include "calls/describe.h"
#include "vdevice/remote/testing/device.h"

namespace vdevice::remote {

using calls::CallId;
using calls::describe_call;
using calls::describe_result;

TEST(Remote, TellsAClientThatItWasBuiltFromOtherHeaders) {
    const Folder folder;
    VlanOnly device;
    Server server(device, folder.socket());
    const Loop loop(server);
    const RawClient other(folder.socket());
    other.send_words({kMagic, calls::kInterfaceChecksum + 1});
    uint8_t answer[kHandshakeWords * kWordBytes] = {};
    ASSERT_EQ(other.receive(answer, sizeof answer), sizeof answer);
    Reader reader(answer);
    EXPECT_EQ(reader.word(), kMagic);
    EXPECT_EQ(reader.word(), calls::kInterfaceChecksum);
    EXPECT_TRUE(other.is_closed());
    EXPECT_EQ(server.counters().mismatched, 1u);
    EXPECT_EQ(server.counters().connected, 0u);
}

TEST(Remote, TellsThoseWhoWatchAndClosesThoseWhoDoNotListen) {
    const Folder folder;
    constexpr uint32_t kMessagesPerCall = 200;
    constexpr uint32_t kCalls = 400;
    Server *running = nullptr;
    Server server(
        [&](CallId, const void *const *) {
            for (uint32_t number = 0; number < kMessagesPerCall; ++number) {
                const std::array<uint32_t, kLinkChangeWords> words = {0, number, 2, 3, 4, 5};
                running->publish_link_change(words);
            }
            return 1;
        },
        folder.socket());
    running = &server;
    Client caller("libtest", folder.socket());
    Client watcher("libtest", folder.socket());
    const RawClient deaf(folder.socket());
    const Loop loop(server);
    std::vector<uint32_t> words;
    ASSERT_EQ(watcher.request(Extra::kWatchLinks, {}, words), 0);
    EXPECT_TRUE(words.empty());
    deaf.send_words({kMagic, calls::kInterfaceChecksum, 1, static_cast<uint32_t>(Extra::kWatchLinks)});
    for (uint32_t call = 0; call < kCalls; ++call) {
        ASSERT_EQ(create_vlan(caller, 1), 1);
        for (uint32_t number = 0; number < kMessagesPerCall; ++number) {
            ASSERT_TRUE(watcher.wait_for_message(words));
            ASSERT_EQ(words, (std::vector<uint32_t>{0, number, 2, 3, 4, 5}));
        }
    }
    EXPECT_TRUE(deaf.is_closed());
    EXPECT_EQ(create_vlan(caller, 1), 1);
}

TEST(Remote, AClientMayWatchAndCall) {
    const Folder folder;
    Server *running = nullptr;
    Server server(
        [&](CallId, const void *const *) {
            const std::array<uint32_t, kLinkChangeWords> words = {0, 7};
            running->publish_link_change(words);
            return 0;
        },
        folder.socket());
    running = &server;
    const RawClient client(folder.socket());
    const Loop loop(server);
    client.send_words({kMagic, calls::kInterfaceChecksum, 1, static_cast<uint32_t>(Extra::kWatchLinks), 4,
                       static_cast<uint32_t>(CallId::user_vlan_create), 0, 0, 1});
    // The handshake, the reply to the first request, the message, the reply to the second.
    const std::vector<uint32_t> expected = {kMagic, calls::kInterfaceChecksum, 1, 0, 6, 0, 7, 0, 0, 0, 0, 2, 0, 1};
    std::vector<uint8_t> octets(expected.size() * kWordBytes);
    ASSERT_EQ(client.receive(octets.data(), octets.size()), octets.size());
    Reader reader(octets);
    for (const uint32_t word : expected) {
        EXPECT_EQ(reader.word(), word);
    }
}

TEST(Remote, RefusesExtraRequestsThatItDoesNotKnow) {
    const Folder folder;
    VlanOnly device;
    Server server(device, folder.socket());
    const Loop loop(server);
    for (const uint32_t id : {static_cast<uint32_t>(Extra::kTakeEvent), kFirstExtra + 2}) {
        const RawClient client(folder.socket());
        client.send_words({kMagic, calls::kInterfaceChecksum, 1, id});
        EXPECT_TRUE(client.is_closed()) << "nobody answers it here";
    }
}

TEST(Remote, ClosesAClientThatSendsNonsenseAndServesTheOthers) {
    const Folder folder;
    VlanOnly device;
    Server server(device, folder.socket());
    Client good("libtest", folder.socket());
    const Loop loop(server);
    EXPECT_EQ(create_vlan(good, 1), 1);
    constexpr uint32_t kCreate = static_cast<uint32_t>(CallId::user_vlan_create);
    constexpr uint32_t kSum = calls::kInterfaceChecksum;
    const std::initializer_list<uint32_t> nonsense[] = {
        {0x47455420, 0x2F204854},                                          // another protocol
        {kMagic, kSum, 0},                                                 // an empty request
        {kMagic, kSum, 0xFFFFFFFF, kCreate},                               // a length beyond all bounds
        {kMagic, kSum, kMaxMessageWords + 1, kCreate},                     // one word too many
        {kMagic, kSum, 1, 0xFFFFFFFF},                                     // no such call
        {kMagic, kSum, 1, static_cast<uint32_t>(calls::kCallCount)},       // the first id that is none
        {kMagic, kSum, 2, static_cast<uint32_t>(CallId::onu_mac2str), 0},  // a call that is no daemon's
        {kMagic, kSum, 3, kCreate, 0, 0},                                  // an argument is missing
        {kMagic, kSum, 5, kCreate, 0, 0, 1, 2},                            // one too many
        {kMagic, kSum, 4, static_cast<uint32_t>(CallId::sys_trace_add_log), 0x7FFFFFFF, 0, 0},  // a text without end
    };
    for (const auto &words : nonsense) {
        const RawClient bad(folder.socket());
        bad.send_words(words);
        EXPECT_TRUE(bad.is_closed());
        EXPECT_EQ(create_vlan(good, 2), 2);
    }
    EXPECT_EQ(server.counters().malformed, std::size(nonsense));
}

TEST(Remote, WaitsForTheRestOfAMessageAndForgetsAClientThatLeavesWithinOne) {
    const Folder folder;
    VlanOnly device;
    Server server(device, folder.socket());
    const Loop loop(server);
    {
        const RawClient slow(folder.socket());
        slow.send_words({kMagic});
        slow.send_words({calls::kInterfaceChecksum, 4});
        slow.send_words({static_cast<uint32_t>(CallId::user_vlan_create), 0, 0});
        slow.send_words({55});
        uint8_t answer[(kHandshakeWords + 3) * kWordBytes] = {};
        ASSERT_EQ(slow.receive(answer, sizeof answer), sizeof answer);
        EXPECT_EQ(answer[sizeof answer - kWordBytes - 1], 55);
        slow.send_words({4, static_cast<uint32_t>(CallId::user_vlan_create)});
    }
    Client client("libtest", folder.socket());
    EXPECT_EQ(create_vlan(client, 3), 3);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (server.clients() > 1 && std::chrono::steady_clock::now() < end) {
        EXPECT_EQ(create_vlan(client, 3), 3);
    }
    EXPECT_EQ(server.clients(), 1u);
    EXPECT_EQ(server.counters().malformed, 0u);
}

// A client that asks and never reads must not grow the server: it is not read from until it takes its answers.
TEST(Remote, StopsReadingFromAClientThatDoesNotTakeItsAnswers) {
    const Folder folder;
    VlanOnly device;
    Server server(device, folder.socket());
    constexpr uint64_t kRequests = 100000;
    // What the kernel's buffers hold of answers is far less than this.
    constexpr uint64_t kMostAnswered = kRequests / 4;
    const RawClient greedy(folder.socket());
    {
        const Loop loop(server);
        greedy.send_words({kMagic, calls::kInterfaceChecksum});
        Writer writer;
        for (uint64_t request = 0; request < kRequests; ++request) {
            for (const uint32_t word : {4u, static_cast<uint32_t>(CallId::user_vlan_create), 0u, 0u, 1u}) {
                writer.word(word);
            }
        }
        EXPECT_LT(greedy.send_without_reading(writer.buffer()), writer.buffer().size());
        Client other("libtest", folder.socket());
        EXPECT_EQ(create_vlan(other, 4), 4);
    }
    EXPECT_LT(server.counters().calls, kMostAnswered);
}

// More requests than the kernel holds answers for, so that answering stops in their midst and goes on with the reading.
TEST(Remote, AnswersEveryRequestThatWasSentAhead) {
    constexpr uint32_t kRequests = 4000;
    constexpr size_t kAnswerWords = 3;
    constexpr int kPauseMilliseconds = 100;
    const Folder folder;
    VlanOnly device;
    Server server(device, folder.socket());
    const RawClient eager(folder.socket());
    const Loop loop(server);
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

// Whoever sends many requests at once has to wait for the others in between.
TEST(Remote, ServesOthersBetweenTheRequestsOfAnEagerClient) {
    constexpr uint32_t kRequests = 2000;
    constexpr uint64_t kMostCalls = 200;
    constexpr size_t kAnswerBytes = (kHandshakeWords + 3) * kWordBytes;
    const Folder folder;
    VlanOnly device;
    Server server(device, folder.socket());
    const RawClient eager(folder.socket());
    const RawClient other(folder.socket());
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
        server.serve_ready();
    }
    EXPECT_EQ(other.waiting_bytes(), kAnswerBytes);
    EXPECT_LT(server.counters().calls, kMostCalls);
    while (server.counters().calls < kRequests + 1 && eager.waiting_bytes() > 0) {
        eager.skip_waiting();
        server.serve_ready();
    }
    EXPECT_EQ(server.counters().calls, kRequests + 1) << "what came early is answered without anything more coming";
}

TEST(Remote, HalfMessagesDoNotKeepAnybodyWaiting) {
    const Folder folder;
    VlanOnly device;
    Server server(device, folder.socket());
    const Loop loop(server);
    std::deque<RawClient> silent;
    for (size_t count = 0; count + 1 < Server::kMaxClients; ++count) {
        silent.emplace_back(folder.socket());
        // As long as a message may be, and begun: one word of it.
        silent.back().send_words({kMagic, calls::kInterfaceChecksum, kMaxMessageWords, 0});
    }
    Client client("libtest", folder.socket());
    EXPECT_EQ(create_vlan(client, 5), 5);
    EXPECT_EQ(server.counters().malformed, 0u);
}

TEST(Remote, TurnsAwayMoreClientsThanItServes) {
    const Folder folder;
    VlanOnly device;
    Server server(device, folder.socket());
    const Loop loop(server);
    std::deque<RawClient> clients;
    for (size_t count = 0; count < Server::kMaxClients; ++count) {
        clients.emplace_back(folder.socket());
    }
    const RawClient one_too_many(folder.socket());
    EXPECT_TRUE(one_too_many.is_closed());
    EXPECT_EQ(server.counters().refused, 1u);
}

TEST(Remote, ShowsEachCallToAnObserver) {
    const Folder folder;
    VlanOnly device;
    Server server(device, folder.socket());
    std::vector<std::string> seen;
    server.set_observer([&](CallId id, const void *const *arguments, int64_t result) {
        seen.push_back(describe_call(id, arguments) + " -> " + describe_result(id, arguments, result));
    });
    Client client("libtest", folder.socket());
    {
        const Loop loop(server);
        EXPECT_EQ(create_vlan(client, 3), 3);
    }
    EXPECT_THAT(seen, testing::ElementsAre("user_vlan_create(unit=0, zero=0, vid=3) -> 3"));
}

TEST(RemoteServer, RefusesAPathThatAnotherServes) {
    const Folder folder;
    VlanOnly device;
    const Server server(device, folder.socket());
    try {
        const Server second(device, folder.socket());
        FAIL() << "two servers on one path";
    } catch (const std::runtime_error &error) {
        EXPECT_EQ(error.what(), "another virtual device already serves " + folder.socket());
    }
    EXPECT_TRUE(std::filesystem::exists(folder.socket())) << "the refused one must not remove the other's socket";
}

TEST(RemoteServer, TakesOverTheSocketOfADeadDaemon) {
    const Folder folder;
    {
        const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
        const sockaddr_un address = address_of(folder.socket());
        ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        close(listener);
    }
    VlanOnly device;
    {
        const Server server(device, folder.socket());
        EXPECT_GE(server.poll_fd(), 0);
    }
    EXPECT_FALSE(std::filesystem::exists(folder.socket()));
}

TEST(RemoteServer, SaysWhyItCannotOpenItsSocket) {
    VlanOnly device;
    try {
        const Server server(device, "/nowhere/driver");
        FAIL() << "opened a socket in a folder that does not exist";
    } catch (const std::runtime_error &error) {
        EXPECT_STREQ(error.what(), "cannot bind /nowhere/driver: No such file or directory");
    }
    EXPECT_THROW(Server(device, "/" + std::string(200, 'x')), std::runtime_error);
}

}  // namespace vdevice::remote
