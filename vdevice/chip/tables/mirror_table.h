// The mirror sessions: the ports whose frames are copied, and the port that gets the copies.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>

#include "vdevice/chip/frame/port_set.h"
#include "vdevice/chip/frame/status.h"

namespace vdevice::chip {

struct Mirror {
    static constexpr int kNone = -1;

    int destination = kNone;      /**< of copies of the source ports' frames */
    PortSet ingress;              /**< ports whose frames are copied as they come in */
    PortSet egress;               /**< ports whose frames are copied as they leave */
    int flow_destination = kNone; /**< of copies of the frames that rules select */
    bool disabled = false;

    PortSet sources() const { return ingress | egress; }
    bool is_used() const { return destination != kNone || flow_destination != kNone; }
};

class MirrorTable {
  public:
    static constexpr uint32_t kSessions = 4;

    MirrorTable(const PortSet &chip_ports, int cpu_port) : chip_ports_{chip_ports}, cpu_port_{cpu_port} {}

    /** The session must exist. */
    const Mirror &session(uint32_t number) const { return sessions_[number]; }

    /**
     * Copies a port's frames to the destination, in the directions that the driver's mode says, or stops it. All
     * sources of a session have one destination.
     */
    Status set_port(uint32_t session, int port, int destination, uint32_t mode);
    Status set_flow_destination(uint32_t session, int port);
    /** A disabled session keeps its ports but copies nothing. A session without ports cannot be disabled. */
    Status set_disabled(uint32_t session, bool disabled);
    /** What set_disabled() would return. */
    Status check_disabled(uint32_t session, bool disabled) const;
    void clear() { sessions_ = {}; }

    bool enabled() const { return enabled_; }
    /** While off, no session copies anything. */
    void set_enabled(bool enabled) { enabled_ = enabled; }

    /** Calls visit(destination) for each copy that is due when a frame comes in on the port. */
    template <typename Visit>
    void for_each_ingress_copy(int port, Visit visit) const {
        for_each_copy(&Mirror::ingress, port, visit);
    }
    template <typename Visit>
    void for_each_egress_copy(int port, Visit visit) const {
        for_each_copy(&Mirror::egress, port, visit);
    }
    /** The port that gets copies of the session's flows, or Mirror::kNone; also for a number without a session. */
    int flow_destination(uint32_t session) const {
        return session < kSessions && copies(sessions_[session]) ? sessions_[session].flow_destination : Mirror::kNone;
    }

  private:
    bool copies(const Mirror &mirror) const { return enabled_ && !mirror.disabled; }
    template <typename Visit>
    void for_each_copy(PortSet Mirror::*direction, int port, Visit visit) const {
        if (!enabled_) {
            return;
        }
        for (const Mirror &mirror : sessions_) {
            if ((mirror.*direction).has(port) && copies(mirror)) {
                visit(mirror.destination);
            }
        }
    }
    Status stop(Mirror &mirror, int port, int destination);

    PortSet chip_ports_;
    int cpu_port_;
    bool enabled_ = false;
    std::array<Mirror, kSessions> sessions_{};
};

}  // namespace vdevice::chip
