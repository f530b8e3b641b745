// The field processor's meters.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"

namespace vdevice::inspect {
namespace {

using chip::MeterTable;
using nlohmann::json;

/** The entries whose rule, installed or not, names the meter. */
json entries_with(const chip::FieldTable &table, uint32_t meter) {
    json entries = json::array();
    table.for_each([&](uint32_t number, const chip::FieldEntry &entry) {
        if (entry.names_meter(meter)) {
            entries.push_back(number);
        }
    });
    return entries;
}

json read_meters(Device &device, const json & /*request*/) {
    const chip::FieldProcessor &fields = device.chip().fields();
    json rows = json::array();
    for (uint32_t number = 0; number < MeterTable::kMeters; ++number) {
        if (const auto &meter = fields.meters().find(number)) {
            rows.push_back({{"meter", number},
                            {"rate", meter->rate()},
                            {"depth", meter->depth()},
                            {"passed", meter->passed()},
                            {"dropped", meter->dropped()},
                            {"entries", entries_with(fields.table(), number)}});
        }
    }
    // The time, so that two readings give a rate even when the second is late.
    return {{"meters", rows},
            {"entries", rows.size()},
            {"capacity", MeterTable::kMeters},
            {"counts_gap", fields.meters().counts_gap()},
            {"time", seconds(device.now())}};
}

std::string show_meters(const json &answer) {
    std::string text = fmt::format("{:>5}  {:>10}  {:>10} {:>12} {:>12}  {}\n", "METER", "KBIT/S", "DEPTH", "PASSED",
                                   "DROPPED", "ENTRIES");
    for (const json &meter : answer["meters"]) {
        const json &entries = meter["entries"];
        text +=
            fmt::format("{:>5}  {:>10}  {:>10} {:>12} {:>12}  {}\n", meter["meter"].get<int>(),
                        meter["rate"].get<uint32_t>(), meter["depth"].get<uint64_t>(), meter["passed"].get<uint64_t>(),
                        meter["dropped"].get<uint64_t>(), entries.empty() ? "-" : numbers(entries));
    }
    return text + fmt::format("{} of {} meters; preamble and gap {}\n", answer["entries"].get<size_t>(),
                              answer["capacity"].get<int>(),
                              answer["counts_gap"].get<bool>() ? "counted" : "not counted");
}

constexpr Filter kMeterFilters[] = {{"meter", "METERS", "these meters: 5 or 0-9,20", FilterKind::kNumbers, {"meter"}},
                                    kNonzero};
constexpr const char *kMeterCounts[] = {"passed", "dropped"};

}  // namespace

extern constexpr Subject kMeters{"meters",      "[METERS]",  "the field processor's meters", read_meters, show_meters,
                                 kMeterFilters, kMeterCounts};

}  // namespace vdevice::inspect
