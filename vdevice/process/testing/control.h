// What the tests of the control socket share: a server in a loop that the test turns, and clients.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <nlohmann/json.hpp>
#include <string>

#include "vdevice/process/control_server.h"
#include "vdevice/remote/testing/device.h"

namespace vdevice::control_testing {

using remote::RawClient;

inline constexpr int kRounds = 50;

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

}  // namespace vdevice::control_testing
