// The control socket and clients that send much or read little: the others have their turn.
#include <sys/epoll.h>

#include <deque>
#include <initializer_list>
#include <memory>

#include "vdevice/process/testing/control.h"

namespace vdevice {
namespace control_server_test {

using control_testing::Control;
using control_testing::kRounds;
using control_testing::RawClient;

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

}  // namespace control_server_test
}  // namespace vdevice
