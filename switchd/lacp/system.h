// Link aggregation control (IEEE 802.1AX): a system, its ports, and what it agrees on with its partners. Without I/O
// and clock: the time and frames are handed in, frames leave through a function.
#pragma once

#include <stdint.h>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <utility>

#include "switchd/lacp/port.h"
#include "switchd/lacp/selection.h"

namespace switchd::lacp {

/** What the ports with one key have agreed on with their partner. */
struct GroupStatus {
    std::optional<PartnerGroup> partner;
    std::set<uint16_t> distributing; /**< the ports that the group's frames leave by */

    bool operator==(const GroupStatus &) const = default;
};

class System {
  public:
    /** Sends a frame by a port, whole and untagged. It must not call the system. */
    using Transmit = std::function<void(uint16_t port, std::span<const uint8_t> frame)>;

    System(const SystemId &id, Transmit transmit) : id_{id}, transmit_{std::move(transmit)} {}

    [[nodiscard]] const SystemId &id() const { return id_; }

    /** Adds a port, whose link is down until it is set, or changes the settings of one. Ports count from 1. */
    void set_port(uint16_t port, const PortSettings &settings, Time now);
    /**
     * Adds a port on which a predecessor of this process has distributed, with what it knew of the partner. If the
     * first link to be set is up, the port goes on distributing, until the partner contradicts or is silent for its
     * timeout.
     */
    void resume_port(uint16_t port, const PortSettings &settings, const Info &partner, Time now);
    /** Removes a port. The partner is told that it is no longer in use. */
    void remove_port(uint16_t port, Time now);

    /** The link as it is now; may be set again and again. */
    void set_link(uint16_t port, bool is_up, bool is_full_duplex, Time now);
    /**
     * Takes a frame, which begins with its destination address and has no tag.
     *
     * @return whether it was a LACPDU or a marker, or pretended to be one, so that nobody else need see it
     */
    bool receive(uint16_t port, std::span<const uint8_t> frame, Time now);
    /** Does what time asks for; to be called when the next deadline has come. */
    void tick(Time now);
    [[nodiscard]] std::optional<Time> next_deadline() const;

    /** Null for a port that the system has not. */
    [[nodiscard]] const PortStatus *find(uint16_t port) const;
    /** What can be read of the ports with this key. */
    [[nodiscard]] GroupStatus group(uint16_t key) const;

  private:
    Port *port_of(uint16_t port);
    void take(Port &port, const Lacpdu &pdu, Time now);
    void take(uint16_t number, Port &port, const Marker &marker);
    void run(Time now);
    void transmit(uint16_t number, Port &port, Time now);

    SystemId id_;
    Transmit transmit_;
    std::map<uint16_t, Port> ports_;
    std::map<uint16_t, std::optional<PartnerGroup>> partners_; /**< of each key */
};

}  // namespace switchd::lacp
