// The commands that have no end: what the device tells is printed, or captured, line after line.
#pragma once

#include <chrono>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace vdevctl {

struct StreamLimits {
    std::optional<uint64_t> count;                 /**< lines, or frames */
    std::optional<std::chrono::milliseconds> time; /**< from the moment at which the device begins */
};

/** Ends at a limit; throws a std::runtime_error if the device refuses, or ends before. */
void print_stream(const std::string &run_dir, const nlohmann::json &request, const StreamLimits &limits);

/**
 * Writes the frames into the file, or to standard output for "-". Ends at a limit or an interrupt, and says on standard
 * error how many there were; throws as print_stream(), or if the file cannot be written.
 */
void capture(const std::string &run_dir, const nlohmann::json &request, const StreamLimits &limits,
             const std::string &file);

}  // namespace vdevctl
