// Addresses of stations in the MAC table.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/driver/mac_text.h"
#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using chip::MacEntry;
using chip::MacTable;
using nlohmann::json;

const char *kind_of(const MacEntry &entry) {
    if (entry.is_filter()) {
        return "filter";
    }
    return entry.is_static ? "static" : "dynamic";
}

json read_station(const Device &device, const MacEntry &entry) {
    json row = {{"vid", entry.vid},
                {"mac", driver::to_text(entry.mac)},
                {"index", entry.index},
                {"port", user_number(device, entry.port)},
                {"trunk", entry.trunk},
                {"kind", kind_of(entry)},
                {"static", entry.is_static},
                {"drops_to", entry.drops_to},
                {"drops_from", entry.drops_from}};
    if (!entry.is_static) {
        row["age"] = seconds(device.now() - entry.last_seen);
    }
    return row;
}

json read_macs(Device &device, const json & /*request*/) {
    json rows = json::array();
    const MacTable &table = device.chip().macs();
    for (const MacEntry &entry : table.list()) {
        if (!entry.is_group()) {
            rows.push_back(read_station(device, entry));
        }
    }
    return {{"macs", rows},
            {"groups", table.group_count()},
            {"entries", table.size()},
            {"capacity", MacTable::kCapacity},
            {"time", seconds(device.now())},
            {"age_time", table.age_time().count()},
            {"learned", table.counters().learned},
            {"moved", table.counters().moved},
            {"aged", table.counters().aged},
            {"refused", table.counters().refused}};
}

/** "12 s" for a learned address, else the kind of entry. */
std::string kind_text(const json &entry) {
    const std::string kind = entry["kind"].get<std::string>();
    if (kind == "dynamic") {
        return fmt::format("{:.0f} s", entry["age"].get<double>());
    }
    const bool drops_to = entry["drops_to"].get<bool>();
    const bool drops_from = entry["drops_from"].get<bool>();
    return kind + (drops_to ? " to" : "") + (drops_from ? " from" : "");
}

std::string show_macs(const json &answer) {
    std::string text = fmt::format("{:>4}  {:<17}  {:>4}  {:>5}  {}\n", "VLAN", "ADDRESS", "PORT", "INDEX", "AGE");
    for (const json &entry : answer["macs"]) {
        const int trunk = entry["trunk"].get<int>();
        const std::string place = trunk < 0 ? port_name(entry) : fmt::format("t{}", trunk);
        text += fmt::format("{:>4}  {:<17}  {:>4}  {:>5}  {}\n", entry["vid"].get<int>(),
                            entry["mac"].get<std::string>(), place, entry["index"].get<int>(), kind_text(entry));
    }
    const auto groups = answer["groups"].get<size_t>();
    return text + fmt::format("{} of {} entries, {} of them groups; learned {}, moved {}, aged out {}, refused {}\n",
                              answer["entries"].get<uint64_t>(), answer["capacity"].get<uint64_t>(), groups,
                              answer["learned"].get<uint64_t>(), answer["moved"].get<uint64_t>(),
                              answer["aged"].get<uint64_t>(), answer["refused"].get<uint64_t>());
}

constexpr Filter kMacFilters[] = {
    kByVlan,
    kByPort,
    {"mac", "ADDRESS", "the rows of this address", FilterKind::kWord, {"mac"}},
    {"kind", "KIND", "rows of this kind: dynamic, static or filter", FilterKind::kWord, {"kind"}},
    kLast};
constexpr const char *kMacCounts[] = {"learned", "moved", "aged", "refused"};

}  // namespace

extern constexpr Subject kMacs{"macs", "", "the MAC table", read_macs, show_macs, kMacFilters, kMacCounts, kLong};

}  // namespace vdevice::inspect
