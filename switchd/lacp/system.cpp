// Hands links, frames and time to the state machines of the ports, and sends what they ask for.
#include "switchd/lacp/system.h"

#include <algorithm>
#include <vector>

#include "switchd/lacp/churn.h"
#include "switchd/lacp/mux_machine.h"
#include "switchd/lacp/periodic_machine.h"
#include "switchd/lacp/receive_machine.h"

namespace switchd::lacp {
namespace {

void apply_settings(Port &port, const SystemId &id, uint16_t number, const PortSettings &settings) {
    port.settings = settings;
    Info &actor = port.status.actor;
    actor.system = id;
    actor.key = settings.key;
    actor.port_priority = settings.priority;
    actor.port = number;
    actor.set(state::kActive, settings.is_active);
    actor.set(state::kShortTimeout, settings.is_fast);
    actor.set(state::kAggregation, true);
    port.need_to_transmit(Reason::kChange);
}

Port new_port(const SystemId &id, uint16_t number, const PortSettings &settings) {
    Port port;
    apply_settings(port, id, number, settings);
    port.status.actor.set(state::kDefaulted, true);
    return port;
}

std::optional<Time> earlier(std::optional<Time> a, std::optional<Time> b) {
    return a && b ? std::min(*a, *b) : a ? a : b;
}

}  // namespace

Port *System::port_of(uint16_t port) {
    const auto found = ports_.find(port);
    return found == ports_.end() ? nullptr : &found->second;
}

const PortStatus *System::find(uint16_t port) const {
    const auto found = ports_.find(port);
    return found == ports_.end() ? nullptr : &found->second.status;
}

void System::set_port(uint16_t port, const PortSettings &settings, Time now) {
    Port *known = port_of(port);
    if (known == nullptr) {
        ports_.emplace(port, new_port(id_, port, settings));
    } else if (known->settings.key != settings.key) {
        const PortStatus before = known->status;
        remove_port(port, now);
        ports_.emplace(port, new_port(id_, port, settings));
        set_link(port, before.is_up, before.is_full_duplex, now);
    } else if (known->settings != settings) {
        apply_settings(*known, id_, port, settings);
    }
    run(now);
}

void System::resume_port(uint16_t port, const PortSettings &settings, const Info &partner, Time now) {
    set_port(port, settings, now);
    Port &added = ports_.at(port);
    if (!added.status.is_up) {
        added.resumed = partner;
    }
}

void System::remove_port(uint16_t port, Time now) {
    Port *removed = port_of(port);
    if (removed == nullptr) {
        return;
    }
    if (removed->status.selected != Selected::kUnselected) {
        removed->status.actor.set(state::kSynchronization | state::kCollecting | state::kDistributing, false);
        removed->need_to_transmit(Reason::kChange);
        transmit(port, *removed, now);
    }
    ports_.erase(port);
    run(now);
}

void System::set_link(uint16_t port, bool is_up, bool is_full_duplex, Time now) {
    Port *changed = port_of(port);
    if (changed == nullptr) {
        return;
    }
    const PortStatus &status = changed->status;
    if (status.is_up != is_up || (is_up && status.is_full_duplex != is_full_duplex) || changed->resumed) {
        change_link(*changed, is_up, is_full_duplex, now);
    }
    run(now);
}

bool System::receive(uint16_t port, std::span<const uint8_t> frame, Time now) {
    Port *receiver = port_of(port);
    if (receiver == nullptr) {
        return false;
    }
    const Pdu pdu = pdu_of(frame);
    const auto *unusable = std::get_if<Unusable>(&pdu);
    if (unusable != nullptr && *unusable != Unusable::kIllegal) {
        receiver->status.counters.unknown_in += *unusable == Unusable::kUnknown ? 1U : 0U;
        return false;
    }
    if (unusable != nullptr) {
        ++receiver->status.counters.illegal_in;
    } else if (!receiver->receive_limit.take(now)) {
        ++receiver->status.counters.too_many_in;
    } else if (const auto *lacpdu = std::get_if<Lacpdu>(&pdu)) {
        take(*receiver, *lacpdu, now);
    } else {
        take(port, *receiver, std::get<Marker>(pdu));
    }
    return true;
}

void System::take(Port &port, const Lacpdu &pdu, Time now) {
    ++port.status.counters.lacpdus_in;
    for (auto &[number, other] : ports_) {
        const Info &known = other.status.partner;
        if (&other != &port && !other.status.is_up && known.system == pdu.actor.system &&
            known.port == pdu.actor.port) {
            forget_partner(other);
        }
    }
    take_lacpdu(port, pdu, now);
    run(now);
}

void System::take(uint16_t number, Port &port, const Marker &marker) {
    Counters &counters = port.status.counters;
    if (marker.is_response) {
        ++counters.marker_responses_in;
        return;
    }
    ++counters.markers_in;
    if (port.status.is_running()) {
        Marker response = marker;
        response.is_response = true;
        ++counters.marker_responses_out;
        transmit_(number, frame_of(response, id_.mac));
    }
}

void System::tick(Time now) {
    run(now);
}

void System::run(Time now) {
    std::map<uint16_t, std::vector<Port *>> groups;
    for (auto &[number, port] : ports_) {
        expire_partner(port, now);
        groups[port.settings.key].push_back(&port);
    }
    std::erase_if(partners_, [&](const auto &partner) { return !groups.contains(partner.first); });
    for (auto &[key, ports] : groups) {
        run_mux(ports, now);  // a port that is no longer selected detaches before it is selected anew
        select_ports(ports, partners_[key]);
        run_mux(ports, now);
    }
    for (auto &[number, port] : ports_) {
        watch_churn(port, now);
        run_periodic(port, now);
        transmit(number, port, now);
    }
}

void System::transmit(uint16_t number, Port &port, Time now) {
    if (port.ntt != Reason::kNone && port.transmit_limit.take(now, port.ntt)) {
        port.ntt = Reason::kNone;
        ++port.status.counters.lacpdus_out;
        transmit_(number, frame_of(Lacpdu{port.status.actor, port.status.partner}, id_.mac));
    }
}

std::optional<Time> System::next_deadline() const {
    std::optional<Time> next;
    for (const auto &[number, port] : ports_) {
        for (const Timer *timer :
             {&port.current_while, &port.wait_while, &port.periodic, &port.actor_churn, &port.partner_churn}) {
            next = earlier(next, timer->end());
        }
        if (port.ntt != Reason::kNone) {
            next = earlier(next, port.transmit_limit.next(port.ntt));
        }
    }
    return next;
}

GroupStatus System::group(uint16_t key) const {
    GroupStatus status;
    if (const auto partner = partners_.find(key); partner != partners_.end()) {
        status.partner = partner->second;
    }
    for (const auto &[number, port] : ports_) {
        if (port.settings.key == key && port.status.is_distributing()) {
            status.distributing.insert(number);
        }
    }
    return status;
}

}  // namespace switchd::lacp
