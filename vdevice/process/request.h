// A request to the control socket.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace vdevice {

/** Nothing, with a sentence in @p problem, if the line is no request. */
nlohmann::json request_in(const std::string &line, const char *&problem);

}  // namespace vdevice
