// Trunks and what hangs on them: the addresses learned behind them, and the ports that wait on standby.
#include "vdevice/chip/switch.h"

namespace vdevice::chip {

Status Switch::create_trunk(int64_t trunk) {
    const Status status = tables_.trunks.create(trunk);
    refresh_trunks();
    return status;
}

// The software empties a trunk by destroying it and creating it anew when its last link has gone; what it said of the
// members still holds then. A trunk that still has a link is destroyed for good.
Status Switch::destroy_trunk(int64_t trunk) {
    const Status status = tables_.trunks.destroy(trunk);
    if (status != Status::kOk) {
        return status;
    }
    release_addresses(trunk, PortSet{});
    tables_.trunks.forget_configured(trunk, tables_.up);
    refresh_trunks();
    return status;
}

void Switch::destroy_all_trunks() {
    for (int trunk = 0; trunk < TrunkTable::kTrunks; ++trunk) {
        destroy_trunk(trunk);
    }
    tables_.trunks.forget_missing();
    refresh_trunks();
}

Status Switch::set_trunk(int64_t trunk, const std::vector<int> &ports) {
    const Status status = tables_.trunks.set_members(trunk, ports);
    if (status != Status::kOk) {
        return status;
    }
    refresh_trunks();
    // What was learned on a port before it became a member is behind the trunk now.
    tables_.macs.for_each([&](MacEntry &entry) {
        if (entry.trunk == MacEntry::kNoTrunk) {
            entry.trunk = trunk_of(entry.port);
        }
    });
    return status;
}

Status Switch::set_trunk_configured(int64_t trunk, const std::vector<int> &ports) {
    const Status status = tables_.trunks.set_configured(trunk, ports);
    if (const Trunk *told = tables_.trunks.find(trunk); status == Status::kOk && told != nullptr) {
        release_addresses(trunk, told->ports());
        refresh_trunks();
    }
    return status;
}

void Switch::refresh_trunks() {
    tables_.standby = tables_.trunks.standby();
    for (int port = 0; port < kPorts; ++port) {
        tables_.trunks_of_ports[static_cast<size_t>(port)] = tables_.trunks.trunk_of(port);
    }
}

/** Takes the trunk's addresses from it that were seen on other ports than those it keeps. */
void Switch::release_addresses(int64_t trunk, const PortSet &kept) {
    const auto is_released = [&](const MacEntry &entry) {
        const bool is_kept = entry.is_given_to_trunk ? !kept.empty() : kept.has(entry.port);
        return entry.trunk == trunk && !is_kept;
    };
    tables_.macs.remove_if([&](const MacEntry &entry) { return !entry.is_static && is_released(entry); });
    tables_.macs.for_each([&](MacEntry &entry) {
        // A static address that was given to the trunk itself waits for it to be there again.
        if (is_released(entry) && !entry.is_given_to_trunk) {
            entry.trunk = MacEntry::kNoTrunk;
        }
    });
}

void Switch::tick(Time now) {
    tables_.macs.age(now);
    tables_.trunks.forget_missing();
}

}  // namespace vdevice::chip
