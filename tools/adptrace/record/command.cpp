// Placeholder until the command is there.
#include "tools/adptrace/command.h"

namespace adptrace {

extern const Command kRecord = {"record", "", "", "", [](std::span<const std::string> /*arguments*/) -> int {
                                    throw Refusal("record is not there yet.");
                                }};

}  // namespace adptrace
