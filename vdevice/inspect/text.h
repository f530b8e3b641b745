// Pieces of text that several subjects need.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace vdevice::inspect {

std::string joined(const std::vector<std::string> &parts, const char *separator);
/** A list of numbers with blanks between them. */
std::string numbers(const nlohmann::json &list);
std::string on_or_off(const nlohmann::json &value);
/** How many rows a table of the answer had before it was filtered. */
size_t all_rows(const nlohmann::json &answer, const char *table);
/** The text of a subject that has nothing to show. */
std::string show_nothing(const nlohmann::json &answer);

}  // namespace vdevice::inspect
