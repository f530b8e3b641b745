// Answers of a running daemon as text for people. docs/reference/switchd.md has their JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace switchd {

/** "state, bridges, ...". */
std::string subject_names();
/** Throws a vdevice::io::Error with a sentence if the word behind "status", if there is one, is none of its subjects.
 */
void check_subject(const std::vector<std::string> &words);
/** A subject's part of a status; throws as above. */
nlohmann::json subject_of(const nlohmann::json &status, const std::string &subject);

/** Whatever is missing or of another kind than expected is left out: the daemon may be of another version. */
std::string text_of_answer(const nlohmann::json &answer);

}  // namespace switchd
