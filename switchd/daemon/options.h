// The command line of adp-switchd.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vdevice/process/log_level.h"

namespace switchd {

inline constexpr char kDefaultFile[] = "/etc/adp/switchd.toml";
inline constexpr char kRunDirVariable[] = "ADP_SWITCHD_DIR";

struct Options {
    std::string file; /**< of the configuration; "" if there is none to read */
    std::optional<std::string> run_dir;
    std::optional<vdevice::LogLevel> log_level;
    bool check = false;
    bool json = false;
    std::vector<std::string> words; /**< a command for a running daemon, and its arguments; none to be the daemon */
};

/** Exits with a message if they are wrong, or with the help or the version. */
Options parse_options(int argc, char **argv);

/** Where a folder is named neither on the command line nor in the file. */
std::string default_run_dir();

}  // namespace switchd
