// The calls on storm control and on the ingress limit: what they keep, which frames they hold back, what they refuse.
#include <gtest/gtest.h>

#include "vdevice/chip/testing/frame_builder.h"
#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace rates_test {

using namespace std::chrono_literals;

using chip::Status;
using namespace chip::test;
using chip::test::station;
using namespace test;

constexpr int32_t kStormType = chip::code(Status::kStormType);

constexpr int32_t kPort = 4;
constexpr int32_t kOther = 5;
constexpr int32_t kNeighbour = 6;
constexpr uint32_t kUntouched = 99;
constexpr uint32_t kOctets = 0;
constexpr uint32_t kFrames = 1;

/** A type by the number that sets it and by the code that asks for its flag, and an address of such frames. */
struct Type {
    uint32_t number;
    uint32_t code;
    Octets destination;
};
const Type kBroadcasts{3, 1, kBroadcast};
const Type kMulticasts{2, 2, {0x01, 0x00, 0x5E, 1, 2, 3}};
const Type kStrangers{4, 4, station(99)};
const Type kSingle[] = {kBroadcasts, kMulticasts, kStrangers};
constexpr uint32_t kJointNumber = 1;
constexpr uint32_t kJointCode = 8;

struct Limit {
    uint32_t rate;
    uint32_t burst;
    friend bool operator==(const Limit &, const Limit &) = default;
};

class DriverLimits : public test::DriverTest {
  protected:
    DriverLimits() {
        for (const int port : {kPort, kOther, kNeighbour}) {
            EXPECT_EQ(chip_.set_link(port, true), Status::kOk);
        }
        say(kNeighbour, kBroadcast, station(kNeighbour));
    }

    /** Whether a frame of 125 octets, a kilobit with its check sequence, comes through. */
    bool say(int port, const Octets &destination, const Octets &source = station(1)) {
        constexpr size_t kBytes = 125 - chip::kAddressBytes - chip::kTypeBytes - chip::kCheckSequenceBytes;
        chip_.receive(now_, port, destination + source + chip::test::octets16(0x0800) + Octets(kBytes, 0));
        return !sink_.take().empty();
    }
    int count_passed(int port, const Octets &destination) {
        constexpr int kMany = 20;
        int passed = 0;
        for (int i = 0; i < kMany; ++i) {
            passed += say(port, destination) ? 1 : 0;
        }
        return passed == kMany ? kAll : passed;
    }
    static constexpr int kAll = -1;

    Limit storm_limit(uint32_t type, int32_t port = kPort) {
        Limit limit{kUntouched, kUntouched};
        EXPECT_EQ(driver_.user_rate_bandwidth_get(0, 0, port, type, &limit.rate, &limit.burst), kOk);
        return limit;
    }
    Limit ingress_limit(int32_t port = kPort) {
        Limit limit{kUntouched, kUntouched};
        EXPECT_EQ(driver_.user_port_ingress_rate_get(0, 0, port, &limit.rate, &limit.burst), kOk);
        return limit;
    }
    uint32_t selection(uint32_t type) {
        uint32_t value = kUntouched;
        EXPECT_EQ(driver_.user_rate_stormsel_get(0, 0, kPort, type, &value), kOk);
        return value;
    }
    uint32_t exceeded(uint32_t code, int32_t port = kPort) {
        uint32_t flag = kUntouched;
        EXPECT_EQ(driver_.user_rate_stormExceedFlag_get(0, 0, port, code, &flag), kOk);
        return flag;
    }
    uint32_t count_mode(uint32_t selector) {
        uint32_t mode = kUntouched;
        EXPECT_EQ(driver_.user_rate_stormCountMode_get(0, 0, selector, &mode), kOk);
        return mode;
    }
};

TEST_F(DriverLimits, HoldsBackFramesOfItsTypeAndTellsByTheCallersCode) {
    for (const Type &type : kSingle) {
        EXPECT_EQ(driver_.user_rate_bandwidth_set(0, 0, kPort, type.number, 1000, 4), kOk);
        EXPECT_EQ(count_passed(kPort, type.destination), 4);
        EXPECT_EQ(count_passed(kOther, type.destination), kAll);
        EXPECT_EQ(count_passed(kPort, station(kNeighbour)), kAll);
        for (const Type &other : kSingle) {
            EXPECT_EQ(exceeded(other.code), other.code == type.code ? 1U : 0U);
            EXPECT_EQ(exceeded(other.code, kOther), 0U);
        }
        EXPECT_EQ(exceeded(kJointCode), 0U);
        EXPECT_EQ(driver_.user_rate_stormExceedFlag_reset(0, 0, kOther), kOk);
        EXPECT_EQ(exceeded(type.code), 1U) << "another port's flags were reset";
        EXPECT_EQ(driver_.user_rate_stormExceedFlag_reset(0, 0, kPort), kOk);
        EXPECT_EQ(exceeded(type.code), 0U);
        now_ += 1ms;
        EXPECT_EQ(count_passed(kPort, type.destination), 1);
        EXPECT_EQ(exceeded(type.code), 1U);
        EXPECT_EQ(driver_.user_rate_stormExceedFlag_reset(0, 0, kPort), kOk);
        EXPECT_EQ(driver_.user_rate_bandwidth_set(0, 0, kPort, type.number, 0, 4), kOk);
        EXPECT_EQ(count_passed(kPort, type.destination), kAll) << "a rate of 0 is none";
    }
}

TEST_F(DriverLimits, ABurstOfZeroIsChosenByTheChip) {
    EXPECT_EQ(driver_.user_rate_bandwidth_set(0, 0, kPort, kBroadcasts.number, 1, 0), kOk);
    EXPECT_EQ(storm_limit(kBroadcasts.number), (Limit{1, 0}));
    const auto bucket = chip_.port(kPort).storm.of(chip::StormType::kBroadcast).limiter.bucket_at(now_);
    ASSERT_TRUE(bucket);
    EXPECT_EQ(bucket->depth(), 3084U);
}

TEST_F(DriverLimits, TheJointLimitIsOnTheSelectedTypes) {
    EXPECT_EQ(driver_.user_rate_bandwidth_set(0, 0, kPort, kJointNumber, 1000, 4), kOk);
    EXPECT_EQ(selection(kJointNumber), 1U);
    EXPECT_EQ(driver_.user_rate_stormsel_set(0, 0, kPort, kMulticasts.number, 0), kOk);
    EXPECT_EQ(selection(kMulticasts.number), 0U);
    EXPECT_EQ(selection(kBroadcasts.number), 1U);
    EXPECT_EQ(selection(kJointNumber), 0U);
    EXPECT_EQ(count_passed(kPort, kMulticasts.destination), kAll);
    EXPECT_TRUE(say(kPort, kStrangers.destination));
    EXPECT_EQ(exceeded(kJointCode), 0U);
    EXPECT_EQ(count_passed(kPort, kBroadcast), 3);
    EXPECT_EQ(exceeded(kJointCode), 1U);
    EXPECT_EQ(exceeded(kBroadcasts.code), 0U);
    EXPECT_EQ(driver_.user_rate_stormsel_set(0, 0, kPort, kJointNumber, 0), kOk);
    EXPECT_EQ(selection(kStrangers.number), 0U);
    EXPECT_EQ(count_passed(kPort, kBroadcast), kAll);
    EXPECT_EQ(driver_.user_rate_stormsel_set(0, 0, kPort, kJointNumber, 1), kOk);
    EXPECT_EQ(selection(kMulticasts.number), 1U);
    EXPECT_EQ(count_passed(kPort, kMulticasts.destination), 0);
}

TEST_F(DriverLimits, AreTurnedOffAndOnByTypeOrAllAtOnce) {
    for (const Type &type : kSingle) {
        EXPECT_EQ(driver_.user_rate_bandwidth_set(0, 0, kPort, type.number, 1, 1), kOk);
        EXPECT_EQ(driver_.user_rate_stormControlEnable_set(0, 0, kPort, type.number, 0), kOk);
        EXPECT_EQ(count_passed(kPort, type.destination), kAll);
        EXPECT_EQ(driver_.user_rate_stormControlEnable_set(0, 0, kPort, type.number, 7), kOk);
        EXPECT_EQ(count_passed(kPort, type.destination), 1);
    }
    EXPECT_EQ(driver_.user_rate_stormControlEnable_set(0, 0, kPort, 0, 0), kOk);
    for (const Type &type : kSingle) {
        EXPECT_EQ(count_passed(kPort, type.destination), kAll);
    }
    EXPECT_EQ(driver_.user_rate_stormControlEnable_set(0, 0, kPort, 0, 1), kOk);
    for (const Type &type : kSingle) {
        EXPECT_EQ(count_passed(kPort, type.destination), 0);
    }
}

TEST_F(DriverLimits, CountModeIsOfATypeOnAllPorts) {
    EXPECT_EQ(count_mode(0), kOctets);
    EXPECT_EQ(driver_.user_rate_stormCountMode_set(0, 0, kBroadcasts.code, kFrames), kOk);
    EXPECT_EQ(count_mode(kBroadcasts.code), kFrames);
    EXPECT_EQ(count_mode(kMulticasts.code), kOctets);
    uint32_t mode = kUntouched;
    EXPECT_EQ(driver_.user_rate_stormCountMode_get(0, 0, 0, &mode), kStormType) << "they differ";
    EXPECT_EQ(mode, kUntouched);
    for (const int32_t port : {kPort, kOther}) {
        EXPECT_EQ(driver_.user_rate_bandwidth_set(0, 0, port, kBroadcasts.number, 10, 2), kOk);
        now_ += 1s;
        EXPECT_EQ(count_passed(port, kBroadcast), 2);
        now_ += 99'999'999ns;
        EXPECT_EQ(count_passed(port, kBroadcast), 0);
        now_ += 1ns;
        EXPECT_EQ(count_passed(port, kBroadcast), 1);
    }
    EXPECT_EQ(driver_.user_rate_stormCountMode_set(0, 0, 0, kFrames), kOk);
    EXPECT_EQ(count_mode(0), kFrames);
    EXPECT_EQ(count_mode(kJointCode), kFrames);
}

TEST_F(DriverLimits, TheIngressLimitIsOnAllFramesOfThePort) {
    EXPECT_EQ(driver_.user_port_ingress_rate_set(0, 0, kPort, 1000, 4), kOk);
    EXPECT_EQ(count_passed(kPort, station(kNeighbour)), 4);
    now_ += 2ms;
    EXPECT_EQ(count_passed(kPort, kBroadcast), 2);
    EXPECT_EQ(count_passed(kOther, kBroadcast), kAll);
    EXPECT_EQ(driver_.user_port_ingress_rate_set(0, 0, kPort, 0, 0), kOk);
    EXPECT_EQ(count_passed(kPort, kBroadcast), kAll);
}

TEST_F(DriverLimits, RefusesWhatHasNoMeaning) {
    uint32_t word = kUntouched;
    uint32_t other = kUntouched;
    for (const uint32_t type : {0U, 5U, 8U, 257U}) {
        EXPECT_EQ(driver_.user_rate_bandwidth_set(0, 0, kPort, type, 1, 1), kStormType);
        EXPECT_EQ(driver_.user_rate_bandwidth_get(0, 0, kPort, type, &word, &other), kStormType);
        EXPECT_EQ(driver_.user_rate_stormsel_set(0, 0, kPort, type, 1), kStormType);
        EXPECT_EQ(driver_.user_rate_stormsel_get(0, 0, kPort, type, &word), kStormType);
    }
    EXPECT_EQ(driver_.user_rate_stormControlEnable_set(0, 0, kPort, 5, 1), kStormType);
    for (const uint32_t code : {0U, 3U, 5U, 16U, 257U}) {
        EXPECT_EQ(driver_.user_rate_stormExceedFlag_get(0, 0, kPort, code, &word), kStormType);
    }
    for (const uint32_t selector : {3U, 16U, 255U}) {
        EXPECT_EQ(driver_.user_rate_stormCountMode_set(0, 0, selector, kFrames), kStormType);
        EXPECT_EQ(driver_.user_rate_stormCountMode_get(0, 0, selector, &word), kStormType);
    }
    EXPECT_EQ(driver_.user_rate_stormCountMode_set(0, 0, 1, 2), kBadArgument);
    EXPECT_EQ(driver_.user_rate_stormsel_set(0, 0, kPort, 1, 2), kBadArgument);
    constexpr Limit kTooMuch[] = {{100'000'001, 1}, {1, 1'000'001}, {0xFFFFFFFF, 0xFFFFFFFF}};
    for (const Limit &limit : kTooMuch) {
        EXPECT_EQ(driver_.user_rate_bandwidth_set(0, 0, kPort, 3, limit.rate, limit.burst), kBadArgument);
        EXPECT_EQ(driver_.user_port_ingress_rate_set(0, 0, kPort, limit.rate, limit.burst), kBadArgument);
    }
    EXPECT_EQ(word, kUntouched);
    EXPECT_EQ(storm_limit(3), (Limit{0, 0}));
    EXPECT_EQ(ingress_limit(), (Limit{0, 0}));
}

}  // namespace rates_test
}  // namespace vdevice::driver
