// One request to a running device, and its answer.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace vdevice {

/** Sends the request and gives the answer; throws a std::runtime_error with a sentence if there is none. */
nlohmann::json ask_device(const std::string &run_dir, const nlohmann::json &request);

}  // namespace vdevice
