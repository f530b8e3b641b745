// The driver calls and the device's services, carried out on the virtual switch chip: a section of calls, a source
// file. Calls that no section carries out answer kNotSupported.
#pragma once

#include <stdint.h>
#include <functional>
#include <memory>

#include "generated/driver_calls.h"
#include "vdevice/chip/switch.h"
#include "vdevice/driver/board.h"
#include "vdevice/driver/codes.h"
#include "vdevice/driver/event_queue.h"
#include "vdevice/driver/journal.h"
#include "vdevice/driver/list_handles.h"
#include "vdevice/driver/switch_controls.h"

namespace vdevice::driver {

/** Stamps log lines and events, and starts what depends on the time. */
using Clock = std::function<chip::Time()>;

/** What the services keep for whoever looks at the device. */
struct ServiceRecords {
    Journal journal;
    EventQueue events;
    int32_t trace = 0; /**< the answer of sys_trace_get() */
};

// The sections, in the order of platform/netlink_api.h, and what each needs. What is handed over must outlive it.
std::unique_ptr<PortsCalls> ports(chip::Switch &);
std::unique_ptr<TrunksCalls> trunks(chip::Switch &);
std::unique_ptr<AddressesCalls> addresses(chip::Switch &, Clock);
std::unique_ptr<AddressDeletionCalls> address_deletion(chip::Switch &);
std::unique_ptr<AddressLimitsCalls> address_limits(chip::Switch &);
std::unique_ptr<AddressTableCalls> address_table(chip::Switch &, Clock, Journal &);
std::unique_ptr<GroupsCalls> groups(chip::Switch &, const Board &, SwitchControls &);
std::unique_ptr<GroupRulesCalls> group_rules(chip::Switch &, SwitchControls &);
std::unique_ptr<SwitchControlsCalls> switch_controls(chip::Switch &, SwitchControls &);
std::unique_ptr<FieldsCalls> fields(chip::Switch &);
std::unique_ptr<FieldConditionsCalls> field_conditions(chip::Switch &);
std::unique_ptr<FieldMetersCalls> field_meters(chip::Switch &, Clock);
std::unique_ptr<RatesCalls> rates(chip::Switch &, Clock);
std::unique_ptr<QueuesCalls> queues(chip::Switch &, const Board &, Clock);
std::unique_ptr<PrioritiesCalls> priorities(chip::Switch &);
std::unique_ptr<SpanningTreeCalls> spanning_tree(chip::Switch &);
std::unique_ptr<SpanningTreeListsCalls> spanning_tree_lists(chip::Switch &, ListHandles &);
std::unique_ptr<VlansCalls> vlans(chip::Switch &);
std::unique_ptr<TranslationsCalls> translations(chip::Switch &);
std::unique_ptr<DoubleTagsCalls> double_tags(chip::Switch &);
std::unique_ptr<MirroringCalls> mirroring(chip::Switch &);
std::unique_ptr<StatisticsCalls> statistics(chip::Switch &);
std::unique_ptr<RegistersCalls> registers(chip::Switch &);
std::unique_ptr<ServicesCalls> services(chip::Switch &, const Board &, Clock, ServiceRecords &);

class Driver : public DriverCalls {
  public:
    /** The chip must outlive the driver. */
    Driver(chip::Switch &chip, const Board &board, const Clock &clock);

    const Board &board() const { return board_; }
    const Journal &journal() const { return records_.journal; }
    const EventQueue &events() const { return records_.events; }
    EventQueue &events() { return records_.events; }
    const SwitchControls &controls() const { return controls_; }
    const ListHandles &lists() const { return lists_; }
    /** What sys_trace_get() answers. */
    int32_t trace() const { return records_.trace; }
    void set_trace(int32_t trace) { records_.trace = trace; }

  private:
    Board board_;
    SwitchControls controls_;
    ListHandles lists_;
    ServiceRecords records_;
};

}  // namespace vdevice::driver
