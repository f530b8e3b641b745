// The table of reserved addresses: frames to one of them go to the CPU and nowhere else.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <algorithm>
#include <array>
#include <optional>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/status.h"

namespace vdevice::chip {

class ReservedMacs {
  public:
    static constexpr size_t kEntries = 64;
    static constexpr Mac kFree{};

    /**
     * At power-on the table holds addresses that bridges do not pass on beside 01:80:c2:00:00:00 to 0f: bridge
     * management, and the first of those set aside for registration protocols, MMRP and MVRP among them.
     */
    ReservedMacs() {
        constexpr uint64_t kBridgeManagement = 0x0180C2000010;
        constexpr uint64_t kFirstRegistration = 0x0180C2000020;
        constexpr size_t kRegistrations = 9;
        macs_[0] = Mac{kBridgeManagement};
        for (size_t i = 0; i < kRegistrations; ++i) {
            macs_[i + 1] = Mac{kFirstRegistration + i};
        }
        update_range();
    }

    /** Nothing if the table has no such entry. */
    std::optional<Mac> get(uint32_t index) const {
        return index < kEntries ? std::optional{macs_[index]} : std::nullopt;
    }

    /** An address may stand in several entries; kFree empties one. */
    Status set(uint32_t index, Mac mac) {
        if (index >= kEntries) {
            return Status::kReservedIndex;
        }
        macs_[index] = mac;
        update_range();
        return Status::kOk;
    }

    bool has(Mac mac) const {
        // Most destinations are outside the range of all entries.
        return !(mac < lowest_) && !(highest_ < mac) && std::find(macs_.begin(), macs_.end(), mac) != macs_.end();
    }

  private:
    /** Free entries do not count, so that no frame matches them. */
    void update_range() {
        lowest_ = Mac{~uint64_t{0}};
        highest_ = kFree;
        for (const Mac mac : macs_) {
            if (!(mac == kFree)) {
                lowest_ = std::min(lowest_, mac);
                highest_ = std::max(highest_, mac);
            }
        }
    }

    std::array<Mac, kEntries> macs_{};
    Mac lowest_;
    Mac highest_;
};

}  // namespace vdevice::chip
