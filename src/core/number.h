// The numbers that are easily confused, each with a type of its own. They are enumerations without enumerators, since
// the target returns these in a register, and objects of a class in memory.
#pragma once

#include <adp/types.h>

namespace adp {

/** A logical interface number as the caller gave it: type bits and index. */
enum class Intf : uint32_t {};
/** A physical port of the chip, as the driver numbers it. */
enum class PhyPort : int32_t {};
/** The trunk id of a group: the index of all group tables. */
enum class TrunkId : uint32_t {};

enum class IntfKind : uint32_t { kUserPort = ADP_INTF_TYPE_USER_PORT, kAggregation = ADP_INTF_TYPE_AGG };

constexpr uint32_t number(Intf intf) {
    return static_cast<uint32_t>(intf);
}
constexpr int32_t number(PhyPort port) {
    return static_cast<int32_t>(port);
}
constexpr uint32_t number(TrunkId trunk) {
    return static_cast<uint32_t>(trunk);
}
/** A trunk as the driver numbers it. A group outside 1..8 is not refused. */
constexpr int32_t driver_number(TrunkId trunk) {
    return static_cast<int32_t>(trunk);
}

constexpr uint32_t index_of(Intf intf) {
    return number(intf) & ADP_INTF_INDEX_MASK;
}
constexpr IntfKind kind_of(Intf intf) {
    return static_cast<IntfKind>(number(intf) >> ADP_INTF_TYPE_SHIFT);
}
constexpr bool has_known_kind(Intf intf) {
    return kind_of(intf) == IntfKind::kUserPort || kind_of(intf) == IntfKind::kAggregation;
}
constexpr uint32_t combined_index(Intf intf) {
    return kind_of(intf) == IntfKind::kAggregation ? ADP_USER_PORTS + index_of(intf) : index_of(intf);
}
constexpr TrunkId trunk_of(Intf agg) {
    return TrunkId(index_of(agg) - 1);
}
constexpr bool exists(TrunkId trunk) {
    return number(trunk) < ADP_AGG_GROUPS;
}

inline constexpr Intf kIntfNotFound{0xFFFFFFFFu};
inline constexpr Intf kNoIntf{0};
inline constexpr PhyPort kPhyNotMapped{-1};

constexpr uint32_t low16(uint32_t value) {
    return value & 0xFFFFu;
}
constexpr uint32_t low8(uint32_t value) {
    return value & 0xFFu;
}

}  // namespace adp
