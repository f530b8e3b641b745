// Port counters. The two families of calls read the same counters by the same selectors, and clearing clears for both.
#include <numeric>

#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"
#include "vdevice/driver/statistics.h"

namespace vdevice::driver {
namespace {

using chip::Cast;
using chip::Drop;
using chip::PortCounters;
using chip::Status;

constexpr size_t index(Cast cast) {
    return static_cast<size_t>(cast);
}

constexpr Statistic kStatistics[] = {
    {0, "octets received", [](const PortCounters &port) { return port.rx_octets; }},
    {1, "frames received", [](const PortCounters &port) { return port.rx_frames; }},
    {2, "unicast frames received", [](const PortCounters &port) { return port.rx_casts[index(Cast::kUnicast)]; }},
    {3, "multicast frames received", [](const PortCounters &port) { return port.rx_casts[index(Cast::kMulticast)]; }},
    {4, "broadcast frames received", [](const PortCounters &port) { return port.rx_casts[index(Cast::kBroadcast)]; }},
    {5, "received frames dropped, for whatever reason",
     [](const PortCounters &port) { return std::accumulate(port.drops.begin(), port.drops.end(), uint64_t{0}); }},
    {6, "received frames dropped as too long", [](const PortCounters &port) { return port.dropped(Drop::kOversize); }},
    {7, "received frames dropped as runts", [](const PortCounters &port) { return port.dropped(Drop::kRunt); }},
    {8, "octets sent", [](const PortCounters &port) { return port.tx_octets; }},
    {9, "frames sent", [](const PortCounters &port) { return port.tx_frames; }},
    {10, "unicast frames sent", [](const PortCounters &port) { return port.tx_casts[index(Cast::kUnicast)]; }},
    {11, "multicast frames sent", [](const PortCounters &port) { return port.tx_casts[index(Cast::kMulticast)]; }},
    {12, "broadcast frames sent", [](const PortCounters &port) { return port.tx_casts[index(Cast::kBroadcast)]; }},
    {13, "frames not sent as too long for the port", [](const PortCounters &port) { return port.tx_too_long; }},
};

}  // namespace

std::span<const Statistic> statistics() {
    return kStatistics;
}

const Statistic *find_statistic(uint32_t selector) {
    for (const Statistic &statistic : statistics()) {
        if (statistic.selector == selector) {
            return &statistic;
        }
    }
    return nullptr;
}

int32_t Driver::user_port_packetstat_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint64_t *value) {
    return on_chip(unit, zero, [&] {
        const Statistic *statistic = find_statistic(type);
        if (statistic == nullptr || value == nullptr) {
            return Status::kBadArgument;
        }
        if (!chip::Switch::has_port(port)) {
            return Status::kNoPort;
        }
        *value = statistic->value(chip_.port(port).counters);
        return Status::kOk;
    });
}

int32_t Driver::user_stat_port_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t selector, uint64_t *value) {
    return user_port_packetstat_get(unit, zero, port, selector, value);
}

int32_t Driver::user_port_packetstat_clear(uint32_t unit, uint32_t zero, int32_t port) {
    return write_port(unit, zero, port, [](chip::Port &state) {
        state.counters = {};
        return Status::kOk;
    });
}

}  // namespace vdevice::driver
