// The command line of vdevctl.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "tools/vdevctl/stream.h"
#include "vdevice/sockets/run_dir.h"

namespace vdevctl {

using Words = std::vector<std::string>;

struct Options {
    std::string run_dir = vdevice::default_run_dir();
    bool json = false;
    bool help = false;
    bool version = false;
    std::optional<std::chrono::milliseconds> rate; /**< the time between two readings */
    std::string since;                             /**< the file of an earlier reading */
    std::optional<std::string> diff;               /**< the file of an earlier state */
    StreamLimits limits;                           /**< of commands without an end */
    Words words;                                   /**< the command, its arguments and options */
};

/** Exits with a message if they are wrong. The text of --help, without the device's commands, is printed already. */
Options parse_options(int argc, char **argv);

extern const char *const kVersion;

}  // namespace vdevctl
