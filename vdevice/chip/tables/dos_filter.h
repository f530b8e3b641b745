// Frames that no honest host sends: the classic denial-of-service and port-scan patterns.
#pragma once

#include <optional>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/tables/port.h"

namespace vdevice::chip {

/** The reason to drop the frame, or nothing. At most one VLAN tag is skipped. */
std::optional<Drop> find_attack(const Header &header);

}  // namespace vdevice::chip
