// The limit of a type and the joint one, kept together.
#include "vdevice/chip/rates/storm_control.h"

#include <algorithm>

namespace vdevice::chip {
namespace {

constexpr bool types_are_in_order() {
    for (size_t i = 0; i < kStormTypes; ++i) {
        if (index_of(kStormTypeTable[i].type) != i) {
            return false;
        }
    }
    return true;
}
static_assert(types_are_in_order(), "a type's row and its kind are found by its number");

constexpr StormType kSingleTypes[] = {StormType::kMulticast, StormType::kBroadcast, StormType::kUnknownUnicast};

template <typename Predicate>
std::optional<StormType> find_type(Predicate is_wanted) {
    const auto *found = std::find_if(kStormTypeTable.begin(), kStormTypeTable.end(), is_wanted);
    return found == kStormTypeTable.end() ? std::nullopt : std::optional{found->type};
}

}  // namespace

std::optional<StormType> find_storm_type(uint32_t number) {
    return find_type([=](const StormTypeEntry &entry) { return static_cast<uint32_t>(entry.type) == number; });
}

std::optional<StormType> find_storm_code(uint32_t code) {
    return find_type([=](const StormTypeEntry &entry) { return entry.code == code; });
}

// The joint limit's own bit is not looked at.
bool PortStorm::is_in_joint(StormType type) const {
    if (type != StormType::kJoint) {
        return of(type).in_joint;
    }
    return std::all_of(std::begin(kSingleTypes), std::end(kSingleTypes),
                       [&](StormType single) { return of(single).in_joint; });
}

void PortStorm::set_in_joint(StormType type, bool in_joint) {
    for (const StormType single : kSingleTypes) {
        if (type == single || type == StormType::kJoint) {
            of(single).in_joint = in_joint;
        }
    }
}

template <typename Visit>
void PortStorm::for_each_limit_on(StormType type, Visit visit) {
    Kind &own = of(type);
    if (own.enabled) {
        visit(own);
    }
    if (Kind &joint = of(StormType::kJoint); own.in_joint && joint.enabled) {
        visit(joint);
    }
}

bool PortStorm::admit(StormType type, size_t octets, Time now) {
    bool passes = true;
    for_each_limit_on(type, [&](Kind &kind) {
        if (!kind.limiter.has_room(octets, now)) {
            kind.limiter.refuse();
            kind.exceeded = true;
            passes = false;
        }
    });
    if (passes) {
        for_each_limit_on(type, [&](Kind &kind) { kind.limiter.pass(octets, now); });
    }
    return passes;
}

}  // namespace vdevice::chip
