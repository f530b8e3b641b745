// The way to a running device: one request, one answer.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace vdevice {

/** Sends the request and gives the answer; throws a std::runtime_error with a sentence if there is none. */
nlohmann::json ask_device(const std::string &run_dir, const nlohmann::json &request);

}  // namespace vdevice
