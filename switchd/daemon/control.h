// Answers to requests on the control socket: {"command": "add", "arguments": ["swp3.100"]}.
#pragma once

#include <functional>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace switchd {

using Arguments = std::vector<std::string>;

/**
 * By the names of kCommands. A handler gives a JSON object; {"text": "swp5 is open."} is what a command says that
 * changes something. It throws a std::runtime_error with a sentence if it refuses.
 */
using Handlers = std::map<std::string, std::function<nlohmann::json(const Arguments &)>>;

/** The handler's answer, or {"error": sentence}; for vdevice::ControlServer. */
nlohmann::json answer(const Handlers &handlers, const nlohmann::json &request);

}  // namespace switchd
