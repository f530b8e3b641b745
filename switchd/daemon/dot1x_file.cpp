// JSON, by the names of the ports: {"swp5": {"by_hand": false, "stations": ["02:00:00:00:00:01"]}}.
#include "switchd/daemon/dot1x_file.h"

#include <nlohmann/json.hpp>

#include "switchd/daemon/mac_text.h"
#include "switchd/daemon/small_file.h"
#include "switchd/ports/port_name.h"

namespace switchd {
namespace {

using nlohmann::json;

constexpr int kMostLevels = 4;

json json_of(const Dot1xRecord &record) {
    json stations = json::array();
    for (const Mac &station : record.stations) {
        stations.push_back(text_of_mac(station));
    }
    return {{"by_hand", record.by_hand}, {"stations", stations}};
}

Dot1xRecord record_of(const json &row) {
    Dot1xRecord record;
    record.by_hand = row.at("by_hand").get<bool>();
    for (const json &text : row.at("stations")) {
        if (const auto station = mac_of_text(text.get<std::string>()); station && is_station_address(*station)) {
            record.stations.insert(*station);
        }
    }
    return record;
}

}  // namespace

void write_records(const std::string &path, const Dot1xRecords &records) {
    json all = json::object();
    for (const auto &[intf, record] : records) {
        all[name_of({intf, 0})] = json_of(record);
    }
    write_text(path, all.dump() + '\n');
}

Dot1xRecords read_records(const std::string &path) {
    const auto is_kept = [](int depth, json::parse_event_t, const json &) { return depth < kMostLevels; };
    const json all = json::parse(text_in(path), is_kept, false);
    Dot1xRecords records;
    if (!all.is_object()) {
        return records;
    }
    try {
        for (const auto &[name, row] : all.items()) {
            if (const auto port = port_of_name(name); port && port->vid == 0) {
                records[port->intf] = record_of(row);
            }
        }
    } catch (const json::exception &) {
        return {};
    }
    return records;
}

}  // namespace switchd
