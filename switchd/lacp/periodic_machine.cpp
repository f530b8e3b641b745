// The partner chooses the period; while none is known, a port sends as often as it wants to hear. Between two passive
// ends nothing is sent at all.
#include "switchd/lacp/periodic_machine.h"

#include <utility>

namespace switchd::lacp {
namespace {

Period period_of(const Port &port) {
    const PortStatus &status = port.status;
    if (!status.is_running() || !(status.actor.has(state::kActive) || status.partner.has(state::kActive))) {
        return Period::kNone;
    }
    const bool is_unknown = status.receive == ReceiveState::kDefaulted;
    return (is_unknown ? status.actor : status.partner).has(state::kShortTimeout) ? Period::kFast : Period::kSlow;
}

}  // namespace

void run_periodic(Port &port, Time now) {
    const Period before = std::exchange(port.period, period_of(port));
    if (port.period == Period::kNone) {
        port.periodic.stop();
        port.ntt = Reason::kNone;
        return;
    }
    const bool is_quicker = before == Period::kSlow && port.period == Period::kFast;
    const bool is_due = port.periodic.has_ended(now);
    if (is_due || port.period != before) {
        port.periodic.start(now, port.period == Period::kFast ? kFastPeriodicTime : kSlowPeriodicTime);
    }
    if (is_due || is_quicker) {
        port.need_to_transmit(Reason::kReminder);
    }
}

}  // namespace switchd::lacp
