// The words for settings in JSON.
#pragma once

#include "vdevice/chip/queues/scheduler.h"
#include "vdevice/chip/rates/token_bucket.h"
#include "vdevice/chip/tables/group_rules.h"
#include "vdevice/chip/tables/port_priorities.h"
#include "vdevice/chip/tables/port_tags.h"

namespace vdevice::state {

inline const char *word(chip::Trust trust) {
    constexpr const char *kWords[] = {"port", "802.1p", "dscp", "both"};
    return kWords[static_cast<size_t>(trust)];
}

inline const char *word(chip::DoubleTag mode) {
    constexpr const char *kWords[] = {"off", "internal", "external"};
    return kWords[static_cast<size_t>(mode)];
}

inline const char *word(chip::GroupMiss miss) {
    constexpr const char *kWords[] = {"flood", "drop", "cpu"};
    return kWords[static_cast<size_t>(miss)];
}

inline const char *word(chip::SchedulerMode mode) {
    constexpr const char *kWords[] = {"strict", "round_robin", "weighted"};
    return kWords[static_cast<size_t>(mode)];
}

inline const char *word(chip::Counting counting) {
    return counting == chip::Counting::kFrames ? "frames" : "octets";
}

}  // namespace vdevice::state
