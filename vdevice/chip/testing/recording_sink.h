// For tests: a sink that keeps what left the chip and which ports changed.
#pragma once

#include <stdint.h>
#include <utility>
#include <vector>

#include "vdevice/chip/pipeline/sink.h"

namespace vdevice::chip::test {

using Octets = std::vector<uint8_t>;
using Sent = std::pair<int, Octets>;

class RecordingSink final : public Sink {
  public:
    void transmit(int port, const Frame &frame) override {
        Octets octets(frame.size());
        frame.copy_to(octets.data());
        sent_.emplace_back(port, std::move(octets));
    }

    void port_changed(int port) override { changes_.push_back(port); }
    /** The ports that changed since the last call, in order. */
    std::vector<int> take_changes() { return std::exchange(changes_, {}); }

    void departure_changed() override { ++departures_; }
    /** How often the next departure changed since the last call. */
    int take_departures() { return std::exchange(departures_, 0); }

    /** What left since the last call, in order. */
    std::vector<Sent> take() { return std::exchange(sent_, {}); }

  private:
    std::vector<Sent> sent_;
    std::vector<int> changes_;
    int departures_ = 0;
};

}  // namespace vdevice::chip::test
