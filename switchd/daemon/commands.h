// What a running adp-switchd can be asked: the list for its client, its control socket and its help.
#pragma once

#include <stddef.h>
#include <string>
#include <string_view>
#include <vector>

namespace switchd {

struct Command {
    const char *name;
    const char *arguments; /**< as the help shows them */
    size_t least;          /**< arguments */
    size_t most;
    const char *help;
};

inline constexpr Command kCommands[] = {
    {"status", "[SUBJECT]", 0, 1, "everything, or one of the subjects below"},
    {"statistics", "[PORT]", 0, 1, "the hardware's counters"},
    {"add", "PORT.VLAN", 1, 1, "makes an interface for frames with a tag"},
    {"remove", "PORT.VLAN", 1, 1, "removes it"},
    {"authorize", "PORT [MAC]", 1, 2, "802.1X: opens a port, or lets a station in"},
    {"unauthorize", "PORT [MAC]", 1, 2, "802.1X: closes it, or shuts the station out"},
    {"resync", "", 0, 0, "reads the kernel and the switch again"},
};

/** Gives the command; throws a vdevice::io::Error with a sentence if there is none, or not with so many arguments. */
const Command &command_of(std::string_view name, size_t arguments);

/** A line for each, for the help; short enough for a terminal. */
std::string command_lines();

}  // namespace switchd
