// The control socket and clients that send too much or read too little: the others have their turn.
#include "vdevice/daemon/control_server.h"

#include <gtest/gtest.h>

#include <deque>
#include <nlohmann/json.hpp>

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

    int asked_ = 0;
    size_t answer_size_ = 1;

  private:
    TemporaryFolder folder_;
    io::EventLoop loop_;
    ControlServer server_{loop_, path(), [this](const nlohmann::json &) {
                              ++asked_;
                              return nlohmann::json{{"answer", std::string(answer_size_, 'x')}};
                          }};
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
    constexpr size_t kTooLong = 70000;
    for (const bool has_end : {false, true}) {
        const RawClient greedy(path());
        const RawClient other(path());
        run(kRounds);
        const std::string line = std::string(kTooLong, ' ') + (has_end ? "\n" : "");
        for (size_t sent = 0; sent < line.size(); sent += kTooLong / 10) {
            send(greedy, line.substr(sent, kTooLong / 10));
            run(kRounds);
        }
        EXPECT_TRUE(greedy.is_closed());
        send(other, "{}\n");
        run(kRounds);
        EXPECT_GT(other.waiting_bytes(), 0u);
    }
}

TEST_F(Control, OneClientTooManyIsTurnedAway) {
    constexpr size_t kMostClients = 32;
    std::deque<RawClient> clients;
    for (size_t count = 0; count < kMostClients; ++count) {
        clients.emplace_back(path());
        run(kRounds);
    }
    const RawClient one_too_many(path());
    run(kRounds);
    EXPECT_TRUE(one_too_many.is_closed());
    for (const RawClient &client : clients) {
        send(client, "{}\n");
        run(kRounds);
        EXPECT_GT(client.waiting_bytes(), 0u);
    }
    clients.pop_back();
    run(kRounds);
    const RawClient next(path());
    send(next, "{}\n");
    run(kRounds);
    EXPECT_GT(next.waiting_bytes(), 0u) << "a client that left makes room";
}

}  // namespace control_server_test
}  // namespace vdevice
