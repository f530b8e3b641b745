// Rules of the field processor as JSON.
#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>

#include "vdevice/chip/fields/field_table.h"

namespace vdevice::state {

/** Names the ports of a set. */
using PortNames = std::function<nlohmann::json(const chip::PortSet &)>;

nlohmann::json qualifier_json(const chip::Qualifier &qualifier, const PortNames &names);
nlohmann::json action_json(const chip::Action &action, const PortNames &names);
const char *word(chip::EntryPart part);

}  // namespace vdevice::state
