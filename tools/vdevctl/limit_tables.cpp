#include "tools/vdevctl/limit_tables.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <vector>

#include "tools/vdevctl/port_text.h"

namespace vdevice {
namespace {

using nlohmann::json;

/** "500 of 3084"; "-" where there is no bucket. */
std::string level_text(const json &row) {
    return row.contains("level") ? fmt::format("{} of {}", row["level"].get<int64_t>(), row["depth"].get<uint64_t>())
                                 : "-";
}

std::string rate_text(const json &row) {
    const auto rate = row["rate"].get<uint32_t>();
    return rate == 0 ? "none" : fmt::format("{} {}", rate, row["counts"] == "frames" ? "frames/s" : "kbit/s");
}

/** What is out of the ordinary. */
std::string limit_state(const json &row) {
    std::vector<std::string> words;
    if (!row["enabled"].get<bool>()) {
        words.emplace_back("off");
    }
    if (!row["in_joint"].get<bool>()) {
        words.emplace_back("not in joint");
    }
    if (row["exceeded"].get<bool>()) {
        words.emplace_back("exceeded");
    }
    return fmt::format("{}", fmt::join(words, ", "));
}

std::string limit_row(const json &row, const std::string &type, const std::string &state) {
    return fmt::format("{:>4}  {:<15} {:>18} {:>20} {:>12} {:>12}  {}\n", port_name(row["port"].get<int>()), type,
                       rate_text(row), level_text(row), row["passed"].get<uint64_t>(), row["dropped"].get<uint64_t>(),
                       state);
}

}  // namespace

std::string show_storm(const json &answer) {
    std::string text = fmt::format("{:>4}  {:<15} {:>18} {:>20} {:>12} {:>12}  {}\n", "PORT", "TYPE", "RATE", "LEVEL",
                                   "PASSED", "DROPPED", "STATE");
    for (const json &row : answer["storm"]) {
        text += limit_row(row, row["type"].get<std::string>(), limit_state(row));
    }
    for (const json &row : answer["ingress"]) {
        text += limit_row(row, "ingress", "");
    }
    std::vector<std::string> modes;
    for (const auto &[type, mode] : answer["counting"].items()) {
        modes.push_back(fmt::format("{} {}", type, mode.get<std::string>()));
    }
    return text + fmt::format("counted: {}\n", fmt::join(modes, ", "));
}

}  // namespace vdevice
