// The states of the mux machine and the ways between them.
#include "switchd/lacp/mux_machine.h"

#include <algorithm>

namespace switchd::lacp {
namespace {

void enter(Port &port, MuxState entered, Time now) {
    port.status.mux = entered;
    Info &actor = port.status.actor;
    actor.set(state::kSynchronization, entered >= MuxState::kAttached);
    actor.set(state::kCollecting, entered >= MuxState::kCollecting);
    actor.set(state::kDistributing, entered == MuxState::kDistributing);
    port.is_ready = false;
    port.wait_while.stop();
    if (entered == MuxState::kWaiting) {
        port.wait_while.start(now, kAggregateWaitTime);
    } else if (entered != MuxState::kDistributing) {
        port.need_to_transmit(Reason::kChange);
    }
}

/** The state that follows, or the same one. */
MuxState next_state(const PortStatus &status, bool are_ready) {
    const bool is_selected = status.selected == Selected::kSelected;
    const bool in_sync = is_selected && status.partner.has(state::kSynchronization);
    const bool may_distribute = in_sync && status.partner.has(state::kCollecting);
    switch (status.mux) {
        case MuxState::kDetached:
            return status.selected == Selected::kUnselected ? MuxState::kDetached : MuxState::kWaiting;
        case MuxState::kWaiting:
            if (status.selected == Selected::kUnselected) {
                return MuxState::kDetached;
            }
            return is_selected && are_ready ? MuxState::kAttached : MuxState::kWaiting;
        case MuxState::kAttached:
            if (!is_selected) {
                return MuxState::kDetached;
            }
            return in_sync ? MuxState::kCollecting : MuxState::kAttached;
        case MuxState::kCollecting:
            if (!in_sync) {
                return MuxState::kAttached;
            }
            return may_distribute ? MuxState::kDistributing : MuxState::kCollecting;
        case MuxState::kDistributing:
            return may_distribute ? MuxState::kDistributing : MuxState::kCollecting;
    }
    return status.mux;
}

// Ports of a group attach together, so that flows are not moved again and again.
bool are_ready(std::span<Port *const> ports) {
    return std::all_of(ports.begin(), ports.end(), [](const Port *port) {
        const bool is_waiting = port->status.mux == MuxState::kWaiting && port->status.selected == Selected::kSelected;
        return !is_waiting || port->is_ready;
    });
}

}  // namespace

void run_mux(std::span<Port *const> ports, Time now) {
    // Ends: while a port's selection and partner stay as they are, no way leads back to a state that it has left.
    for (bool changed = true; changed;) {
        changed = false;
        for (Port *port : ports) {
            port->is_ready = port->wait_while.has_ended(now) || port->is_ready;
        }
        const bool ready = are_ready(ports);
        for (Port *port : ports) {
            const MuxState next = next_state(port->status, ready);
            if (next != port->status.mux) {
                enter(*port, next, now);
                changed = true;
            }
        }
    }
}

}  // namespace switchd::lacp
