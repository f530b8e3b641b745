// The numbers that are easily confused, each a type of its own: a logical interface, the chip's physical port, and an
// aggregation group's trunk id. Port and interface turn into each other in port/map.h, an interface into a trunk here.
#pragma once

#include <adp/types.h>

namespace adp {

/** What an interface number names: its type bits. Types beyond these two name nothing. */
enum class IntfKind : uint32_t { kUserPort = ADP_INTF_TYPE_USER_PORT, kAggregation = ADP_INTF_TYPE_AGG };

/** A logical interface number as the caller gave it: type bits and index. */
class Intf {
  public:
    constexpr explicit Intf(uint32_t value) : value_(value) {}

    constexpr uint32_t value() const { return value_; }
    constexpr uint32_t index() const { return value_ & ADP_INTF_INDEX_MASK; }

    constexpr IntfKind kind() const { return static_cast<IntfKind>(value_ >> ADP_INTF_TYPE_SHIFT); }
    /** Whether it is of a type that names something. */
    constexpr bool has_known_kind() const { return kind() == IntfKind::kUserPort || kind() == IntfKind::kAggregation; }

    /** One numbering for both kinds: user port i is i, aggregation interface g is 26 + g. */
    constexpr uint32_t combined_index() const {
        return kind() == IntfKind::kAggregation ? ADP_USER_PORTS + index() : index();
    }

    constexpr bool operator==(const Intf &) const = default;

  private:
    uint32_t value_;
};

/** The answer of a look-up that finds no interface, and "no interface" in a table. */
inline constexpr Intf kIntfNotFound{0xFFFFFFFFu};
inline constexpr Intf kNoIntf{0};

/** A physical port of the chip, as the driver numbers it. */
class PhyPort {
  public:
    constexpr explicit PhyPort(int32_t value) : value_(value) {}
    constexpr int32_t value() const { return value_; }
    constexpr bool operator==(const PhyPort &) const = default;

  private:
    int32_t value_;
};

/** The port that an unmapped interface translates to; callers hand it on to the driver like any other. */
inline constexpr PhyPort kPhyNotMapped{-1};

/** A group's trunk id: the index of every per-group table and the driver's trunk number. */
class TrunkId {
  public:
    /** Plain arithmetic on the index bits; a group outside 1..8 gives a trunk id that is not valid. */
    constexpr explicit TrunkId(Intf agg) : value_(agg.index() - 1) {}

    constexpr uint32_t value() const { return value_; }
    constexpr bool is_valid() const { return value_ < ADP_AGG_GROUPS; }

  private:
    uint32_t value_;
};

/** VLAN ids and TPIDs reach the driver cut to their low 16 bits. */
constexpr uint32_t low16(uint32_t value) {
    return value & 0xFFFFu;
}

/** Modes, flags and codes of which only the low byte counts. */
constexpr uint32_t low8(uint32_t value) {
    return value & 0xFFu;
}

}  // namespace adp
