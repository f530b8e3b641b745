// The states of the receive machine, each entered by a function; the words are those of IEEE 802.1AX.
#include "switchd/lacp/receive_machine.h"

#include <utility>

namespace switchd::lacp {
namespace {

/** A partner that is mistaken in these bits, or about the identity, cannot go on. */
constexpr uint8_t kIdentityBits = state::kActive | state::kShortTimeout;

// Nothing is assumed about a partner that is not heard: not even that it could aggregate.
void record_default(PortStatus &status) {
    status.partner = {};
    status.actor.set(state::kDefaulted, true);
}

void record(PortStatus &status, const Lacpdu &pdu) {
    const bool is_maintained =
        pdu.actor.has(state::kActive) || (status.actor.has(state::kActive) && pdu.partner.has(state::kActive));
    const bool knows_us = is_same_end(pdu.partner, status.actor) || !pdu.actor.has(state::kAggregation);
    status.partner = pdu.actor;
    status.partner.set(state::kSynchronization, pdu.actor.has(state::kSynchronization) && is_maintained && knows_us);
    status.actor.set(state::kDefaulted, false);
}

void enter_port_disabled(Port &port) {
    port.status.receive = ReceiveState::kPortDisabled;
    port.status.partner.set(state::kSynchronization, false);
    port.current_while.stop();
}

void enter_lacp_disabled(Port &port) {
    port.status.receive = ReceiveState::kLacpDisabled;
    port.status.selected = Selected::kUnselected;
    record_default(port.status);
    port.status.actor.set(state::kExpired, false);
    port.current_while.stop();
}

void enter_expired(Port &port, Time now) {
    port.status.receive = ReceiveState::kExpired;
    port.status.partner.set(state::kSynchronization, false);
    port.status.partner.set(state::kShortTimeout, true);
    port.status.actor.set(state::kExpired, true);
    port.current_while.start(now, kShortTimeoutTime);
    port.need_to_transmit(Reason::kReminder);  // sooner than the periodic machine would
}

void enter_defaulted(Port &port) {
    port.status.receive = ReceiveState::kDefaulted;
    if (!is_same_end(port.status.partner, Info{})) {
        port.status.selected = Selected::kUnselected;
    }
    record_default(port.status);
    port.status.actor.set(state::kExpired, false);
}

void enter_current(Port &port, Time now) {
    port.status.receive = ReceiveState::kCurrent;
    port.status.actor.set(state::kExpired, false);
    port.current_while.start(now, port.settings.is_fast ? kShortTimeoutTime : kLongTimeoutTime);
}

// The partner does not notice that another process goes on: the first LACPDU says what the last one said.
void enter_resumed(Port &port, const Info &partner, Time now) {
    PortStatus &status = port.status;
    status.partner = partner;
    status.actor.set(state::kDefaulted, false);
    status.actor.set(state::kSynchronization | state::kCollecting | state::kDistributing, true);
    status.selected = Selected::kSelected;
    status.mux = MuxState::kDistributing;
    port.need_to_transmit(Reason::kReminder);
    enter_current(port, now);
}

}  // namespace

bool is_same_end(const Info &a, const Info &b) {
    return a.system == b.system && a.key == b.key && a.port_priority == b.port_priority && a.port == b.port &&
           a.has(state::kAggregation) == b.has(state::kAggregation);
}

void change_link(Port &port, bool is_up, bool is_full_duplex, Time now) {
    port.status.is_up = is_up;
    port.status.is_full_duplex = is_full_duplex;
    const auto resumed = std::exchange(port.resumed, std::nullopt);
    enter_port_disabled(port);
    if (is_up && !is_full_duplex) {
        enter_lacp_disabled(port);
    } else if (is_up && resumed) {
        enter_resumed(port, *resumed, now);
    } else if (is_up) {
        enter_expired(port, now);
    }
}

void take_lacpdu(Port &port, const Lacpdu &pdu, Time now) {
    PortStatus &status = port.status;
    if (!status.is_running()) {
        return;
    }
    if (!is_same_end(pdu.actor, status.partner)) {
        status.selected = Selected::kUnselected;
    }
    const unsigned mistakes = pdu.partner.state ^ status.actor.state;
    if (!is_same_end(pdu.partner, status.actor) || (mistakes & kIdentityBits) != 0) {
        port.need_to_transmit(Reason::kChange);
    } else if ((mistakes & state::kSynchronization) != 0) {
        port.need_to_transmit(Reason::kReminder);  // more often than not what is to be told is on its way
    }
    record(status, pdu);
    enter_current(port, now);
}

void expire_partner(Port &port, Time now) {
    if (!port.current_while.has_ended(now)) {
        return;
    }
    if (port.status.receive == ReceiveState::kCurrent) {
        enter_expired(port, now);
    } else {
        enter_defaulted(port);
    }
}

void forget_partner(Port &port) {
    port.status.selected = Selected::kUnselected;
    record_default(port.status);
    port.status.actor.set(state::kExpired, false);
}

}  // namespace switchd::lacp
