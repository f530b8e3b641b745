// The lines that a device sends to a client until it leaves.
#pragma once

#include <chrono>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "vdevice/sockets/unique_fd.h"

namespace vdevctl {

class Lines {
  public:
    using Clock = std::chrono::steady_clock;

    /** Waits until the device begins; throws a std::runtime_error if it refuses, or is not there. */
    Lines(const std::string &run_dir, const nlohmann::json &request);

    /** What the device said as it began. */
    const nlohmann::json &first() const { return first_; }
    /**
     * The next line, or nothing at the end of the time, or when the descriptor becomes readable. Throws a
     * std::runtime_error if the device ends.
     */
    std::optional<nlohmann::json> next(const std::optional<Clock::time_point> &end, int ending = -1);
    /** Whether a whole line is here already. */
    bool has_next() const { return received_.find('\n') != std::string::npos; }

  private:
    bool receive(const std::optional<Clock::time_point> &end, int ending);

    vdevice::UniqueFd fd_;
    std::string received_;
    nlohmann::json first_;
};

}  // namespace vdevctl
