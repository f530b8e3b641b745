// Placeholder until the command is there.
#include "tools/adptrace/command.h"

namespace adptrace {

extern const Command kReduce = {"reduce", "", "", "", [](std::span<const std::string> /*arguments*/) -> int {
                                    throw Refusal("reduce is not there yet.");
                                }};

}  // namespace adptrace
