// Announcements of aggregate state changes, and the event record.
#include "agg/state_change.h"

#include <adp/agg.h>
#include <device_services.h>

#include "core/group_tables.h"
#include "core/messages.h"

namespace adp {
namespace {

constexpr char kInterfaceKind[] = "aggregateport";
// The first words of the event are unused; the words of the groups follow.
constexpr uint32_t kFirstGroupWord = 16;

constexpr char kFormat[] = "interface %s %d, changed state to %s";

}  // namespace

void announce_state(TrunkId trunk, bool is_up, const Place &worker, uint32_t *changed) {
    const auto group = static_cast<int>(number(trunk) + 1);
    const char *word = is_up ? "up" : "down";
    if (is_tracing()) {
        trace(worker, kFormat, kInterfaceKind, group, word);
    }
    Log_logging_func(kLinkLog.level, kLinkLog.module, kLinkLog.word, kFormat, kInterfaceKind, group, word);
    agg_link_status[group] = is_up ? 1 : 0;
    if (changed != nullptr) {
        *changed = 1;
    }
}

void send_event(TrunkId trunk, const Place &worker) {
    adp_agg_event_t event = {};
    event.word[kFirstGroupWord + number(trunk)] = ADP_AGG_INTF(number(trunk) + 1);
    adp_agg_event_handle(worker.function, &event);
}

}  // namespace adp

using namespace adp;

adp_status_t adp_register_agg_event_cb(adp_agg_event_cb_t callback) {
    agg_event_handle = callback;
    return ADP_OK;
}

int32_t adp_agg_event_handle(const char *, const adp_agg_event_t *event) {
    return agg_event_handle == nullptr ? 0 : agg_event_handle(event);
}
