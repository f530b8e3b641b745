// Arguments and options of a request that come as words.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {

/**
 * The request with each word of "arguments" as a member of its own, named as the subject names it: "[PIN LEVEL]" gives
 * "pin" and "level", and "--vlan", "10" the member "vlan". A word that is a number becomes one. Throws a Refusal if
 * there are too many words or too few, or an option that the subject does not have.
 */
nlohmann::json with_named_arguments(nlohmann::json request, const Subject &subject);

}  // namespace vdevice::inspect
