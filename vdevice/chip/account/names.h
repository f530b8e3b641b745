// The words for what is decided about a frame, in the order of the enumerators. docs/reference/explain.md has the same
// rows; a test compares the two.
#pragma once

#include <stddef.h>
#include <array>

#include "vdevice/chip/account/account.h"
#include "vdevice/chip/frame/wording.h"

namespace vdevice::chip {

template <typename Enum>
struct Wordings;

template <>
struct Wordings<ChosenBy> {
    static constexpr std::array<Wording, 6> kRows = {{
        {"port", "the port's own"},
        {"tag", "from the tag"},
        {"translation", "by an ingress translation of the tag's VLAN"},
        {"subnet", "by the subnet of the source address"},
        {"double_tag", "by a double-tag entry for the customer's VLAN"},
        {"dscp", "by the DSCP"},
    }};
};

template <>
struct Wordings<CpuReason> {
    static constexpr std::array<Wording, 7> kRows = {{
        {"none", "not for the CPU alone"},
        {"rule", "a rule, or the port's action without a rule, gives it to the CPU alone"},
        {"reserved_mac", "its destination is a reserved address"},
        {"trap", "its protocol is trapped"},
        {"unknown_source", "the CPU decides whether its source is let in"},
        {"snooped", "it is an IGMP or MLD message, which the CPU snoops"},
        {"unknown_group", "its group has no entry"},
    }};
};

template <>
struct Wordings<Way> {
    static constexpr std::array<Wording, 7> kRows = {{
        {"none", "nowhere"},
        {"directed", "to the ports that the CPU named"},
        {"to_cpu", "to the CPU alone"},
        {"redirected", "to the ports that a rule named"},
        {"entry", "to where its destination is"},
        {"group", "to the ports of its group"},
        {"flooded", "flooded"},
    }};
};

template <>
struct Wordings<Learned> {
    static constexpr std::array<Wording, 7> kRows = {{
        {"not", "not learned"},
        {"known", "known here"},
        {"new", "learned"},
        {"moved", "moved here"},
        {"static", "not learned: it has a static entry"},
        {"no_room", "not learned: its bucket of the table is full"},
        {"over_limit", "not learned"},
    }};
};

template <>
struct Wordings<NotLearned> {
    static constexpr std::array<Wording, 6> kRows = {{
        {"group_source", "it is a group address"},
        {"port", "the port does not learn"},
        {"device_limit", "the limit of the device is reached"},
        {"vlan_limit", "the limit of the VLAN is reached"},
        {"port_limit", "the limit of the port is reached"},
        {"trunk_limit", "the limit of the trunk is reached"},
    }};
};

template <>
struct Wordings<Found> {
    static constexpr std::array<Wording, 5> kRows = {{
        {"nothing", "unknown"},
        {"port", "known on port"},
        {"trunk", "known behind trunk"},
        {"group", "a group with an entry"},
        {"filter", "filtered"},
    }};
};

template <>
struct Wordings<Unsent> {
    static constexpr std::array<Wording, 9> kRows = {{
        {"not_wanted", "the frame is not for it"},
        {"ingress", "the frame came in there"},
        {"same_trunk", "the frame came in by its trunk"},
        {"not_member", "not a member of the VLAN"},
        {"down", "disabled or without a link"},
        {"standby", "on standby in its trunk"},
        {"stp_blocked", "does not forward in the VLAN's spanning-tree group"},
        {"isolated", "not in the ingress port's egress set"},
        {"other_member", "another port of its trunk has the copy"},
    }};
};

template <>
struct Wordings<Lost> {
    static constexpr std::array<Wording, 5> kRows = {{
        {"too_long", "too long for the port"},
        {"queue_full", "no room in its queue"},
        {"flushed", "the port went down while it waited"},
        {"loopback", "looped back too often"},
        {"mirror_down", "the mirror's port is down"},
    }};
};

template <>
struct Wordings<Fate> {
    static constexpr std::array<Wording, 3> kRows = {{
        {"sent", "sent"},
        {"queued", "waits in its queue"},
        {"lost", "lost"},
    }};
};

template <>
struct Wordings<Form> {
    static constexpr std::array<Wording, 6> kRows = {{
        {"untagged", "untagged"},
        {"tagged", "tagged"},
        {"for_cpu", "with the receive tag"},
        {"as_it_came", "as it came in"},
        {"as_it_leaves", "as it leaves"},
        {"as_cpu_made_it", "as the CPU made it"},
    }};
};

template <>
struct Wordings<Origin> {
    static constexpr std::array<Wording, 4> kRows = {{
        {"switched", "the frame"},
        {"ingress_mirror", "a mirror's copy of what comes in"},
        {"egress_mirror", "a mirror's copy of what leaves"},
        {"flow_mirror", "a mirror's copy of what a rule selects"},
    }};
};

template <>
struct Wordings<StpState> {
    static constexpr std::array<Wording, 5> kRows = {{
        {"disabled", "disabled"},
        {"blocking", "blocking"},
        {"listening", "listening"},
        {"learning", "learning"},
        {"forwarding", "forwarding"},
    }};
};

template <>
struct Wordings<MissAction> {
    static constexpr std::array<Wording, 4> kRows = {{
        {"none", "goes on"},
        {"drop", "dropped"},
        {"copy_to_cpu", "the CPU gets a copy"},
        {"to_cpu", "for the CPU alone"},
    }};
};

/** The text of a word of a table that JSON names. */
template <typename Enum>
constexpr const Wording &wording(Enum value) {
    return Wordings<Enum>::kRows[static_cast<size_t>(value)];
}

}  // namespace vdevice::chip
