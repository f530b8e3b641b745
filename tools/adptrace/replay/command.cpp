// Placeholder until the command is there.
#include "tools/adptrace/command.h"

namespace adptrace {

extern const Command kReplay = {"replay", "", "", "", [](std::span<const std::string> /*arguments*/) -> int {
                                    throw Refusal("replay is not there yet.");
                                }};

}  // namespace adptrace
