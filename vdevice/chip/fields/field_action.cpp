// The table of actions: numbers, names, and how each reads its parameters.
#include "vdevice/chip/fields/field_action.h"

#include <algorithm>

#include "vdevice/chip/fields/field_counters.h"
#include "vdevice/chip/fields/meter.h"
#include "vdevice/chip/frame/chip_ports.h"
#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/tables/dscp_map.h"
#include "vdevice/chip/tables/mirror_table.h"

namespace vdevice::chip {
namespace {

Status take_nothing(const ActionParameters & /*parameters*/, Action & /*action*/) {
    return Status::kOk;
}

/** The first word, if it is below the limit. */
template <uint32_t limit, Status refusal>
Status take_word(const ActionParameters &parameters, Action &action) {
    action.value = parameters.words[0];
    return action.value < limit ? Status::kOk : refusal;
}

Status take_vid(const ActionParameters &parameters, Action &action) {
    action.value = parameters.words[0];
    return action.value >= kMinVid && action.value <= kMaxVid ? Status::kOk : Status::kVlanRange;
}

Status take_meter(const ActionParameters &parameters, Action &action) {
    action.value = parameters.second;
    return action.value < MeterTable::kMeters ? Status::kOk : Status::kMeterRange;
}

Status take_port(const ActionParameters &parameters, Action &action) {
    if (!is_chip_port(parameters.words[0])) {
        return Status::kNoPort;
    }
    action.ports = PortSet::of(static_cast<int>(parameters.words[0]));
    return Status::kOk;
}

Status take_ports(const ActionParameters &parameters, Action &action) {
    action.ports = PortSet::from_words(parameters.words.data());
    return action.ports.is_within(kAllPorts) ? Status::kOk : Status::kNoPort;
}

constexpr ActionInfo kActionTable[] = {
    {1, ActionKind::kDscp, "set_dscp", take_word<kDscps, Status::kBadArgument>},
    {11, ActionKind::kPriority, "set_priority", take_word<kPriorities, Status::kBadArgument>},
    {30, ActionKind::kRedirect, "redirect_port", take_port},
    {33, ActionKind::kRedirect, "redirect_ports", take_ports},
    {53, ActionKind::kMeter, "meter", take_meter},
    {200, ActionKind::kPermit, "permit", take_nothing},
    {201, ActionKind::kDrop, "drop", take_nothing},
    {202, ActionKind::kCopyToCpu, "copy_to_cpu", take_nothing},
    {203, ActionKind::kToCpu, "to_cpu", take_nothing},
    {204, ActionKind::kVlan, "set_vlan", take_vid},
    {205, ActionKind::kCounter, "count", take_word<FieldCounters::kCounters, Status::kCounterRange>},
    {206, ActionKind::kMirror, "mirror", take_word<MirrorTable::kSessions, Status::kMirrorSession>},
};

const ActionInfo *find(uint32_t code) {
    const auto *row = std::find_if(std::begin(kActionTable), std::end(kActionTable),
                                   [&](const ActionInfo &info) { return info.code == code; });
    return row == std::end(kActionTable) ? nullptr : row;
}

}  // namespace

std::span<const ActionInfo> action_table() {
    return kActionTable;
}

const char *name(const Action &action) {
    const ActionInfo *info = find(action.code);
    return info == nullptr ? "unknown" : info->name;
}

Status make_action(uint32_t code, const ActionParameters &parameters, Action &action) {
    const ActionInfo *info = find(code);
    if (info == nullptr) {
        return Status::kFieldAction;
    }
    Action made;
    made.code = code;
    made.kind = info->kind;
    const Status status = info->take(parameters, made);
    if (status == Status::kOk) {
        action = made;
    }
    return status;
}

}  // namespace vdevice::chip
