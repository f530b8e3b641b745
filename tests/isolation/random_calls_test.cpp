// Every driver call with any arguments, through client, socket, server and driver, on a chip that switches frames at
// the same time: each call is answered, memory does not grow beyond the tables, and their entries stay valid.
//
// ADP_RANDOM_CALLS is the number of calls, ADP_RANDOM_SEED the seed of their arguments.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/likely_numbers.h"
#include "vdevice/chip/testing/recording_sink.h"
#include "vdevice/driver/driver.h"
#include "vdevice/remote/testing/device.h"

#ifdef ISOLATION_SANITIZED
#include <sanitizer/allocator_interface.h>
#endif

namespace random_calls_test {

using calls::CallId;
using random_call::LikelyNumbers;
using random_call::RandomCall;
using vdevice::chip::MacEntry;
using vdevice::chip::MacTable;
using vdevice::chip::PortSet;
using vdevice::chip::Switch;
using vdevice::remote::Client;
using vdevice::remote::Folder;
using vdevice::remote::Loop;
using vdevice::remote::Server;

constexpr uint64_t kCalls = 50000;
constexpr uint64_t kFrameOneIn = 4;
constexpr uint64_t kSecondOneIn = 64;

uint64_t number_from(const char *variable, uint64_t otherwise) {
    const char *given = std::getenv(variable);
    return given == nullptr ? otherwise : std::strtoull(given, nullptr, 0);
}

/** Bytes that the program has allocated and not freed. */
size_t allocated() {
#ifdef ISOLATION_SANITIZED
    return __sanitizer_get_current_allocated_bytes();
#else
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

/** The device behind the socket: driver and chip, frames between the calls, and a clock. */
class Device {
  public:
    int64_t answer(CallId id, const void *const *arguments) {
        ++answered_[static_cast<size_t>(id)];
        const int64_t result = vdevice::dispatch(driver_, id, arguments);
        if (++count_ % kFrameOneIn == 0) {
            receive_frame();
        }
        if (count_ % kSecondOneIn == 0) {
            now_ += std::chrono::seconds(1);
            chip_.tick(now_);
        }
        sink_.take_changes();
        return result;
    }

    [[nodiscard]] const Switch &chip() const { return chip_; }
    [[nodiscard]] const vdevice::driver::Driver &driver() const { return driver_; }
    [[nodiscard]] uint64_t answered(CallId id) const { return answered_[static_cast<size_t>(id)]; }
    [[nodiscard]] uint64_t frames_to_unknown_ports() const { return frames_to_unknown_ports_; }

  private:
    void receive_frame() {
        constexpr uint32_t kShortest = 14;
        constexpr uint32_t kLengths = 100;
        std::vector<uint8_t> frame(kShortest + numbers_.below(kLengths));
        std::generate(frame.begin(), frame.end(), [&] { return static_cast<uint8_t>(numbers_.next()); });
        chip_.receive(now_, static_cast<int>(numbers_.below(Switch::kPorts)), frame);
        for (const auto &[port, octets] : sink_.take()) {
            frames_to_unknown_ports_ += Switch::has_port(port) ? 0u : 1u;
        }
    }

    vdevice::chip::test::RecordingSink sink_;
    Switch chip_{sink_};
    vdevice::chip::Time now_{};
    vdevice::driver::Driver driver_{chip_, vdevice::driver::Board{}, [this] { return now_; }};
    LikelyNumbers numbers_{1};
    std::array<uint64_t, calls::kCallCount> answered_{};
    uint64_t count_ = 0;
    uint64_t frames_to_unknown_ports_ = 0;
};

void expect_valid(const Switch &chip) {
    const PortSet all = Switch::all_ports();
    for (const auto vid : chip.vlans().list()) {
        const auto &vlan = *chip.vlans().find(vid);
        EXPECT_EQ(vlan.members | all, all) << "members of VLAN " << vid;
        EXPECT_EQ(vlan.untagged | vlan.members, vlan.members) << "untagged members of VLAN " << vid;
    }
    EXPECT_LE(chip.macs().size(), MacTable::kCapacity);
    for (const MacEntry &entry : chip.macs().list()) {
        ASSERT_TRUE(Switch::has_port(entry.port)) << "of address " << entry.mac.value();
        ASSERT_TRUE(vdevice::chip::is_vid(entry.vid)) << "of address " << entry.mac.value();
    }
    for (int port = 0; port < Switch::kPorts; ++port) {
        EXPECT_EQ(chip.port(port).egress | all, all) << "egress of port " << port;
    }
}

/** Makes all calls, one after the other, again and again. */
void make_calls(Client &client, LikelyNumbers &numbers, uint64_t count) {
    for (uint64_t made = 0; made < count;) {
        for (size_t number = 0; number < calls::kCallCount; ++number) {
            const auto id = static_cast<CallId>(number);
            if (vdevice::is_answered(id)) {
                const RandomCall call(id, numbers);
                client.call(id, call.arguments());
                ++made;
            }
        }
    }
}

TEST(Isolation, EveryCallWithAnyArgumentsIsAnsweredAndNothingGrows) {
    // Room for all tables: the journal's lines, rules, addresses.
    constexpr size_t kMostGrowth = 64u << 20;
    const uint64_t calls = number_from("ADP_RANDOM_CALLS", kCalls);
    const uint64_t seed = number_from("ADP_RANDOM_SEED", 1);
    const Folder folder;
    Device device;
    Server server([&](CallId id, const void *const *arguments) { return device.answer(id, arguments); },
                  folder.socket());
    Client client("test", folder.socket());
    LikelyNumbers numbers(seed);
    const size_t before = allocated();
    {
        const Loop loop(server);
        make_calls(client, numbers, calls);
    }
    EXPECT_LT(allocated(), before + kMostGrowth);
    EXPECT_GE(server.counters().calls, calls);
    EXPECT_EQ(server.counters().malformed, 0u);
    EXPECT_EQ(server.counters().connected, 1u) << "the connection was lost";
    EXPECT_EQ(device.frames_to_unknown_ports(), 0u);
    for (size_t number = 0; number < calls::kCallCount; ++number) {
        const auto id = static_cast<CallId>(number);
        EXPECT_EQ(device.answered(id) == 0, !vdevice::is_answered(id)) << calls::call(id).name;
    }
    expect_valid(device.chip());
    RecordProperty("calls", std::to_string(server.counters().calls));
}

TEST(Isolation, ManyLongLogLinesAreCutAndForgotten) {
    constexpr size_t kTextBytes = 30000;
    constexpr size_t kLines = 6000;
    constexpr size_t kMostGrowth = 32u << 20;
    const Folder folder;
    Device device;
    Server server([&](CallId id, const void *const *arguments) { return device.answer(id, arguments); },
                  folder.socket());
    Client client("test", folder.socket());
    const std::string text(kTextBytes, 'x');
    const char *const address = text.c_str();
    const int32_t level = 1;
    const void *const arguments[] = {&level, &level, &address, &address};
    const size_t before = allocated();
    {
        const Loop loop(server);
        for (size_t line = 0; line < kLines; ++line) {
            client.call(CallId::Log_logging_func, arguments);
        }
    }
    EXPECT_LT(allocated(), before + kMostGrowth);
    EXPECT_EQ(device.driver().journal().total(), kLines);
}

}  // namespace random_calls_test
