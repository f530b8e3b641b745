// The client in the program: asks a running adp-switchd and prints its answer.
#pragma once

#include <string>
#include <vector>

namespace switchd {

/**
 * @p words are a command and its arguments. Gives what is to be printed; throws a std::runtime_error with a sentence if
 * there is no answer, or it is a refusal.
 */
std::string ask(const std::string &run_dir, const std::vector<std::string> &words, bool as_json);

}  // namespace switchd
