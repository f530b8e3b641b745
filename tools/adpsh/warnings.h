/**
 * @file warnings.h
 * What the library accepts in silence and hardly anybody means.
 */
#pragma once

#include "tools/adpsh/execute.h"

#include <string>
#include <vector>

namespace adpsh {

/** About a call that was made. The one about the empty port map is given once in a process. */
std::vector<std::string> warnings_of(const Outcome &outcome);

}  // namespace adpsh
