// For tests: a cable with a port at each end. Needs a network namespace of its own; the test run makes it.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "vdevice/chip/testing/frame_builder.h"
#include "vdevice/io/interfaces.h"
#include "vdevice/io/packet_port.h"

namespace vdevice::io::test {

using chip::test::Octets;
using Frames = std::vector<Octets>;
using chip::test::octets16;
using chip::test::octets32;
using chip::test::operator+;

constexpr uint32_t kMark = 77;
constexpr char kNear[] = "near0";
constexpr char kFar[] = "far0";
constexpr size_t kNoRing = 0;
constexpr size_t kSmallRing = ReceiveRing::kSlotsInBlock;
constexpr int kPatience = 2000;  // milliseconds, far longer than a frame takes
constexpr uint16_t kType = 0x88B5;

/** A cable; its near end is a port with a ring of so many slots. */
class CableTest : public testing::TestWithParam<size_t> {
  protected:
    CableTest() {
        for (const char *name : {kNear, kFar}) {
            make_transparent(name);
            set_interface_up(name, true);
        }
        near_.open();
        far_.open();
        expect_link();
        EXPECT_EQ(near_.has_ring(), GetParam() != kNoRing);
    }

    static Octets frame(uint32_t number, size_t octets = 64, const Octets &tags = {}) {
        Octets made = chip::test::station(1) + chip::test::station(2) + tags + octets16(kType) + octets32(number);
        made.resize(std::max(made.size(), octets), static_cast<uint8_t>(number));
        return made;
    }
    void send(const Octets &frame) { send_by(far_, frame); }
    static void send_by(PacketPort &port, const Octets &frame) {
        port.queue(chip::split_frame(frame));
        port.flush();
    }
    static bool is_readable(const PacketPort &port, int patience) {
        pollfd asked{port.fd(), POLLIN, 0};
        return poll(&asked, 1, patience) == 1;
    }
    /** The frames of one call of receive(). */
    Frames receive() {
        Frames frames;
        near_.receive(batch_, [&](chip::Bytes frame, WallTime arrival) {
            frames.emplace_back(frame.begin(), frame.end());
            arrivals_.push_back(arrival);
        });
        return frames;
    }
    /** So many frames, or fewer if no more come. */
    Frames receive(size_t count) {
        Frames frames;
        while (frames.size() < count && is_readable(near_, kPatience)) {
            for (Octets &frame : receive()) {
                frames.push_back(std::move(frame));
            }
        }
        return frames;
    }
    void expect_passes(const Octets &frame) {
        send(frame);
        EXPECT_EQ(receive(1), Frames{frame}) << frame.size();
    }

    /** Waits until frames pass: the kernel needs a while after an interface was raised. */
    void expect_link() {
        constexpr int kTries = 3000;
        constexpr int kPause = 20;  // milliseconds
        int tries = 0;
        do {
            send(frame(0));
        } while (!is_readable(near_, kPause) && ++tries < kTries);
        EXPECT_LT(tries, kTries);
        receive();
    }

    Cables cables_{{{kNear, kFar}}, kMark};
    PacketPort near_{kNear, GetParam()};
    PacketPort far_{kFar, kNoRing};
    ReceiveBatch batch_;
    std::vector<WallTime> arrivals_; /**< of all frames */
};

}  // namespace vdevice::io::test
