// For tests: a daemon, and the libraries that are linked with the test and talk to it.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/device_services.h"
#include "vdevice/remote/testing/device.h"
#include "vdevice/services/testing/device.h"
#include "vdevice/sockets/run_dir.h"

namespace vdevice::services {

/** One daemon for all tests: the libraries read the path of its socket at their first call and keep it. */
class Libraries : public testing::Test {
  protected:
    static constexpr int32_t kStormPort = 2; /**< enabled, its link changes far more often than a socket holds */
    static constexpr int32_t kStorm = 50000;

    static void SetUpTestSuite() {
        char name[] = "/tmp/vdevice-test-XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        setenv("VDEVICE_DIR", name, 1);
        start();
    }
    static void TearDownTestSuite() {
        stop();
        std::filesystem::remove_all(default_run_dir());
    }
    static void start() {
        server = std::make_unique<remote::Server>(device, driver_socket(default_run_dir()));
        server->set_link_states([] {
            std::vector<remote::Server::LinkChange> states;
            for (const auto &[port, link] : links) {
                states.push_back(link_words(port, link));
            }
            return states;
        });
        device.link_changed = [](int32_t port, uint32_t link) {
            if (const auto wired = links.find(port); wired != links.end()) {
                wired->second = link;
            }
            for (int32_t count = port == kStormPort ? kStorm : 1; count > 0; --count) {
                server->publish_link_change(link_words(port, link));
            }
        };
        server->set_extra_handler([](remote::Extra, std::span<const uint32_t> words, std::vector<uint32_t> &answer) {
            if (words.size() != 1 || words[0] != erps_event_queue || looks-- > 0) {
                return 0;
            }
            answer = {1, 2, 3, 4, 5, 6, 7, 0, 0, 29, 26, 1};
            return 1;
        });
        resume();
    }
    static void stop() {
        stall();
        server.reset();
    }
    static void resume() { loop = std::make_unique<remote::Loop>(*server); }
    static void stall() { loop.reset(); }

    static inline Device device;
    static inline std::unique_ptr<remote::Server> server;
    static inline std::unique_ptr<remote::Loop> loop;
    static inline std::atomic<int> looks{0};                          /**< how often the event queue is found empty */
    static inline std::map<int32_t, uint32_t> links{{4, 1}, {29, 1}}; /**< wired ports, and whether they are up */

  private:
    static remote::Server::LinkChange link_words(int32_t port, uint32_t link) {
        return {0, static_cast<uint32_t>(port), 1000, 1, 3 * (1 - link), link};
    }
};

}  // namespace vdevice::services
