// A state as vdevctl has printed it: the content of a file, which is anybody's.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace vdevctl {

/** The command, and the member that says in which form its answer is. */
constexpr const char *kState = "state";

/** Throws a sentence with the file's name if the content is no state. A state is not deep. */
nlohmann::json state_in(std::string_view content, const std::string &file);

}  // namespace vdevctl
