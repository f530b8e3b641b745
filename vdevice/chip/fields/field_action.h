// What a rule of the field processor does with the frames that meet it. docs/reference/field-processor.md shows the
// same rows; a test compares the two.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <span>

#include "vdevice/chip/fields/field.h"
#include "vdevice/chip/frame/port_set.h"
#include "vdevice/chip/frame/status.h"

namespace vdevice::chip {

enum class ActionKind : uint8_t {
    kDscp,
    kPriority,
    kRedirect,
    kMeter,
    kPermit,
    kDrop,
    kCopyToCpu,
    kToCpu,
    kVlan,
    kCounter,
    kMirror,
    kCount,
};

constexpr size_t kActionKinds = static_cast<size_t>(ActionKind::kCount);

struct Action {
    uint32_t code = 0;
    ActionKind kind = ActionKind::kPermit;
    uint32_t value = 0; /**< the new DSCP, priority or VLAN, or which meter, counter or mirror session */
    PortSet ports;      /**< of a redirection */

    friend bool operator==(const Action &, const Action &) = default;
};

/** The two parameters of an action as the driver gets them. */
struct ActionParameters {
    FieldWords words{};
    uint32_t second = 0;
};

struct ActionInfo {
    uint32_t code;
    ActionKind kind;
    const char *name;
    /** Puts the parameters into the action, or refuses them. */
    Status (*take)(const ActionParameters &parameters, Action &action);
};

std::span<const ActionInfo> action_table();

/** The name in the action's row. */
const char *name(const Action &action);

/** Makes the action; an unknown code and parameters out of range are refused. */
Status make_action(uint32_t code, const ActionParameters &parameters, Action &action);

/** The actions for one frame: one of each kind, or null. */
class ActionSet {
  public:
    /** Ignored if there is an action of its kind already. */
    void add(const Action &action) {
        const Action *&slot = actions_[static_cast<size_t>(action.kind)];
        slot = slot == nullptr ? &action : slot;
    }
    const Action *find(ActionKind kind) const { return actions_[static_cast<size_t>(kind)]; }

  private:
    std::array<const Action *, kActionKinds> actions_{};
};

}  // namespace vdevice::chip
