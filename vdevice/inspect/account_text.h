// The account of a frame's way for people, made of its JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace vdevice::inspect {

/** All steps, one a line, and the ports. */
std::string account_text(const nlohmann::json &account);
/** The frame and what became of it, on one line. */
std::string account_line(const nlohmann::json &account);

}  // namespace vdevice::inspect
