// Of the wanted state: what is set for a whole port, whichever VLAN a frame is in.
#include <algorithm>
#include <bit>

#include "switchd/mirror/draft.h"

namespace switchd {
namespace {

/** A setting of the kernel's that the chip does not have. */
struct Unsupported {
    bool BridgePort::*flag;
    bool usual;
    const char *sentence;
};

constexpr Unsupported kUnsupported[] = {
    {&BridgePort::unicast_flood, true, "gets unknown unicast all the same: the chip has no such setting of a port"},
    {&BridgePort::multicast_flood, true, "gets unknown multicast all the same: the chip has no such setting of a port"},
    {&BridgePort::broadcast_flood, true, "gets broadcast all the same: the chip has no such setting of a port"},
    {&BridgePort::hairpin, false, "gets no frame back that came from it: the chip has no hairpin mode"},
};

Learning learning_for(const BridgePort &port) {
    if (port.locked) {
        return Learning::kClosed;
    }
    return port.learning ? Learning::kOn : Learning::kOff;
}

/** The strictest of the interfaces of a port counts. */
void add_learning(Draft &draft) {
    auto &ports = draft.wanted.state.ports;
    for (const auto &[interface, member] : draft.served) {
        for_each(member->ports, [&, wanted = learning_for(member->settings())](uint32_t port) {
            ports[port].learning = std::max(ports[port].learning, wanted);
        });
    }
    for (const auto &[interface, member] : draft.served) {
        bool differs = false;
        for_each(member->ports, [&, wanted = learning_for(member->settings())](uint32_t port) {
            differs = differs || ports[port].learning != wanted;
        });
        if (differs) {
            draft.remark(member->link->name,
                         "has the learning of another interface of its port: the chip sets it by port");
        }
    }
}

std::string names_of(IntfSet ports) {
    std::string text;
    for_each(ports, [&](uint32_t port) { text += (text.empty() ? "" : ", ") + name_of(PortName{port, 0}); });
    return text;
}

/** Keeps ports from sending to each other. */
void separate(Draft &draft, IntfSet ports) {
    for_each(ports & draft.plan.all() & ~kCpuAlone,
             [&](uint32_t port) { draft.wanted.state.ports[port].may_send_to &= ~(ports & ~set_of(port)); });
}

void add_isolation(Draft &draft) {
    // So that they are no loop before the chip, or the neighbour, has them as a group.
    for (const auto &[intf, ports] : draft.plan.groups) {
        separate(draft, ports);
    }
    std::map<int, IntfSet> members;
    std::map<int, IntfSet> isolated;
    for (const auto &[interface, member] : draft.served) {
        members[member->bridge] |= member->ports;
        isolated[member->bridge] |= member->settings().isolated ? member->ports : 0;
    }
    for (const auto &[bridge, set] : isolated) {
        separate(draft, set);
    }
    for (const auto &[bridge, ports] : members) {
        for (const auto &[other, set] : isolated) {
            const IntfSet both = ports & set;
            if (std::popcount(both) > 1 && (both & ~isolated[bridge]) != 0) {
                draft.remark(draft.link(bridge).name, "has ports that do not reach each other, " + names_of(both) +
                                                          ": they are isolated in " + draft.link(other).name +
                                                          ", and the chip isolates ports in all VLANs");
            }
        }
    }
}

}  // namespace

void add_port_settings(Draft &draft) {
    for (const auto &[interface, member] : draft.served) {
        for (const Unsupported &setting : kUnsupported) {
            if (member->settings().*setting.flag != setting.usual) {
                draft.remark(member->link->name, setting.sentence);
            }
        }
    }
    add_learning(draft);
    add_isolation(draft);
}

}  // namespace switchd
