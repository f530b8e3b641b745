// Placeholder until the command is there.
#include "tools/adptrace/command.h"

namespace adptrace {

extern const Command kShow = {"show", "", "", "", [](std::span<const std::string> /*arguments*/) -> int {
                                  throw Refusal("show is not there yet.");
                              }};
extern const Command kStat = {"stat", "", "", "", [](std::span<const std::string> /*arguments*/) -> int {
                                  throw Refusal("stat is not there yet.");
                              }};

}  // namespace adptrace
