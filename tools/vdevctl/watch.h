// Prints what the device tells, line after line.
#pragma once

#include <chrono>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace vdevctl {

struct WatchLimits {
    std::optional<uint64_t> count;                 /**< lines */
    std::optional<std::chrono::milliseconds> time; /**< from the moment at which the device begins */
};

/** Ends at a limit; throws a std::runtime_error if the device refuses, or ends before. */
void watch(const std::string &run_dir, const nlohmann::json &request, const WatchLimits &limits);

}  // namespace vdevctl
