// Tables of words and numbers out of JSON.
#pragma once

#include <initializer_list>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace switchd::table_text {

/** A value as a word or two on one line: "-" for nothing, "yes" or "no", lists with blanks between their values. */
std::string word_of(const nlohmann::json &value);
/** The member's word; "-" if the object has none. */
std::string word_in(const nlohmann::json &object, const char *key);
/** The objects in a member that is a list; none if it is something else. */
std::vector<nlohmann::json> rows_in(const nlohmann::json &object, const char *key);

using Row = std::vector<std::string>;
/** Columns as wide as they must be. Nothing without rows. */
std::string table(const Row &heads, const std::vector<Row> &rows);

}  // namespace switchd::table_text
