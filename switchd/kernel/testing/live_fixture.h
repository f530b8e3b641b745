// For tests with the kernel itself. They need a network namespace of their own; the test run makes it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "switchd/kernel/monitor.h"
#include "switchd/kernel/requests.h"

namespace switchd::test {

/** The keys that are not in both, or not with the same value. */
template <typename Map, typename Print>
void list_differences(const Map &left, const Map &right, const Print &print, std::string &text) {
    for (const auto &[key, value] : left) {
        if (const auto found = right.find(key); found == right.end() || found->second != value) {
            text += print(key) + " ";
        }
    }
}
inline std::string differences(const KernelState &left, const KernelState &right) {
    const auto number = [](int index) { return std::to_string(index); };
    const auto address = [](const AddressKey &key) {
        return std::to_string(key.bridge) + ":" + std::to_string(key.mac[5]);
    };
    const auto group = [](const GroupKey &key) {
        return std::to_string(key.bridge) + "/" + std::to_string(key.address[3]);
    };
    std::string text;
    for (const auto &[one, other] : {std::pair{&left, &right}, std::pair{&right, &left}}) {
        text += "\nlinks: ";
        list_differences(one->links, other->links, number, text);
        text += "\naddresses: ";
        list_differences(one->addresses, other->addresses, address, text);
        text += "\ngroups: ";
        list_differences(one->groups, other->groups, group, text);
        text += "\nrouter ports: ";
        list_differences(one->router_ports, other->router_ports, number, text);
    }
    return text;
}

class LiveTest : public testing::Test {
  protected:
    ~LiveTest() override {
        const KernelMonitor monitor;
        for (const auto &[index, link] : monitor.state().links) {
            if (link.name != "lo") {
                requests_.remove_link(index);  // an end of a pair is gone with the other one
            }
        }
    }

    /** Commands of 'ip' or 'bridge'. */
    static void run(const std::string &program, const std::string &lines) {
        FILE *pipe = popen((program + " -batch -").c_str(), "we");
        ASSERT_NE(pipe, nullptr);
        std::fputs(lines.c_str(), pipe);
        ASSERT_EQ(pclose(pipe), 0) << program << ": " << lines.substr(0, 200);
    }
    static int index_of(const std::string &name) { return static_cast<int>(if_nametoindex(name.c_str())); }
    /**
     * A bridge with so many ports "p1", "p2" ..., all up and enabled in it, whose peers are "h1", "h2" ... A thread of
     * the kernel's own enables a port when it has seen the carrier; until then the bridge takes no groups of it.
     */
    static void make_bridge(const std::string &name, int ports, const std::string &settings = "") {
        std::string lines = "link add " + name + " type bridge " + settings + "\nlink set " + name + " up\n";
        for (int number = 1; number <= ports; ++number) {
            const std::string port = "p" + std::to_string(number);
            const std::string peer = "h" + std::to_string(number);
            lines.append("link add ").append(port).append(" type veth peer name ").append(peer).append("\n");
            lines.append("link set ").append(peer).append(" up\n");
            lines.append("link set ").append(port).append(" up master ").append(name).append("\n");
        }
        run("ip", lines);
        const int bridge = index_of(name);
        await([&] { return are_ports_enabled(bridge); });
    }
    static bool are_ports_enabled(int bridge) {
        const KernelMonitor monitor;
        const auto &links = monitor.state().links;
        return std::none_of(links.begin(), links.end(), [bridge](const auto &entry) {
            const Link &link = entry.second;
            return link.master == bridge && (!link.port || link.port->state == PortState::kDisabled);
        });
    }
    /** Asks again and again. What is awaited takes milliseconds, and on a machine with much to do as long as it needs.
     */
    template <typename Condition>
    static void await(const Condition &is_so) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::minutes{1};
        bool is_reached = is_so();
        while (!is_reached && std::chrono::steady_clock::now() < end) {
            is_reached = is_so();
        }
        ASSERT_TRUE(is_reached) << "within a minute";
    }
    static const Link &link_of(const KernelMonitor &monitor, const std::string &name) {
        return monitor.state().links.at(index_of(name));
    }

    static bool is_readable(const KernelMonitor &monitor) {
        constexpr int kQuiet = 30;  // milliseconds
        pollfd asked{monitor.fd(), POLLIN, 0};
        return poll(&asked, 1, kQuiet) == 1;
    }
    static void read_notifications(KernelMonitor &monitor) {
        constexpr int kMost = 10000;
        for (int count = 0; count < kMost && is_readable(monitor); ++count) {
            monitor.receive();
        }
    }
    /** For what a thread or a timer of the kernel's own does, which may come later than the others are quiet. */
    template <typename Condition>
    static void read_until(KernelMonitor &monitor, const Condition &is_so) {
        await([&] {
            if (is_readable(monitor)) {
                monitor.receive();
            }
            return is_so();
        });
    }
    /** What notifications made of the state is what a monitor reads that is begun now. */
    static void expect_in_step(KernelMonitor &monitor) {
        constexpr int kTries = 50;  // the kernel's timers go on
        std::string differing = "?";
        for (int tries = 0; tries < kTries && !differing.empty(); ++tries) {
            read_notifications(monitor);
            monitor.refresh_bridges();
            const KernelMonitor fresh;
            differing = monitor.state() == fresh.state() ? "" : differences(monitor.state(), fresh.state());
        }
        EXPECT_EQ(differing, "");
    }

    static std::vector<AddressChange> addresses(int interface, size_t count) {
        constexpr size_t kOctet = 256;
        std::vector<AddressChange> made;
        for (size_t number = 0; number < count; ++number) {
            made.push_back(
                {interface,
                 0,
                 {2, 0, 0, 1, static_cast<uint8_t>(number / kOctet), static_cast<uint8_t>(number % kOctet)}});
        }
        return made;
    }

    KernelRequests requests_;
};

}  // namespace switchd::test
