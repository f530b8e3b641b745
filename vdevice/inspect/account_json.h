// The account of a frame's way as JSON. Ports are user ports, 0 is the CPU's.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "vdevice/chip/account/account.h"
#include "vdevice/driver/board.h"

namespace vdevice::inspect {

nlohmann::json to_json(const chip::Account &account, const driver::Board &board);

}  // namespace vdevice::inspect
