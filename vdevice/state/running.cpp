// What changes with time, traffic and cables alone, as far as a driver call can read it.
#include <nlohmann/json.hpp>

#include "vdevice/driver/statistics.h"
#include "vdevice/state/parts.h"

namespace vdevice::state {
namespace {

using chip::CounterType;
using chip::FieldCounters;
using chip::MacEntry;
using nlohmann::json;

json learned_of(const Source &source) {
    json rows = json::object();
    for (const MacEntry &entry : source.chip.macs().list()) {
        if (!entry.is_static && !entry.is_group()) {
            rows[key(entry)] = {{"port", source.port(entry.port)},
                                {"trunk", entry.place().is_trunk() ? json(entry.trunk) : json(nullptr)},
                                {"given_to_trunk", entry.is_given_to_trunk}};
        }
    }
    return rows;
}

/** Where each address stands in the table, which depends on those that were learned before it. */
json indexes_of(const Source &source) {
    json rows = json::object();
    for (const MacEntry &entry : source.chip.macs().list()) {
        rows[key(entry)] = entry.index;
    }
    return rows;
}

json exceeded_of(const chip::PortStorm &storm) {
    json types = json::array();
    for (const chip::StormTypeEntry &entry : chip::kStormTypeTable) {
        if (storm.of(entry.type).exceeded) {
            types.push_back(entry.name);
        }
    }
    return types;
}

/** The counts that are not 0. */
json counts_of(const chip::PortCounters &counters) {
    json rows = json::object();
    for (const driver::Statistic &statistic : driver::statistic_table()) {
        if (const uint64_t count = statistic.value(counters); count != 0) {
            rows[statistic.name] = count;
        }
    }
    return rows;
}

json ports_now(const Source &source) {
    json rows = json::object();
    for (int number = 0; number < chip::Switch::kPorts; ++number) {
        const chip::Port &port = source.chip.port(number);
        rows[source.key(number)] = {{"link", port.link},
                                    {"cable", port.cable},
                                    {"violations", port.violations.count()},
                                    {"exceeded", exceeded_of(port.storm)},
                                    {"counts", counts_of(port.counters)}};
    }
    return rows;
}

json field_counters_of(const FieldCounters &counters) {
    json rows = json::object();
    for (uint32_t number = 0; number < FieldCounters::kCounters; ++number) {
        const uint64_t frames = counters.get(number, CounterType::kFrames);
        const uint64_t octets = counters.get(number, CounterType::kOctets);
        if (frames != 0 || octets != 0) {
            rows[std::to_string(number)] = {{"frames", frames}, {"octets", octets}};
        }
    }
    return rows;
}

json events_of(const driver::EventQueue &queue) {
    json rows = json::array();
    for (const driver::Event &event : queue.events()) {
        rows.push_back({{"queue", event.queue}, {"words", event.words}, {"record", event.record}});
    }
    return rows;
}

}  // namespace

json running_of(const Source &source) {
    return {
        {"addresses", learned_of(source)},    {"indexes", indexes_of(source)},
        {"ports", ports_now(source)},         {"field_counters", field_counters_of(source.chip.fields().counters())},
        {"pins", source.chip.gpio().input()}, {"events", events_of(source.driver.events())}};
}

}  // namespace vdevice::state
