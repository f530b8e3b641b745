// Options of vdeviced.
#include "vdevice/daemon/options.h"

#include <argp.h>

#include <charconv>
#include <cstdlib>
#include <string_view>

#include "vdevice/inspect/subject.h"
#include "vdevice/sockets/run_dir.h"

namespace vdevice {
namespace {

enum Key : int {
    kRunDir = 1,
    kCreateInterfaces,
    kUserPorts,
    kFirstPort,
    kPortInterfaces,
    kRingSlots,
    kLineRate,
    kConfig,
    kCheck,
    kLogLevel
};

const argp_option kOptions[] = {
    {"run-dir", kRunDir, "DIR", 0, kRunDirHelp, 0},
    {"create-interfaces", kCreateInterfaces, nullptr, 0,
     "make the interface pairs cpu0/eth0, port1/host1, ... and remove them at the end", 0},
    {"user-ports", kUserPorts, "N", 0, "number of user ports, 26 by default", 0},
    {"first-port", kFirstPort, "P", 0, "chip port of user port 1, 4 by default", 0},
    {"port-interfaces", kPortInterfaces, "NAME", 0,
     "the user ports are the interfaces NAME1, NAME2, ..., each from the moment that it is there", 0},
    {"ring-slots", kRingSlots, "N", 0,
     "slots of each port's receive ring, a multiple of 16, 2048 by default: 2 KiB each, "
     "108 MiB for the rings of 26 user ports and the CPU port",
     0},
    {"line-rate", kLineRate, nullptr, 0,
     "user ports send no faster than their speed; by default as fast as the machine can", 0},
    {"config", kConfig, "FILE", 0, "configuration file, read again on SIGHUP; the other options win over it", 0},
    {"check", kCheck, nullptr, 0, "check the configuration file and end", 0},
    {"log-level", kLogLevel, "LEVEL", 0, "error, warning, notice or info; by default info in the journal, else warning",
     0},
    {}};

template <typename Number>
Number read_number(const argp_state *state, std::string_view text) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) {
        argp_error(state, "'%s' is not a number", std::string{text}.c_str());
    }
    return number;
}

LogLevel read_level(const argp_state *state, const char *text) {
    const auto level = log_level_named(text);
    if (!level) {
        argp_error(state, "the log level is %s, not '%s'", kLogLevelHelp, text);
    }
    return level.value_or(LogLevel::kInfo);
}

error_t take_setting(int key, char *argument, const argp_state *state, Settings &settings) {
    switch (key) {
        case kRunDir:
            settings.run_dir = argument;
            return 0;
        case kCreateInterfaces:
            settings.create_interfaces = true;
            return 0;
        case kUserPorts:
            settings.user_ports = read_number<int>(state, argument);
            return 0;
        case kFirstPort:
            settings.first_port = read_number<int>(state, argument);
            return 0;
        case kPortInterfaces:
            settings.port_interfaces = argument;
            return 0;
        case kRingSlots:
            settings.ring_slots = read_number<uint32_t>(state, argument);
            return 0;
        case kLineRate:
            settings.line_rate = true;
            return 0;
        case kLogLevel:
            settings.log_level = read_level(state, argument);
            return 0;
        default:
            return ARGP_ERR_UNKNOWN;
    }
}

error_t take_option(int key, char *argument, argp_state *state) {
    auto &options = *static_cast<Options *>(state->input);
    switch (key) {
        case kConfig:
            options.file = argument;
            return 0;
        case kCheck:
            options.check = true;
            return 0;
        case ARGP_KEY_END:
            if (options.check && options.file.empty()) {
                argp_error(state, "--check needs the file: --config FILE");
            }
            return 0;
        default:
            return take_setting(key, argument, state, options.settings);
    }
}

}  // namespace

Options parse_options(int argc, char **argv) {
    const std::string version = std::string{"vdeviced "} + inspect::kVersionText;
    argp_program_version = version.c_str();
    const argp parser = {
        kOptions,
        take_option,
        nullptr,
        "vdeviced: a virtual switch device. Its user ports are the network interfaces port1, port2, ..., "
        "its CPU port is cpu0, and programs reach its driver through a socket in the run folder.",
        nullptr,
        nullptr,
        nullptr};
    Options options;
    if (argp_parse(&parser, argc, argv, 0, nullptr, &options) != 0) {
        exit(EXIT_FAILURE);
    }
    return options;
}

}  // namespace vdevice
