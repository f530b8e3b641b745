// Storm limits and ingress limits.
#include "vdevice/chip/rates/storm_control.h"

#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"
#include "vdevice/state/words.h"

namespace vdevice::inspect {
namespace {

using chip::Limiter;
using chip::PortStorm;
using chip::StormType;
using chip::StormTypeEntry;
using nlohmann::json;

void add_limiter(json &row, const Limiter &limiter, chip::Time now) {
    row["rate"] = limiter.limit().rate;
    row["burst"] = limiter.limit().depth;
    row["counts"] = state::word(limiter.counting());
    row["passed"] = limiter.passed();
    row["dropped"] = limiter.dropped();
    if (const auto bucket = limiter.bucket_at(now)) {
        row["depth"] = bucket->depth();
        row["level"] = bucket->level();
    }
}

/** Differs from the power-on setting. */
bool is_changed(const PortStorm &storm, StormType type) {
    const PortStorm::Kind &kind = storm.of(type);
    return kind.limiter.limit().rate != 0 || !kind.enabled || kind.exceeded ||
           (type != StormType::kJoint && !storm.is_in_joint(type));
}

void add_storm_rows(json &rows, const Device &device, int number) {
    const PortStorm &storm = device.chip().port(number).storm;
    for (const StormTypeEntry &entry : chip::kStormTypeTable) {
        if (is_changed(storm, entry.type)) {
            const PortStorm::Kind &kind = storm.of(entry.type);
            json row = {{"port", user_number(device, number)},
                        {"type", entry.name},
                        {"enabled", kind.enabled},
                        {"in_joint", storm.is_in_joint(entry.type)},
                        {"exceeded", kind.exceeded}};
            add_limiter(row, kind.limiter, device.now());
            rows.push_back(std::move(row));
        }
    }
}

void add_ingress_row(json &rows, const Device &device, int number) {
    const Limiter &policer = device.chip().port(number).policer;
    if (policer.limit().rate != 0) {
        json row = {{"port", user_number(device, number)}};
        add_limiter(row, policer, device.now());
        rows.push_back(std::move(row));
    }
}

json counting_of(const Device &device) {
    json modes = json::object();
    for (const StormTypeEntry &entry : chip::kStormTypeTable) {
        modes[entry.name] = state::word(device.chip().storm_counting(entry.type));
    }
    return modes;
}

json read_storm(Device &device, const json & /*request*/) {
    json storm = json::array();
    json ingress = json::array();
    for (const int port : wired_ports(device)) {
        add_storm_rows(storm, device, port);
        add_ingress_row(ingress, device, port);
    }
    // The time, so that two readings give a rate even when the second is late.
    return {{"storm", storm}, {"ingress", ingress}, {"counting", counting_of(device)}, {"time", seconds(device.now())}};
}

/** "500 of 3084"; "-" where there is no bucket. */
std::string level_text(const json &row) {
    return row.contains("level") ? fmt::format("{} of {}", row["level"].get<int64_t>(), row["depth"].get<uint64_t>())
                                 : "-";
}

std::string rate_text(const json &row) {
    const auto rate = row["rate"].get<uint32_t>();
    return rate == 0 ? "none" : fmt::format("{} {}", rate, row["counts"] == "frames" ? "frames/s" : "kbit/s");
}

/** What differs from the power-on setting. */
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
    return joined(words, ", ");
}

std::string limit_row(const json &row, const std::string &type, const std::string &state) {
    return fmt::format("{:>4}  {:<15} {:>18} {:>20} {:>12} {:>12}  {}\n", port_name(row), type, rate_text(row),
                       level_text(row), row["passed"].get<uint64_t>(), row["dropped"].get<uint64_t>(), state);
}

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
    return text + fmt::format("counted: {}\n", joined(modes, ", "));
}

constexpr Filter kStormFilters[] = {kByPort, kNonzero};
constexpr const char *kLimiterCounts[] = {"passed", "dropped"};

}  // namespace

extern constexpr Subject kStorm{
    "storm",       "[PORTS]",  "storm limits and ingress limits, what passed them, and the exceeded flags",
    read_storm,    show_storm, kStormFilters,
    kLimiterCounts};

}  // namespace vdevice::inspect
