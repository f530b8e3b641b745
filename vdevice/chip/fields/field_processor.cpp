// Carries out the actions of the rules that a frame meets, or the action for frames that meet none.
#include "vdevice/chip/fields/field_processor.h"

namespace vdevice::chip {
namespace {

void miss(MissAction action, FieldVerdict &verdict) {
    if (action == MissAction::kDrop) {
        verdict.drop = Drop::kRule;
    }
    verdict.copy_to_cpu = action == MissAction::kCopyToCpu;
    verdict.to_cpu_only = action == MissAction::kToCpu;
}

}  // namespace

void FieldProcessor::reset() {
    table_ = {};
    meters_.clear();
    counters_ = {};
    miss_actions_ = {};
}

void FieldProcessor::clear_counts() {
    table_.clear_matches();
    meters_.clear_counts();
    counters_.clear();
}

Status FieldProcessor::remove_meter_of(uint32_t entry) {
    const FieldEntry *found = table_.find(entry);
    if (found == nullptr) {
        return FieldTable::absence_of(entry);
    }
    bool removed = false;
    for (uint32_t meter = 0; meter < MeterTable::kMeters; ++meter) {
        removed = (found->names_meter(meter) && meters_.remove(meter)) || removed;
    }
    return removed ? Status::kOk : Status::kMeterMissing;
}

void FieldProcessor::judge(Time now, const FieldFrame &frame, FieldVerdict &verdict) {
    verdict.tci = frame.tci;
    const auto match = table_.has_rules() ? table_.match(FieldKey{frame}) : std::nullopt;
    if (match) {
        verdict.rules = match->rules;
        carry_out(match->actions, now, frame, verdict);
    } else {
        miss(miss_action(frame.ingress), verdict);
    }
}

void FieldProcessor::carry_out(const ActionSet &actions, Time now, const FieldFrame &frame, FieldVerdict &verdict) {
    if (const Action *counter = actions.find(ActionKind::kCounter)) {
        counters_.add(counter->value, frame.octets);
    }
    if (actions.find(ActionKind::kDrop) != nullptr) {
        verdict.drop = Drop::kRule;
        return;
    }
    if (const Action *meter = actions.find(ActionKind::kMeter);
        meter != nullptr && !meters_.passes(meter->value, frame.octets, now)) {
        verdict.drop = Drop::kMeter;
        return;
    }
    verdict.copy_to_cpu = actions.find(ActionKind::kCopyToCpu) != nullptr;
    verdict.to_cpu_only = actions.find(ActionKind::kToCpu) != nullptr;
    if (const Action *vlan = actions.find(ActionKind::kVlan)) {
        verdict.tci = with_bits(verdict.tci, kVidMask, vlan->value);
    }
    if (const Action *priority = actions.find(ActionKind::kPriority)) {
        verdict.tci = with_bits(verdict.tci, kPcpMask, priority->value << kPcpShift);
    }
    if (const Action *dscp = actions.find(ActionKind::kDscp)) {
        verdict.dscp = static_cast<uint8_t>(dscp->value);
    }
    if (const Action *redirect = actions.find(ActionKind::kRedirect)) {
        verdict.redirect = redirect->ports;
    }
    if (const Action *mirror = actions.find(ActionKind::kMirror)) {
        verdict.mirror = mirror->value;
    }
}

}  // namespace vdevice::chip
