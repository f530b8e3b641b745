// The field processor: rules over the fields of frames, with their meters and counters, and the action for frames that
// match no rule.
#pragma once

#include <array>
#include <optional>

#include "vdevice/chip/fields/field_counters.h"
#include "vdevice/chip/fields/field_table.h"
#include "vdevice/chip/fields/meter.h"
#include "vdevice/chip/frame/chip_ports.h"
#include "vdevice/chip/tables/port.h"

namespace vdevice::chip {

/** What happens to a port's frames that match no rule. */
enum class MissAction : uint8_t { kNone = 0, kDrop = 1, kCopyToCpu = 2, kToCpu = 3, kCount };

/** The decision of the field processor about a frame. */
struct FieldVerdict {
    std::optional<Drop> drop;
    bool to_cpu_only = false;
    bool copy_to_cpu = false;
    uint16_t tci = 0; /**< VLAN and priority in which the frame goes on */
    std::optional<uint8_t> dscp;
    std::optional<PortSet> redirect;
    std::optional<uint32_t> mirror; /**< the session whose flow mirror gets a copy */
    MatchedRules rules;             /**< that matched; without any the port's miss action decided */
};

class FieldProcessor {
  public:
    /** Removes all rules, meters, counts and miss actions; counts_gap() of the meters is kept. */
    void reset();
    /** Of rules, meters and counters; nothing else changes. */
    void clear_counts();

    const FieldTable &table() const { return table_; }
    FieldTable &table() { return table_; }
    const MeterTable &meters() const { return meters_; }
    MeterTable &meters() { return meters_; }
    const FieldCounters &counters() const { return counters_; }
    FieldCounters &counters() { return counters_; }

    /** Removes the meter that the entry's actions name, installed or not. */
    Status remove_meter_of(uint32_t entry);

    /** The port must exist. */
    void set_miss_action(int port, MissAction action) { miss_actions_[static_cast<size_t>(port)] = action; }
    MissAction miss_action(int port) const { return miss_actions_[static_cast<size_t>(port)]; }

    /** @p verdict is as constructed. */
    void judge(Time now, const FieldFrame &frame, FieldVerdict &verdict);

  private:
    void carry_out(const ActionSet &actions, Time now, const FieldFrame &frame, FieldVerdict &verdict);

    FieldTable table_;
    MeterTable meters_;
    FieldCounters counters_;
    std::array<MissAction, kChipPorts> miss_actions_{};
};

}  // namespace vdevice::chip
