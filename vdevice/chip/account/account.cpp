// Puts steps, copies and the ports without a copy together.
#include "vdevice/chip/account/account.h"

#include <utility>

#include "vdevice/chip/frame/flow_hash.h"

namespace vdevice::chip {
namespace {

bool is_chosen_by_hash(const Passage &p) {
    return p.way == Way::kEntry || p.way == Way::kGroup || p.way == Way::kFlooded;
}

void add_trunk(const Tables &tables, const Passage &p, Copy &copy) {
    const Trunk *trunk = tables.trunks.find(tables.trunk_of(copy.port));
    if (trunk != nullptr && copy.origin == Origin::kSwitched && is_chosen_by_hash(p) && p.wanted.has(copy.port)) {
        copy.trunk = {tables.trunk_of(copy.port), flow_hash(p.header, p.vid(), trunk->layer(), tables.hash_sides)};
    }
}

bool is_as_cpu_made_it(const Passage &p, const Copy &copy) {
    return copy.origin == Origin::kSwitched && p.way == Way::kDirected && p.vlan == nullptr;
}

Form form_of(int port, const Frame &copy, Origin origin) {
    switch (origin) {
        case Origin::kIngressMirror:
        case Origin::kFlowMirror:
            return Form::kAsItCame;
        case Origin::kEgressMirror:
            return Form::kAsItLeaves;
        case Origin::kSwitched:
            break;
    }
    if (port == kCpuPort) {
        return Form::kForCpu;
    }
    return copy.head.size() == kAddressBytes ? Form::kUntagged : Form::kTagged;
}

}  // namespace

Copy copy_of(const Tables &tables, int port, const Frame &copy, const Dispatch &dispatch, Fate fate) {
    Copy made{port,
              fate,
              Lost{},
              dispatch.origin,
              dispatch.priority,
              tables.queue_map.queue_of(port, dispatch.priority),
              copy.size(),
              form_of(port, copy, dispatch.origin),
              0,
              0,
              {}};
    if (made.form == Form::kTagged || made.form == Form::kForCpu) {
        const size_t tag_at = copy.head.size() - kVlanTagBytes;
        made.tpid = read16(copy.head, tag_at);
        made.tci = read16(copy.head, tag_at + kTypeBytes);
    }
    return made;
}

Account account_of(const Tables &tables, const Passage &p, std::vector<Copy> copies) {
    Account account{p.now, p.ingress, {}, steps_of(tables, p), std::move(copies), {}, p.drop};
    if (p.vlan != nullptr || p.tci != 0) {
        account.vid = p.vid();
    }
    for (Copy &copy : account.copies) {
        add_trunk(tables, p, copy);
        copy.form = is_as_cpu_made_it(p, copy) ? Form::kAsCpuMadeIt : copy.form;
    }
    for (int port = 0; port < static_cast<int>(kChipPorts); ++port) {
        if (const auto reason = why_unsent(tables, p, port)) {
            account.unsent.emplace_back(port, *reason);
        }
    }
    return account;
}

}  // namespace vdevice::chip
