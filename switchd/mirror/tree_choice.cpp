// Which of the chip's few spanning-tree groups each VLAN is to be in.
#include "switchd/mirror/tree_choice.h"

#include <algorithm>
#include <tuple>
#include <vector>

namespace switchd {
namespace {

/** VLANs with the same states. */
struct TreeClass {
    TreeStates states;
    std::vector<uint16_t> vids;
    int32_t group = 0;
};

std::vector<TreeClass> classes_of(const std::map<uint16_t, VlanState> &wanted) {
    std::map<TreeStates, size_t> places;
    std::vector<TreeClass> classes;
    for (const auto &[vid, vlan] : wanted) {
        if (vlan.not_forwarding.empty()) {
            continue;
        }
        const auto [place, is_new] = places.emplace(vlan.not_forwarding, classes.size());
        if (is_new) {
            classes.push_back({vlan.not_forwarding, {}, 0});
        }
        classes[place->second].vids.push_back(vid);
    }
    return classes;
}

/** Of the classes without a group the one that belongs into this group most; null if none is in it now. */
TreeClass *heir_of(int32_t group, std::vector<TreeClass> &classes, const TreeGroups &present) {
    TreeClass *heir = nullptr;
    std::tuple<bool, ptrdiff_t> best{false, 0};
    for (TreeClass &candidate : classes) {
        const ptrdiff_t vids_here = std::count_if(candidate.vids.begin(), candidate.vids.end(),
                                                  [&](uint16_t vid) { return present.group_of(vid) == group; });
        const std::tuple claim{candidate.states == present.states.at(group), vids_here};
        if (candidate.group == 0 && vids_here > 0 && claim > best) {
            heir = &candidate;
            best = claim;
        }
    }
    return heir;
}

}  // namespace

TreeChoice tree_choice_of(const std::map<uint16_t, VlanState> &wanted, const TreeGroups &present) {
    std::vector<TreeClass> classes = classes_of(wanted);
    TreeChoice choice;
    choice.states[0] = {};
    for (const auto &[group, states] : present.states) {
        TreeClass *heir = group == 0 ? nullptr : heir_of(group, classes, present);
        if (heir != nullptr) {
            heir->group = group;
            choice.states[group] = heir->states;
        }
    }
    for (TreeClass &newcomer : classes) {
        for (int32_t group = 1; group < ADP_STG_SUPPORTED && newcomer.group == 0; ++group) {
            if (choice.states.emplace(group, newcomer.states).second) {
                newcomer.group = group;
            }
        }
    }
    for (const auto &[vid, vlan] : wanted) {
        choice.vlans[vid] = 0;
    }
    for (const TreeClass &settled : classes) {
        for (const uint16_t vid : settled.vids) {
            choice.vlans[vid] = settled.group;
        }
    }
    return choice;
}

}  // namespace switchd
