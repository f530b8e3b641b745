// Port counters. Both ways to read a counter have the same selectors, and clearing clears for both.
#include <adp/port.h>

#include <algorithm>
#include <iterator>
#include <numeric>

#include "vdevice/driver/driver.h"
#include "vdevice/driver/port_access.h"
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
    {ADP_COUNTER_RX_OCTETS, "octets received", [](const PortCounters &port) { return port.rx_octets; }},
    {ADP_COUNTER_RX_FRAMES, "frames received", [](const PortCounters &port) { return port.rx_frames; }},
    {ADP_COUNTER_RX_UNICAST, "unicast frames received",
     [](const PortCounters &port) { return port.rx_casts[index(Cast::kUnicast)]; }},
    {ADP_COUNTER_RX_MULTICAST, "multicast frames received",
     [](const PortCounters &port) { return port.rx_casts[index(Cast::kMulticast)]; }},
    {ADP_COUNTER_RX_BROADCAST, "broadcast frames received",
     [](const PortCounters &port) { return port.rx_casts[index(Cast::kBroadcast)]; }},
    {ADP_COUNTER_RX_DROPPED, "received frames dropped, for whatever reason",
     [](const PortCounters &port) { return std::accumulate(port.drops.begin(), port.drops.end(), uint64_t{0}); }},
    {ADP_COUNTER_RX_TOO_LONG, "received frames dropped as too long",
     [](const PortCounters &port) { return port.dropped(Drop::kOversize); }},
    {ADP_COUNTER_RX_RUNTS, "received frames dropped as runts",
     [](const PortCounters &port) { return port.dropped(Drop::kRunt); }},
    {ADP_COUNTER_TX_OCTETS, "octets sent", [](const PortCounters &port) { return port.tx_octets; }},
    {ADP_COUNTER_TX_FRAMES, "frames sent", [](const PortCounters &port) { return port.tx_frames; }},
    {ADP_COUNTER_TX_UNICAST, "unicast frames sent",
     [](const PortCounters &port) { return port.tx_casts[index(Cast::kUnicast)]; }},
    {ADP_COUNTER_TX_MULTICAST, "multicast frames sent",
     [](const PortCounters &port) { return port.tx_casts[index(Cast::kMulticast)]; }},
    {ADP_COUNTER_TX_BROADCAST, "broadcast frames sent",
     [](const PortCounters &port) { return port.tx_casts[index(Cast::kBroadcast)]; }},
    {ADP_COUNTER_TX_TOO_LONG, "frames not sent as too long for the port",
     [](const PortCounters &port) { return port.tx_too_long; }},
};

const Statistic *find_statistic(uint32_t selector) {
    const auto *const found = std::find_if(std::begin(kStatistics), std::end(kStatistics),
                                           [&](const Statistic &row) { return row.selector == selector; });
    return found == std::end(kStatistics) ? nullptr : found;
}

class Statistics : public StatisticsCalls {
  public:
    explicit Statistics(chip::Switch &chip) : chip_{chip} {}

    Status user_stat_port_get(int32_t port, uint32_t selector, uint64_t &value) override {
        const Statistic *statistic = find_statistic(selector);
        if (statistic == nullptr) {
            return Status::kBadArgument;
        }
        return read_port(chip_, port, value, [&](const chip::Port &state) { return statistic->value(state.counters); });
    }

    Status user_port_packetstat_get(int32_t port, uint32_t type, uint64_t &value) override {
        return user_stat_port_get(port, type, value);
    }

    Status user_port_packetstat_clear(int32_t port) override {
        return set_port(chip_, port, [](chip::Port &state) { state.counters = {}; });
    }

  private:
    chip::Switch &chip_;
};

}  // namespace

std::span<const Statistic> statistic_table() {
    return kStatistics;
}

std::unique_ptr<StatisticsCalls> statistics(chip::Switch &chip) {
    return std::make_unique<Statistics>(chip);
}

}  // namespace vdevice::driver
