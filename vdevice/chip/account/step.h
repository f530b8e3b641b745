// The steps of a frame's way as they were decided, each a type of its own with what was decided.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <optional>
#include <variant>
#include <vector>

#include "vdevice/chip/fields/field_processor.h"
#include "vdevice/chip/frame/switch_tag.h"
#include "vdevice/chip/pipeline/passage.h"
#include "vdevice/chip/tables/stp_groups.h"

namespace vdevice::chip {

/** The frame came in. */
struct CameIn {
    int port;
    size_t octets;
    bool is_looped; /**< by loopback, not from outside */
};

/** The port's limit on all that it receives. */
struct IngressLimited {
    bool is_within;
};

/** The switch tag of a frame from the CPU. */
struct CpuTagRead {
    Opcode opcode;
    PortSet ports; /**< that it names */
};

struct PacketRead {
    bool is_version6;
    std::array<uint8_t, 16> source; /**< of version 4 the first four octets */
    std::array<uint8_t, 16> destination;
    uint8_t protocol;
    std::optional<uint8_t> dscp;
    std::optional<std::array<uint16_t, 2>> ports; /**< source and destination, of TCP, UDP and SCTP */
};

struct HeaderRead {
    Mac destination;
    Mac source;
    std::optional<uint16_t> tci; /**< of the tag that the port reads */
    uint16_t type;               /**< behind that tag; may be another tag's, or a length */
    std::optional<PacketRead> packet;
};

/** The filter of attacks is on, and the frame is none. */
struct AttackFilterPassed {};

struct VlanChosen {
    Vid vid;
    ChosenBy by;
};

struct PriorityChosen {
    uint32_t priority;
    ChosenBy by;
    std::optional<uint8_t> dscp; /**< that the frame leaves with, if it is another one */
};

struct RuleMatched {
    uint32_t entry;
    std::vector<Action> actions;
};

/** There are rules or an action for frames that match none, and the frame matched none. */
struct NoRuleMatched {
    MissAction action;
};

struct Metered {
    uint32_t meter;
    bool is_within;
};

/** What the rules have made of VLAN, priority and DSCP, if it is something else. */
struct ChangedByRules {
    Vid vid;
    uint32_t priority;
    std::optional<uint8_t> dscp;
};

struct ForCpuAlone {
    CpuReason reason;
};

/** The VLAN exists and has the ingress port. */
struct VlanEntered {
    Vid vid;
};

/** The state of the ingress port in the VLAN's spanning-tree group. */
struct SpanningTreeAsked {
    StpState state;
};

/** Why a source was not learned. */
enum class NotLearned : uint8_t {
    kGroupSource, /**< a group address is no source */
    kPort,        /**< the port does not learn */
    kDeviceLimit,
    kVlanLimit,
    kPortLimit,
    kTrunkLimit,
};

struct SourceLearned {
    Learned learned;
    std::optional<NotLearned> why; /**< of kNot and kOverLimit */
};

/** What the MAC table knows of the destination. */
enum class Found : uint8_t {
    kNothing,
    kPort,
    kTrunk,
    kGroup,
    kFilter, /**< frames to it are dropped */
};

struct DestinationLookedUp {
    Found found;
    int place; /**< port or trunk */
    bool is_static;
};

/** There is a limit on frames of the type on the ingress port. */
struct StormLimited {
    StormType type;
    bool is_within;
};

struct WayChosen {
    Way way;
};

struct Dropped {
    Drop reason;
};

using Step = std::variant<CameIn, IngressLimited, CpuTagRead, HeaderRead, AttackFilterPassed, VlanChosen,
                          PriorityChosen, RuleMatched, NoRuleMatched, Metered, ChangedByRules, ForCpuAlone, VlanEntered,
                          SpanningTreeAsked, SourceLearned, DestinationLookedUp, StormLimited, WayChosen, Dropped>;

}  // namespace vdevice::chip
