// Announcements of aggregate state changes, and the event record.
#include "agg/state_change.h"

#include <adp/agg.h>
#include <device_services.h>

#include "core/group_tables.h"
#include "core/trace.h"

namespace adp {
namespace {

constexpr int kLogLevel = 5;
constexpr int kLogModule = 5;
constexpr char kLogWord[] = "UPDOWN";
constexpr char kInterfaceKind[] = "aggregateport";
// The event's first words are nobody's; the groups' words follow.
constexpr uint32_t kFirstGroupWord = 16;

// The one format of log and trace. A macro, so that the compiler can check both uses.
#define STATE_CHANGE_FORMAT "interface %s %d, changed state to %s"

}  // namespace

void announce_state(TrunkId trunk, bool is_up, const Announcer &announcer, uint32_t *changed) {
    const auto group = static_cast<int>(trunk.value() + 1);
    const char *word = is_up ? "up" : "down";
    if (sys_trace_get() != 0) {
        add_trace(announcer.function, announcer.line, STATE_CHANGE_FORMAT, kInterfaceKind, group, word);
    }
    Log_logging_func(kLogLevel, kLogModule, kLogWord, STATE_CHANGE_FORMAT, kInterfaceKind, group, word);
    agg_link_status[group] = is_up ? 1 : 0;
    if (changed != nullptr) {
        *changed = 1;
    }
}

void send_event(TrunkId trunk, const Announcer &announcer) {
    adp_agg_event_t event = {};
    event.word[kFirstGroupWord + trunk.value()] = ADP_AGG_INTF(trunk.value() + 1);
    adp_agg_event_handle(announcer.function, &event);
}

}  // namespace adp

adp_status_t adp_register_agg_event_cb(adp_agg_event_cb_t callback) {
    agg_event_handle = callback;
    return ADP_OK;
}

int32_t adp_agg_event_handle(const char *, const adp_agg_event_t *event) {
    return agg_event_handle == nullptr ? 0 : agg_event_handle(event);
}
