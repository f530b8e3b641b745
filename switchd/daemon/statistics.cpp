// Reads the counters one by one.
#include "switchd/daemon/statistics.h"

#include <adp/agg.h>
#include <adp/port.h>
#include <adp/status.h>

#include <nlohmann/json.hpp>
#include <string>

#include "switchd/ports/port_name.h"
#include "vdevice/io/error.h"

namespace switchd {
namespace {

struct Counter {
    uint32_t type;
    const char *name;
};

constexpr Counter kCounters[] = {
    {ADP_COUNTER_RX_OCTETS, "rx_octets"},       {ADP_COUNTER_RX_FRAMES, "rx_frames"},
    {ADP_COUNTER_RX_UNICAST, "rx_unicast"},     {ADP_COUNTER_RX_MULTICAST, "rx_multicast"},
    {ADP_COUNTER_RX_BROADCAST, "rx_broadcast"}, {ADP_COUNTER_RX_DROPPED, "rx_dropped"},
    {ADP_COUNTER_RX_TOO_LONG, "rx_too_long"},   {ADP_COUNTER_RX_RUNTS, "rx_runts"},
    {ADP_COUNTER_TX_OCTETS, "tx_octets"},       {ADP_COUNTER_TX_FRAMES, "tx_frames"},
    {ADP_COUNTER_TX_UNICAST, "tx_unicast"},     {ADP_COUNTER_TX_MULTICAST, "tx_multicast"},
    {ADP_COUNTER_TX_BROADCAST, "tx_broadcast"}, {ADP_COUNTER_TX_TOO_LONG, "tx_too_long"},
};

}  // namespace

nlohmann::json counters_of(uint32_t intf) {
    const std::string name = name_of({intf, 0});
    nlohmann::json counters = {{"name", name}};
    for (const Counter &counter : kCounters) {
        uint64_t value = 0;
        if (const adp_status_t status = adp_get_port_stat(intf, counter.type, &value); status != ADP_OK) {
            throw vdevice::io::Error{"the switch refuses to count what passes " + name + ": " +
                                     adp_status_text(status) + " (" + std::to_string(status) + ")."};
        }
        counters[counter.name] = value;
    }
    return counters;
}

nlohmann::json statistics(const std::vector<uint32_t> &interfaces) {
    nlohmann::json rows = nlohmann::json::array();
    for (const uint32_t intf : interfaces) {
        rows.push_back(counters_of(intf));
    }
    return {{"statistics", rows}};
}

}  // namespace switchd
