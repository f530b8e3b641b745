// For tests: a chip of which one can see by which egress queues its ports send.
#pragma once

#include <array>
#include <utility>

#include "vdevice/chip/testing/field_fixture.h"

namespace vdevice::chip::test {

using Queues = std::array<uint64_t, kQueues>;

/** One frame by this queue, and none by another one. */
inline Queues one_in(uint32_t queue) {
    Queues queues{};
    queues[queue] = 1;
    return queues;
}

/** A tag that gives a priority and no VLAN. */
inline Octets priority_tag(uint32_t priority) {
    return vlan_tag(static_cast<uint16_t>(priority << kPcpShift));
}

class PriorityTest : public FieldRulesTest {
  protected:
    static Octets tagged(uint32_t priority, const Octets &rest = kPayload) {
        return kAddresses + priority_tag(priority) + rest;
    }

    /** How many frames each of the port's queues has sent since the last call. */
    Queues sent(int port) {
        Queues &before = before_[static_cast<size_t>(port)];
        Queues difference;
        for (size_t queue = 0; queue < kQueues; ++queue) {
            const uint64_t now = chip_.queues().port(port).counters(queue).frames;
            difference[queue] = now - std::exchange(before[queue], now);
        }
        return difference;
    }

    /** By which of B's queues the frame leaves that comes in on the port. */
    Queues queues_of(const Octets &frame, int port = kA) {
        send(port, frame);
        return sent(kB);
    }

  private:
    std::array<Queues, Switch::kPorts> before_{};
};

}  // namespace vdevice::chip::test
