// Commands: what is missing, too much or unknown is told.
#include "switchd/daemon/commands.h"

#include <gtest/gtest.h>

#include "vdevice/io/error.h"

namespace switchd {
namespace commands_test {

std::string refusal(std::string_view name, size_t arguments) {
    try {
        return std::string{"taken: "} + command_of(name, arguments).name;
    } catch (const vdevice::io::Error &error) {
        return error.what();
    }
}

TEST(Commands, AreTakenWithTheirArguments) {
    EXPECT_EQ(refusal("status", 0), "taken: status");
    EXPECT_EQ(refusal("authorize", 2), "taken: authorize");
    EXPECT_EQ(refusal("authorize", 0), "an argument is missing: 'adp-switchd authorize PORT [MAC]'.");
    EXPECT_EQ(refusal("resync", 1), "too many arguments: 'adp-switchd resync'.");
}

TEST(Commands, AreSuggestedForMistypedOnes) {
    EXPECT_EQ(refusal("staus", 0), "unknown command 'staus', did you mean 'status'?");
    EXPECT_EQ(refusal("xyzzy", 0), "unknown command 'xyzzy'; 'adp-switchd --help' lists them.");
    EXPECT_EQ(refusal("\x1b[2J", 0), "unknown command '\\x1b[2J'; 'adp-switchd --help' lists them.");
    EXPECT_LT(refusal(std::string(100000, 'x'), 0).size(), 100U);
}

TEST(Commands, StandInTheHelpEach) {
    const std::string lines = command_lines();
    for (const Command &command : kCommands) {
        EXPECT_NE(lines.find(std::string{"    "} + command.name), std::string::npos) << command.name;
    }
}

}  // namespace commands_test
}  // namespace switchd
