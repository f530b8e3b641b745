// For tests: a chip of which the CPU port and three others have a link.
#pragma once

#include <gtest/gtest.h>

#include "vdevice/chip/switch.h"
#include "vdevice/chip/testing/frame_builder.h"

namespace vdevice::chip::test {

constexpr int kA = 4;
constexpr int kB = 5;
constexpr int kC = 29;
constexpr int kCpu = Switch::kCpuPort;

class ChipTest : public testing::Test {
  protected:
    ChipTest() {
        for (const int port : {kCpu, kA, kB, kC}) {
            EXPECT_EQ(chip_.set_link(port, true), Status::kOk);
        }
        sink_.take_changes();
    }

    std::vector<Sent> send(int port, const Octets &frame, Time now = std::chrono::seconds{1}) {
        chip_.receive(now, port, frame);
        return sink_.take();
    }

    template <typename Change>
    Status change(int port, Change change) {
        return chip_.change_port(port, [&](Port &state) {
            change(state);
            return Status::kOk;
        });
    }

    uint64_t dropped(int port, Drop reason) const { return chip_.port(port).counters.dropped(reason); }

    RecordingSink sink_;
    Switch chip_{sink_};
};

}  // namespace vdevice::chip::test
