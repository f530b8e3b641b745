// Storm control: limits on what each port lets in of the frames that go to many ports.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <optional>

#include "vdevice/chip/frame/status.h"
#include "vdevice/chip/rates/limiter.h"

namespace vdevice::chip {

/** What a limit is on. Every storm frame is of one of the last three types; the joint limit is on them together. */
enum class StormType : uint8_t { kJoint = 1, kMulticast = 2, kBroadcast = 3, kUnknownUnicast = 4 };

struct StormTypeEntry {
    StormType type;
    uint32_t code; /**< what management software calls the type where it is not translated */
    const char *name;
};

constexpr size_t kStormTypes = 4;

/** The types in the order of their numbers. */
inline constexpr std::array<StormTypeEntry, kStormTypes> kStormTypeTable = {
    {{StormType::kJoint, 8, "joint"},
     {StormType::kMulticast, 2, "multicast"},
     {StormType::kBroadcast, 1, "broadcast"},
     {StormType::kUnknownUnicast, 4, "unknown_unicast"}}};

constexpr size_t index_of(StormType type) {
    return static_cast<size_t>(type) - 1;
}

std::optional<StormType> find_storm_type(uint32_t number);
std::optional<StormType> find_storm_code(uint32_t code);

/** One port's limits. */
class PortStorm {
  public:
    struct Kind {
        Limiter limiter;
        bool enabled = true;   /**< the limit, where there is one, holds */
        bool in_joint = true;  /**< the joint limit is on frames of this type, too; the joint limit's own is not used */
        bool exceeded = false; /**< a frame was over the limit since the flag was cleared */
    };

    const Kind &of(StormType type) const { return kinds_[index_of(type)]; }
    Kind &of(StormType type) { return kinds_[index_of(type)]; }
    /** All types, the joint one included. */
    std::array<Kind, kStormTypes> &kinds() { return kinds_; }

    /** Whether the joint limit is on frames of the type. The joint type stands for all of them. */
    bool is_in_joint(StormType type) const;
    void set_in_joint(StormType type, bool in_joint);

    /**
     * True if the frame, so many octets with its check sequence, keeps to its type's limit and to the joint one. A
     * frame over one of them takes nothing from the other.
     */
    bool admit(StormType type, size_t octets, Time now);

  private:
    template <typename Visit>
    void for_each_limit_on(StormType type, Visit visit);

    std::array<Kind, kStormTypes> kinds_;
};

}  // namespace vdevice::chip
