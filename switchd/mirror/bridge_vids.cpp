// Which VLANs the bridges have in the chip. A VLAN id serves one of them.
#include <set>

#include "switchd/mirror/draft.h"

namespace switchd {
namespace {

bool is_vid(uint32_t vid) {
    return vid >= kFirstVid && vid <= kLastVid;
}

/** The number at the end of the name, 0 if there is none or it is no VLAN id. */
uint16_t number_at_end_of(const std::string &name) {
    constexpr uint32_t kTen = 10;
    uint32_t number = 0;
    uint32_t place = 1;
    for (auto digit = name.rbegin(); digit != name.rend() && *digit >= '0' && *digit <= '9'; ++digit) {
        number += static_cast<uint32_t>(*digit - '0') * place;
        if (!is_vid(number) && number != 0) {
            return 0;
        }
        place = place <= kLastVid ? place * kTen : place;
    }
    return static_cast<uint16_t>(number);
}

/** The tag of the first tagged member; 0 for none. */
uint16_t tag_of(const Draft &draft, int bridge) {
    for (const Member &member : draft.members) {
        if (member.bridge == bridge && member.port.vid != 0) {
            return member.port.vid;
        }
    }
    return 0;
}

void take_for_unaware(Draft &draft, int bridge, uint16_t vid) {
    const std::string taken = draft.why_taken(vid);
    if (!taken.empty()) {
        return draft.remark(draft.link(bridge).name, "is left to the kernel: " + taken);
    }
    draft.owners[vid] = bridge;
    draft.wanted.bridges[bridge] = vid;
}

void take_for_aware(Draft &draft, int bridge) {
    std::set<uint16_t> vids;
    for (const Member &member : draft.members) {
        for (const BridgeVlan &vlan : member.link->vlans) {
            if (member.bridge == bridge) {
                vids.insert(vlan.vid);
            }
        }
    }
    for (const uint16_t vid : vids) {
        const std::string taken = draft.why_taken(vid);
        if (taken.empty()) {
            draft.owners[vid] = bridge;
        } else {
            draft.remark(draft.link(bridge).name, "gets no frames of a VLAN: " + taken);
        }
    }
}

/** Depends on the bridge's index, so that it stays when other bridges come and go, and after a restart. */
void take_any(Draft &draft, int bridge) {
    const uint32_t first = draft.plan.first_free_internal_vid();
    const uint32_t count = first <= kLastVid ? kLastVid + 1 - first : 0;
    for (uint32_t i = 0; i < count; ++i) {
        const auto vid = static_cast<uint16_t>(first + (static_cast<uint32_t>(bridge) + i) % count);
        if (draft.why_taken(vid).empty()) {
            return take_for_unaware(draft, bridge, vid);
        }
    }
    draft.remark(draft.link(bridge).name, "is left to the kernel: no VLAN is free");
}

std::set<int> bridges_of(const Draft &draft) {
    std::set<int> bridges;
    for (const Member &member : draft.members) {
        if (member.bridge != 0) {
            bridges.insert(member.bridge);
        }
    }
    return bridges;
}

/** Takes the VLANs of those bridges that @p choose gives one, and leaves the others in the set. */
template <typename Choose>
void take_chosen(Draft &draft, std::set<int> &bridges, Choose choose) {
    std::erase_if(bridges, [&](int bridge) {
        const uint16_t vid = choose(bridge);
        if (vid != 0) {
            take_for_unaware(draft, bridge, vid);
        }
        return vid != 0;
    });
}

}  // namespace

std::string Draft::why_taken(uint16_t vid) const {
    const std::string text = "VLAN " + std::to_string(vid);
    if (!is_vid(vid)) {
        return "there is no " + text;
    }
    if (const uint32_t intf = plan.owner_of_internal(vid); intf != 0) {
        return text + " is kept for " + name_of({intf, 0});
    }
    const auto owner = owners.find(vid);
    return owner == owners.end() ? "" : text + " is that of " + link(owner->second).name;
}

std::optional<uint16_t> Draft::chip_vid_of(int bridge, uint16_t vid) const {
    if (const auto unaware = wanted.bridges.find(bridge); unaware != wanted.bridges.end()) {
        return vid == 0 ? std::optional{unaware->second} : std::nullopt;
    }
    const auto owner = owners.find(vid);
    return owner != owners.end() && owner->second == bridge ? std::optional{vid} : std::nullopt;
}

// What is visible on the wire or was asked for comes first.
void choose_vids(Draft &draft) {
    std::set<int> bridges = bridges_of(draft);
    std::set<int> aware;
    std::erase_if(bridges,
                  [&](int bridge) { return draft.link(bridge).bridge->vlan_filtering && aware.insert(bridge).second; });
    take_chosen(draft, bridges, [&](int bridge) -> uint16_t {
        const auto found = draft.plan.bridge_vids.find(draft.link(bridge).name);
        return found == draft.plan.bridge_vids.end() ? uint16_t{0} : found->second;
    });
    take_chosen(draft, bridges, [&](int bridge) { return tag_of(draft, bridge); });
    for (const int bridge : aware) {
        take_for_aware(draft, bridge);
    }
    take_chosen(draft, bridges, [&](int bridge) -> uint16_t {
        const uint16_t number = number_at_end_of(draft.link(bridge).name);
        return draft.why_taken(number).empty() ? number : uint16_t{0};
    });
    for (const int bridge : bridges) {
        take_any(draft, bridge);
    }
}

}  // namespace switchd
