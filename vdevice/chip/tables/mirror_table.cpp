// Changes of mirror sessions, checked.
#include "vdevice/chip/tables/mirror_table.h"

#include <optional>

namespace vdevice::chip {
namespace {

/** The driver's number for the directions that a source port is mirrored in. */
struct Mode {
    uint32_t number;
    bool ingress;
    bool egress;
};

constexpr Mode kModes[] = {{0, false, false}, {2, true, false}, {4, false, true}, {6, true, true}};

std::optional<Mode> find_mode(uint32_t number) {
    for (const Mode &mode : kModes) {
        if (mode.number == number) {
            return mode;
        }
    }
    return std::nullopt;
}

}  // namespace

Status MirrorTable::set_port(uint32_t session, int port, int destination, uint32_t mode) {
    if (session >= kSessions) {
        return Status::kMirrorSession;
    }
    if (!chip_ports_.has(port) || !chip_ports_.has(destination)) {
        return Status::kNoPort;
    }
    const std::optional<Mode> directions = find_mode(mode);
    if (!directions) {
        return Status::kBadArgument;
    }
    Mirror &mirror = sessions_[session];
    if (!directions->ingress && !directions->egress) {
        return stop(mirror, port, destination);
    }
    if (port == destination || destination == cpu_port_) {
        return Status::kMirrorDestination;
    }
    if (mirror.destination != Mirror::kNone && mirror.destination != destination) {
        return Status::kMirrorBusy;
    }
    mirror.destination = destination;
    mirror.ingress.put(port, directions->ingress);
    mirror.egress.put(port, directions->egress);
    return Status::kOk;
}

Status MirrorTable::stop(Mirror &mirror, int port, int destination) {
    if (mirror.destination != destination || !mirror.sources().has(port)) {
        return Status::kMirrorMissing;
    }
    mirror.ingress.remove(port);
    mirror.egress.remove(port);
    if (mirror.sources().empty()) {
        mirror.destination = Mirror::kNone;
    }
    if (!mirror.is_used()) {
        mirror = {};
    }
    return Status::kOk;
}

Status MirrorTable::set_flow_destination(uint32_t session, int port) {
    if (session >= kSessions) {
        return Status::kMirrorSession;
    }
    if (!chip_ports_.has(port)) {
        return Status::kNoPort;
    }
    if (port == cpu_port_) {
        return Status::kMirrorDestination;
    }
    sessions_[session].flow_destination = port;
    return Status::kOk;
}

Status MirrorTable::check_disabled(uint32_t session, bool disabled) const {
    if (session >= kSessions) {
        return Status::kMirrorSession;
    }
    return disabled && !sessions_[session].is_used() ? Status::kMirrorMissing : Status::kOk;
}

Status MirrorTable::set_disabled(uint32_t session, bool disabled) {
    const Status status = check_disabled(session, disabled);
    if (status == Status::kOk) {
        sessions_[session].disabled = disabled;
    }
    return status;
}

}  // namespace vdevice::chip
