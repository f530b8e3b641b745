/**
 * @file options.h
 * The command line of `replay`.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace adptrace::replay {

struct CommandLine {
    std::string file;
    std::string library;
    std::vector<std::string> drivers;
    bool is_driver_recorded = false;
    bool is_driver_only = false;
    bool is_to_keep_going = false;
    bool is_to_crash = false;
    bool is_to_send_frames = false;
    std::optional<uint64_t> process;
    std::optional<uint64_t> until_line;
    std::optional<uint64_t> until_call;
};

/** Throws a Refusal. */
CommandLine command_line_of(std::span<const std::string> words);

extern const char *const kHelp;

}  // namespace adptrace::replay
