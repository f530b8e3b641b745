// The server: what it answers, whom it closes, and its socket.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <new>
#include <vector>

#include "calls/describe.h"
#include "vdevice/remote/testing/device.h"

namespace vdevice::remote {

using calls::CallId;
using calls::describe_call;
using calls::describe_result;

TEST_F(RemoteVlans, TellsAClientThatItWasBuiltFromOtherHeaders) {
    const Loop loop(server_);
    const RawClient other(folder_.socket());
    other.send_words({kMagic, calls::kInterfaceChecksum + 1});
    uint8_t answer[kHandshakeWords * kWordBytes] = {};
    ASSERT_EQ(other.receive(answer, sizeof answer), sizeof answer);
    Reader reader(answer);
    EXPECT_EQ(reader.word(), kMagic);
    EXPECT_EQ(reader.word(), calls::kInterfaceChecksum);
    EXPECT_TRUE(other.is_closed());
    EXPECT_EQ(server_.counters().mismatched, 1u);
    EXPECT_EQ(server_.counters().connected, 0u);
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
    ASSERT_EQ(watcher.request(Extra::kWatchLinks, {}, words, watcher.deadline()), 0);
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

TEST_F(RemoteVlans, TellsThoseWhoBeginToWatchWhatIs) {
    server_.set_link_states([] { return std::vector<Server::LinkChange>{{0, 4, 1000, 1, 0, 1}, {0, 5, 10, 0, 2, 0}}; });
    Client watcher("libtest", folder_.socket());
    const Loop loop(server_);
    std::vector<uint32_t> words;
    ASSERT_EQ(watcher.request(Extra::kWatchLinks, {}, words, watcher.deadline()), 0);
    const auto is_told = [&] {
        ASSERT_TRUE(watcher.wait_for_message(words));
        EXPECT_EQ(words, (std::vector<uint32_t>{0, 4, 1000, 1, 0, 1}));
        ASSERT_TRUE(watcher.wait_for_message(words));
        EXPECT_EQ(words, (std::vector<uint32_t>{0, 5, 10, 0, 2, 0}));
    };
    is_told();
    watcher.ask_again(Extra::kWatchLinks);
    ASSERT_TRUE(watcher.wait_for_message(words));
    EXPECT_EQ(words, std::vector<uint32_t>{0}) << "the reply";
    is_told();
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

TEST_F(RemoteVlans, RefusesExtraRequestsThatItDoesNotKnow) {
    const Loop loop(server_);
    for (const uint32_t id : {static_cast<uint32_t>(Extra::kTakeEvent), kFirstExtra + 2}) {
        const RawClient client(folder_.socket());
        client.send_words({kMagic, calls::kInterfaceChecksum, 1, id});
        EXPECT_TRUE(client.is_closed()) << "nobody answers it here";
    }
}

TEST_F(RemoteVlans, ClosesAClientThatSendsNonsenseAndServesTheOthers) {
    Client good("libtest", folder_.socket());
    const Loop loop(server_);
    EXPECT_EQ(create_vlan(good, 1), 1);
    constexpr uint32_t kCreate = static_cast<uint32_t>(CallId::user_vlan_create);
    constexpr uint32_t kSum = calls::kInterfaceChecksum;
    const std::initializer_list<uint32_t> nonsense[] = {
        {0x47455420, 0x2F204854},                                          // another protocol
        {kMagic, kSum, 0},                                                 // an empty request
        {kMagic, kSum, 0xFFFFFFFF, kCreate},                               // a length beyond all bounds
        {kMagic, kSum, kMaxMessageWords + 1, kCreate},                     // one word too many
        {kMagic, kSum, 1, 0xFFFFFFFF},                                     // no such call
        {kMagic, kSum, 1, static_cast<uint32_t>(calls::kCallCount)},       // the first unused id
        {kMagic, kSum, 2, static_cast<uint32_t>(CallId::onu_mac2str), 0},  // a call that is no daemon's
        {kMagic, kSum, 3, kCreate, 0, 0},                                  // an argument is missing
        {kMagic, kSum, 5, kCreate, 0, 0, 1, 2},                            // one too many
        {kMagic, kSum, 4, static_cast<uint32_t>(CallId::sys_trace_add_log), 0x7FFFFFFF, 0, 0},  // a text without end
    };
    for (const auto &words : nonsense) {
        const RawClient bad(folder_.socket());
        bad.send_words(words);
        EXPECT_TRUE(bad.is_closed());
        EXPECT_EQ(create_vlan(good, 2), 2);
    }
    EXPECT_EQ(server_.counters().malformed, std::size(nonsense));
}

TEST_F(RemoteVlans, ShowsEachCallToAnObserver) {
    std::vector<std::string> seen;
    server_.set_observer([&](CallId id, const void *const *arguments, int64_t result) {
        seen.push_back(describe_call(id, arguments) + " -> " + describe_result(id, arguments, result));
    });
    Client client("libtest", folder_.socket());
    {
        const Loop loop(server_);
        EXPECT_EQ(create_vlan(client, 3), 3);
    }
    EXPECT_THAT(seen, testing::ElementsAre("user_vlan_create(unit=0, zero=0, vid=3) -> 3"));
}

TEST_F(RemoteVlans, ARequestThatRunsOutOfMemoryEndsItsClientAlone) {
    const Folder folder;
    Server server(
        [](CallId, const void *const *arguments) -> int64_t {
            if (*static_cast<const uint32_t *>(arguments[2]) == 0) {
                throw std::bad_alloc{};
            }
            return 5;
        },
        folder.socket());
    const Loop loop(server);
    Client client("libtest", folder.socket());
    EXPECT_EQ(create_vlan(client, 1), 5);
    const RawClient greedy(folder.socket());
    greedy.send_words({kMagic, calls::kInterfaceChecksum, 4, static_cast<uint32_t>(CallId::user_vlan_create), 0, 0, 0});
    EXPECT_TRUE(greedy.is_closed());
    EXPECT_EQ(create_vlan(client, 1), 5);
}

}  // namespace vdevice::remote
