// The arguments that stand for files of this machine, which the device does not see.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace vdevctl {

/**
 * Takes the first word that is neither an option nor an option's value out of the request's arguments, or "" if there
 * is none. The device is asked which options have a value.
 */
std::string take_operand(const std::string &run_dir, nlohmann::json &request);

/** The request with the frame that its word gives; without a word the frame is read from standard input. */
nlohmann::json with_frame(const std::string &run_dir, nlohmann::json request);

}  // namespace vdevctl
