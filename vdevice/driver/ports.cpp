// The physical attributes of ports.
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::Phy;
using chip::Port;
using chip::Status;

// Cable diagnosis: what is told of a wire pair.
constexpr uint32_t kPairGood = 0;
constexpr uint32_t kPairOpen = 1;
constexpr uint32_t kCableMetres = 2;  // every cable of the virtual device

uint32_t flag(bool value) {
    return value ? 1 : 0;
}

uint32_t crossover_of(const Port &port) {
    return static_cast<uint32_t>(port.phy.crossover());
}

}  // namespace

int32_t Driver::user_port_enable_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t enable) {
    return on_chip(unit, zero, [&] { return chip_.set_enabled(port, enable != 0); });
}

int32_t Driver::user_port_enable_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable) {
    return read_port(unit, zero, port, enable, [](const Port &state) { return flag(state.enabled); });
}

int32_t Driver::user_port_link_status_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *status) {
    return read_port(unit, zero, port, status, [](const Port &state) { return flag(state.is_up()); });
}

// The fibre side of any port reports the port's link, whatever its medium: that is what the election of a group's
// management interface reads of copper ports too.
int32_t Driver::user_fiberport_link_status_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *status) {
    return user_port_link_status_get(unit, zero, port, status);
}

int32_t Driver::user_port_speed_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t speed, uint32_t /*mode*/) {
    return write_port(unit, zero, port, [&](Port &state) { return state.phy.set_speed(speed); });
}

int32_t Driver::user_port_speed_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *speed) {
    return read_port(unit, zero, port, speed, [](const Port &state) { return state.phy.speed(); });
}

int32_t Driver::user_port_speed_max(uint32_t unit, uint32_t zero, int32_t port, uint32_t *speed) {
    return read_port(unit, zero, port, speed, [](const Port &state) { return state.phy.max_speed(); });
}

int32_t Driver::user_port_duplex_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t duplex, uint32_t /*mode*/) {
    return write_port(unit, zero, port, [&](Port &state) { return state.phy.set_duplex(duplex); });
}

int32_t Driver::user_port_duplex_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *duplex) {
    return read_port(unit, zero, port, duplex,
                     [](const Port &state) { return state.phy.full_duplex() ? Phy::kFullDuplex : Phy::kHalfDuplex; });
}

int32_t Driver::user_port_autoneg_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t enable) {
    return write_port(unit, zero, port, [&](Port &state) {
        state.phy.set_autoneg(enable != 0);
        return Status::kOk;
    });
}

int32_t Driver::user_port_autoneg_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable) {
    return read_port(unit, zero, port, enable, [](const Port &state) { return flag(state.phy.autoneg()); });
}

int32_t Driver::user_port_ability_advert_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t abilities) {
    return write_port(unit, zero, port, [&](Port &state) {
        state.phy.set_abilities(abilities);
        return Status::kOk;
    });
}

int32_t Driver::user_port_ability_advert_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *abilities) {
    return read_port(unit, zero, port, abilities, [](const Port &state) { return state.phy.abilities(); });
}

int32_t Driver::user_port_loopback_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t mode) {
    return write_port(unit, zero, port, [&](Port &state) {
        if (mode >= Port::kLoopbackModes || port == chip::Switch::kCpuPort) {
            return Status::kBadArgument;
        }
        state.loopback = mode;
        return Status::kOk;
    });
}

int32_t Driver::user_port_loopback_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode) {
    return read_port(unit, zero, port, mode, [](const Port &state) { return state.loopback; });
}

int32_t Driver::user_port_pause_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t transmit, uint32_t receive) {
    return write_port(unit, zero, port, [&](Port &state) {
        state.phy.set_pause(transmit != 0, receive != 0);
        return Status::kOk;
    });
}

int32_t Driver::user_port_pause_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable) {
    return read_port(unit, zero, port, enable, [](const Port &state) { return flag(state.phy.pause()); });
}

int32_t Driver::user_port_pause_get_stat(uint32_t unit, uint32_t zero, int32_t port, uint32_t *status) {
    return read_port(unit, zero, port, status,
                     [](const Port &state) { return flag(state.is_up() && state.phy.pause()); });
}

int32_t Driver::user_port_jumboframe_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t value) {
    return write_port(unit, zero, port, [&](Port &state) {
        state.jumbo = value != 0;
        return Status::kOk;
    });
}

int32_t Driver::user_port_jumboframe_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *value) {
    return read_port(unit, zero, port, value, [](const Port &state) { return flag(state.jumbo); });
}

int32_t Driver::user_port_mdix_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t mode) {
    return write_port(unit, zero, port, [&](Port &state) { return state.phy.set_crossover(mode); });
}

int32_t Driver::user_port_mdix_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode) {
    if (chip::Switch::has_port(port) && chip_.port(port).phy.medium() != chip::Medium::kCopper) {
        return on_chip(unit, zero, [] { return Status::kWrongMedium; });
    }
    return read_port(unit, zero, port, mode, crossover_of);
}

int32_t Driver::user_port_link_medium_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *medium) {
    return read_port(unit, zero, port, medium,
                     [](const Port &state) { return static_cast<uint32_t>(state.phy.medium()); });
}

int32_t Driver::user_eee_portEnable_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t enable) {
    return write_port(unit, zero, port, [&](Port &state) {
        state.eee = enable != 0;
        return Status::kOk;
    });
}

int32_t Driver::user_eee_portEnable_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable) {
    return read_port(unit, zero, port, enable, [](const Port &state) { return flag(state.eee); });
}

int32_t Driver::User_port_cablediag(uint32_t unit, uint32_t zero, int32_t port, netlink_cable_diag_t *result) {
    return on_chip(unit, zero, [&] {
        if (result == nullptr) {
            return Status::kBadArgument;
        }
        if (!chip::Switch::has_port(port)) {
            return Status::kNoPort;
        }
        const Port &state = chip_.port(port);
        if (state.phy.medium() != chip::Medium::kCopper) {
            return Status::kWrongMedium;
        }
        for (size_t pair = 0; pair < NETLINK_CABLE_PAIRS; ++pair) {
            result->state[pair] = state.cable ? kPairGood : kPairOpen;
            result->length[pair] = state.cable ? kCableMetres : 0;
        }
        return Status::kOk;
    });
}

}  // namespace vdevice::driver
