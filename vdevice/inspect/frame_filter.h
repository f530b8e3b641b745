// Which frames a client wants to follow.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "vdevice/chip/account/account.h"
#include "vdevice/chip/pipeline/passage.h"
#include "vdevice/device/device.h"
#include "vdevice/inspect/filter.h"

namespace vdevice::inspect {

// The options that a request may have for it.
constexpr Filter kFramePort{
    "port", kPortList, "frames that come in or leave by these ports: 3 or 1-4,7 or cpu", FilterKind::kOwn, {}};
constexpr Filter kFrameVlan{"vlan", "VLANS", "frames in these VLANs: 10 or 1-99,200", FilterKind::kOwn, {}};
constexpr Filter kFrameMac{"mac", "ADDRESS", "frames from or to the address", FilterKind::kOwn, {}};
constexpr Filter kFrameType{"type", "TYPE", "frames of the type: 0x0806", FilterKind::kOwn, {}};
constexpr Filter kFrameDropped{
    "dropped", "", "frames that are dropped, or of which a copy is lost", FilterKind::kOwn, {}};
constexpr Filter kFrameReason{
    "reason", "WORD", "frames that are dropped, or of which a copy is lost, for this", FilterKind::kOwn, {}};

class FrameFilter {
  public:
    /** All frames without options. Throws a Refusal for a value of no meaning. */
    FrameFilter(const Device &device, const nlohmann::json &request);

    /** Whether all options fit the frame, with what has become of its copies so far. */
    bool fits(const chip::Passage &frame, const std::vector<chip::Copy> &copies) const;

  private:
    bool fits_port(const chip::Passage &frame) const;
    bool fits_reason(const chip::Passage &frame, const std::vector<chip::Copy> &copies) const;

    const chip::Tables *tables_;
    std::optional<chip::PortSet> ports_; /**< the frame came in or was to leave there */
    std::vector<bool> vids_;             /**< empty: all */
    std::optional<chip::Mac> mac_;       /**< of either end */
    std::optional<uint16_t> type_;
    bool dropped_ = false;
    std::string reason_; /**< "" for any */
};

}  // namespace vdevice::inspect
