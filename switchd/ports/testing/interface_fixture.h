// For tests: interfaces of the switch in a network namespace of the test's own, and what a person does to them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "switchd/ports/interfaces.h"
#include "vdevice/io/interfaces.h"
#include "vdevice/io/packet_port.h"

namespace switchd::test {

using Octets = std::vector<uint8_t>;

inline Octets octets_of(vdevice::chip::Bytes bytes) {
    return {bytes.begin(), bytes.end()};
}

/** Runs 'ip' with arguments of the test's own. */
inline void ip(const std::string &arguments) {
    EXPECT_EQ(std::system(("exec ip " + arguments).c_str()), 0) << arguments;
}

/** Looks again and again until it is so, for a minute, which is for a machine with much to do. */
inline bool comes_true(const std::function<bool()> &is_so) {
    using namespace std::chrono_literals;
    const auto end = std::chrono::steady_clock::now() + 1min;
    while (!is_so()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

inline std::optional<FoundLink> find_link(const std::string &name) {
    for (const FoundLink &link : find_links()) {
        if (link.name == name) {
            return link;
        }
    }
    return std::nullopt;
}

inline std::string kind_name(const testing::TestParamInfo<InterfaceKind> &info) {
    return info.param == InterfaceKind::kTap ? "Tap" : "Veth";
}

class InterfaceTest : public testing::TestWithParam<InterfaceKind> {
  protected:
    void SetUp() override {
        if (GetParam() == InterfaceKind::kTap && best_interface_kind() != InterfaceKind::kTap) {
            GTEST_SKIP() << "this user may have no TAP interface here";
        }
        vdevice::io::set_interface_up("lo", true);
        start();
    }
    void TearDown() override {
        if (interfaces_) {
            interfaces_->remove_all();
        }
    }
    /** A daemon starts; there is none. */
    void start() {
        const InterfaceSettings settings{GetParam(), {2, 0, 0, 0, 1, 0}, 1500};
        interfaces_ = std::make_unique<Interfaces>(loop_, settings, "", [this](Interface &interface) {
            interface.read(interfaces_->room(), [&](vdevice::chip::Bytes frame) {
                received_.emplace_back(interface.port(), octets_of(frame));
            });
        });
    }
    /** It is killed. */
    void kill() { interfaces_.reset(); }
    void want(const std::set<PortName> &ports) {
        const std::vector<std::string> refusals = interfaces_->set_wanted(ports);
        EXPECT_TRUE(refusals.empty()) << refusals.front();
    }
    Interface &at(const PortName &port) {
        Interface *found = interfaces_->find(port);
        EXPECT_NE(found, nullptr) << name_of(port);
        return *found;
    }
    /** Handles what waits; true if the condition comes true meanwhile. */
    bool run_until(const std::function<bool()> &is_so) {
        return comes_true([&] {
            loop_.run_once(0);
            return is_so();
        });
    }
    /** A frame that nobody else sends. */
    static Octets frame(uint8_t number, size_t octets = 100) {
        Octets made(octets, number);
        const Octets header = {2, 0, 0, 0, 9, 1, 2, 0, 0, 0, 9, 2, 0x88, 0xB5};
        std::copy(header.begin(), header.end(), made.begin());
        return made;
    }
    bool has_received(const PortName &port, const Octets &frame) const {
        return std::find(received_.begin(), received_.end(), std::pair{port, frame}) != received_.end();
    }

    vdevice::io::EventLoop loop_;
    std::unique_ptr<Interfaces> interfaces_;
    std::vector<std::pair<PortName, Octets>> received_; /**< what the kernel has sent */
};

/** A program that sends and receives on an interface. */
class Program {
  public:
    explicit Program(const std::string &interface_name) : port_{interface_name, 0} { port_.open(); }

    void send(const Octets &frame) {
        port_.queue(vdevice::chip::split_frame(frame));
        port_.flush();
    }
    /** Whether the frame comes. */
    bool receives(const Octets &frame) {
        return comes_true([&] {
            bool found = false;
            port_.receive(batch_, [&](vdevice::chip::Bytes each, vdevice::io::WallTime) {
                found = found || octets_of(each) == frame;
            });
            return found;
        });
    }

    /** Reads what waits; gives how many frames of this source are among it. */
    size_t receive_all_of(const Octets &source) {
        constexpr size_t kSource = 6;
        size_t all = 0;
        size_t wanted = 0;
        for (size_t before = 1; before != all;) {
            before = all;
            port_.receive(batch_, [&](vdevice::chip::Bytes frame, vdevice::io::WallTime) {
                ++all;
                wanted += std::equal(source.begin(), source.end(), frame.begin() + kSource) ? 1U : 0U;
            });
        }
        return wanted;
    }

  private:
    vdevice::io::PacketPort port_;
    vdevice::io::ReceiveBatch batch_;
};

}  // namespace switchd::test
