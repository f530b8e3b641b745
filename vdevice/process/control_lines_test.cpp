// The control socket and clients that are sent lines until they leave.
#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <nlohmann/json.hpp>

#include "vdevice/process/control_server.h"
#include "vdevice/remote/testing/device.h"

namespace vdevice {
namespace control_lines_test {

using remote::RawClient;

constexpr int kRounds = 50;

class ControlLines : public testing::Test {
  protected:
    [[nodiscard]] std::string path() const { return folder_.path() + "/control"; }
    void run(int rounds) {
        for (int round = 0; round < rounds && loop_.run_once(0); ++round) {
        }
    }
    void ask(const RawClient &client, const std::string &text) {
        client.send_bytes(std::span(reinterpret_cast<const uint8_t *>(text.data()), text.size()));
        run(kRounds);
    }
    static std::string received(const RawClient &client) {
        std::string text(client.waiting_bytes(), 0);
        if (!text.empty()) {
            client.receive(reinterpret_cast<uint8_t *>(text.data()), text.size());
        }
        return text;
    }

    int asked_ = 0;
    std::deque<std::string> lines_;
    std::function<void()> wake_; /**< tells the server that there are new lines */
    std::weak_ptr<int> kept_;    /**< by the server, as long as the client is there */
    io::EventLoop loop_;

  private:
    ControlServer::Lines lines(const std::function<void()> &wake) {
        wake_ = wake;
        auto kept = std::make_shared<int>();
        kept_ = kept;
        return [this, kept]() -> std::optional<std::string> {
            if (lines_.empty()) {
                return std::nullopt;
            }
            const std::string line = lines_.front();
            lines_.pop_front();
            return line;
        };
    }

    TemporaryFolder folder_;
    ControlServer server_{loop_, path(),
                          [this](const nlohmann::json &) {
                              ++asked_;
                              return nlohmann::json::object();
                          },
                          nullptr,
                          [this](const nlohmann::json &request, const std::function<void()> &wake) {
                              return request.contains("lines") ? lines(wake) : nullptr;
                          }};
};

TEST_F(ControlLines, AreSentWhenThereAreSome) {
    const RawClient watching(path());
    lines_ = {"first", "second"};
    ask(watching, "{\"lines\": true}\n{}\n");
    EXPECT_EQ(received(watching), "first\nsecond\n");
    EXPECT_EQ(asked_, 0) << "other requests of such a client are not heard";
    lines_ = {"third"};
    wake_();
    run(kRounds);
    EXPECT_EQ(received(watching), "third\n");
    EXPECT_FALSE(loop_.run_once(0)) << "then nothing is to be done";
    const RawClient other(path());
    ask(other, "{}\n");
    EXPECT_EQ(received(other), "{}\n");
}

TEST_F(ControlLines, OfASlowReaderAreLeftWhereTheyAre) {
    constexpr size_t kLines = 100000;
    constexpr size_t kOctets = 100;
    const RawClient slow(path());
    const RawClient other(path());
    lines_.assign(kLines, std::string(kOctets - 1, 'x'));
    ask(slow, "{\"lines\": true}\n");
    EXPECT_GT(lines_.size(), kLines / 2) << "they are not collected for it";
    ask(other, "{}\n");
    EXPECT_EQ(received(other), "{}\n");
    size_t octets = 0;
    for (size_t round = 0; octets < kLines * kOctets && round < kLines; ++round) {
        octets += received(slow).size();
        run(1);
    }
    EXPECT_EQ(octets, kLines * kOctets) << "all come when it reads";
}

TEST_F(ControlLines, EndWithTheirClient) {
    {
        const RawClient watching(path());
        ask(watching, "{\"lines\": true}\n");
        EXPECT_FALSE(kept_.expired());
    }
    run(kRounds);
    EXPECT_TRUE(kept_.expired());
}

}  // namespace control_lines_test
}  // namespace vdevice
