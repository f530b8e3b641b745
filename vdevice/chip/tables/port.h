// One port of the chip: its state, its settings and its counters.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>

#include "vdevice/chip/frame/chip_ports.h"
#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/wording.h"
#include "vdevice/chip/rates/limiter.h"
#include "vdevice/chip/rates/storm_control.h"
#include "vdevice/chip/tables/group_rules.h"
#include "vdevice/chip/tables/learn_mode.h"
#include "vdevice/chip/tables/phy.h"
#include "vdevice/chip/tables/port_priorities.h"
#include "vdevice/chip/tables/port_tags.h"
#include "vdevice/chip/tables/violations.h"

namespace vdevice::chip {

/** Why a frame was not forwarded, as wording() says. Counted on the ingress port. */
enum class Drop : uint8_t {
    kPortDown,
    kRunt,
    kOversize,
    kVlanMissing,
    kNotMember,
    kSamePort,
    kEgressNotMember,
    kEgressDown,
    kNoDestination,
    kNoSwitchTag,
    kBadOpcode,
    kDirectedToCpu,
    kDirectedToUnknown,
    kUnknownSource,
    kIsolated,
    kRule,
    kMeter,
    kLoopback,
    kFiltered,
    kLearnLimit,
    kUnknownGroup,
    kDosSameMac,
    kDosLand,
    kDosNullScan,
    kDosSynFin,
    kDosXmasScan,
    kDosFragment,
    kStpBlocked,
    kStpEgress,
    kPoliced,
    kStorm,
    kCount,
};

constexpr size_t kDropReasons = static_cast<size_t>(Drop::kCount);

const Wording &wording(Drop reason);
/** The short name of the reason, for tables and logs. */
inline const char *name(Drop reason) {
    return wording(reason).word;
}

/** The kind of a destination address. */
enum class Cast : uint8_t { kUnicast, kMulticast, kBroadcast, kCount };

constexpr size_t kCasts = static_cast<size_t>(Cast::kCount);

constexpr Cast cast_of(Mac destination) {
    if (destination.is_broadcast()) {
        return Cast::kBroadcast;
    }
    return destination.is_group() ? Cast::kMulticast : Cast::kUnicast;
}

/** Egress queues of a port. */
constexpr uint32_t kQueues = 8;

/** Frames and octets on the wire, without the frame check sequence. */
struct PortCounters {
    uint64_t rx_frames = 0;
    uint64_t rx_octets = 0;
    uint64_t tx_frames = 0;
    uint64_t tx_octets = 0;
    uint64_t tx_too_long = 0;    /**< frames that were not sent because they are longer than the port takes */
    uint64_t tx_mirror_down = 0; /**< copies of mirrors that were not sent because the port was down */
    std::array<uint64_t, kCasts> rx_casts{};
    std::array<uint64_t, kCasts> tx_casts{};
    std::array<uint64_t, kDropReasons> drops{};

    uint64_t dropped(Drop reason) const { return drops[static_cast<size_t>(reason)]; }
};

/** On the host it has 1024 octets, so that it is found by a shift: that happens several times for each frame. */
struct Port {
    static constexpr uint32_t kLoopbackModes = 3; /**< none, in the port's MAC, at its line side */
    static constexpr size_t kVlanControls = 32;

    bool enabled = true;   /**< administrative state */
    bool link = false;     /**< the far end is there, whatever the administrative state */
    bool cable = false;    /**< a cable is plugged in */
    bool jumbo = true;     /**< takes and sends frames of more than kMaxPlainFrameBytes */
    uint32_t loopback = 0; /**< not 0: frames that would leave are received again */
    Phy phy;
    bool eee = false; /**< energy-efficient Ethernet */
    LearnMode learning = kNormalLearning;
    PortSet egress = kAllPorts;     /**< where frames from this port may go */
    Vid pvid = kMinVid;             /**< VLAN of untagged and priority-tagged frames */
    uint32_t untagged_priority = 0; /**< of untagged frames, and of all frames that the port does not trust */
    Trust trust = Trust::kDot1p;
    PriorityRemap remap;
    PortTags tags;
    std::array<int32_t, kVlanControls> vlan_controls{};
    PortGroupRules groups;
    Limiter policer; /**< of all received frames */
    PortStorm storm;
    Violations violations;
    PortCounters counters;

    bool is_up() const { return enabled && (link || loopback != 0); }
    size_t longest_frame() const { return jumbo ? kMaxFrameBytes : kMaxPlainFrameBytes; }
};

}  // namespace vdevice::chip
