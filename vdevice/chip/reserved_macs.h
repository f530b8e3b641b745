// The table of reserved addresses: frames to one of them go to the CPU and nowhere else.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "vdevice/chip/frame.h"
#include "vdevice/chip/status.h"

namespace vdevice::chip {

class ReservedMacs {
  public:
    static constexpr std::size_t kEntries = 64;
    static constexpr Mac kFree{};

    /**
     * At power-on the table holds addresses that bridges do not pass on beside 01:80:c2:00:00:00 to 0f: bridge
     * management, and the first of those set aside for registration protocols, MMRP and MVRP among them.
     */
    ReservedMacs() {
        constexpr std::uint64_t kBridgeManagement = 0x0180C2000010;
        constexpr std::uint64_t kFirstRegistration = 0x0180C2000020;
        constexpr std::size_t kRegistrations = 9;
        macs_[0] = Mac{kBridgeManagement};
        for (std::size_t i = 0; i < kRegistrations; ++i) {
            macs_[i + 1] = Mac{kFirstRegistration + i};
        }
    }

    /** Nothing if the table has no such entry. */
    std::optional<Mac> get(std::uint32_t index) const {
        return index < kEntries ? std::optional{macs_[index]} : std::nullopt;
    }

    /** An address may stand in several entries; kFree empties one. */
    Status set(std::uint32_t index, Mac mac) {
        if (index >= kEntries) {
            return Status::kReservedIndex;
        }
        macs_[index] = mac;
        return Status::kOk;
    }

    bool has(Mac mac) const { return !(mac == kFree) && std::find(macs_.begin(), macs_.end(), mac) != macs_.end(); }

  private:
    std::array<Mac, kEntries> macs_{};
};

}  // namespace vdevice::chip
