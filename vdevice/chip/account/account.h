// The account of a frame's way: its steps, its copies, and why the other ports have none.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <optional>
#include <utility>
#include <vector>

#include "vdevice/chip/account/step.h"
#include "vdevice/chip/pipeline/egress_limits.h"
#include "vdevice/chip/pipeline/tables.h"
#include "vdevice/chip/pipeline/watcher.h"

namespace vdevice::chip {

enum class Fate : uint8_t {
    kSent,
    kQueued, /**< it leaves when the port's shaper, its line and the frames before it let it */
    kLost,
};

/** What stands behind the addresses of a copy, before what the frame carries. */
enum class Form : uint8_t {
    kUntagged,
    kTagged,      /**< a VLAN tag of the port's type */
    kForCpu,      /**< the receive tag, and a VLAN tag behind it */
    kAsItCame,    /**< as it came in: a mirror's copy of a received frame */
    kAsItLeaves,  /**< as another port sends it: a mirror's copy of a sent frame */
    kAsCpuMadeIt, /**< without the CPU's tag, else unchanged */
};

/** The trunk that a copy leaves by, and the hash that chose the member. */
struct TrunkChoice {
    int trunk;
    uint32_t hash;
};

struct Copy {
    int port;
    Fate fate;
    Lost lost; /**< of kLost */
    Origin origin;
    uint32_t priority;
    size_t queue;
    size_t octets;
    Form form;
    uint16_t tpid; /**< of kTagged and kForCpu */
    uint16_t tci;
    std::optional<TrunkChoice> trunk;
};

struct Account {
    Time time{};
    int ingress = 0;
    std::optional<Vid> vid; /**< in which it goes on, if it came so far */
    std::vector<Step> steps;
    std::vector<Copy> copies;
    std::vector<std::pair<int, Unsent>> unsent; /**< of each port of the chip without a copy */
    std::optional<Drop> drop;
};

/** Of a frame that the CPU directed to ports: why each of them cannot have it. */
std::vector<Drop> directed_drops(const Tables &tables, const Passage &p);
/** The steps up to where its way ended. To be called when the frame passes. */
std::vector<Step> steps_of(const Tables &tables, const Passage &p);
/** A copy of the frame, on its way through the port. */
Copy copy_of(const Tables &tables, int port, const Frame &copy, const Dispatch &dispatch, Fate fate);
/** As steps_of(), with the copies that were noted on the way. */
Account account_of(const Tables &tables, const Passage &p, std::vector<Copy> copies);

}  // namespace vdevice::chip
