// Answers of a device, fit to be printed.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace vdevctl {

/** The member "text", without anything that a terminal would obey; throws a std::runtime_error if there is none. */
std::string text_of(const nlohmann::json &answer);
/** JSON in lines, or in one, in ASCII: what a terminal obeys is written as a number. */
std::string json_text(const nlohmann::json &answer);
std::string compact_json_text(const nlohmann::json &answer);

}  // namespace vdevctl
