// Placeholder until the command is there.
#include "tools/adptrace/command.h"

namespace adptrace {

extern const Command kDiff = {"diff", "", "", "", [](std::span<const std::string> /*arguments*/) -> int {
                                  throw Refusal("diff is not there yet.");
                              }};

}  // namespace adptrace
