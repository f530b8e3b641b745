// The command line of vdeviced.
#pragma once

#include <string>

#include "vdevice/daemon/configuration.h"

namespace vdevice {

struct Options {
    Settings settings;
    std::string file; /**< of the configuration; "" for none */
    bool check = false;
};

/** Exits with a message if they are wrong, or with the help. */
Options parse_options(int argc, char **argv);

}  // namespace vdevice
