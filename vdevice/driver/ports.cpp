// Ports: their physical attributes, learning mode and egress set.
#include "vdevice/driver/driver.h"
#include "vdevice/driver/port_access.h"

namespace vdevice::driver {
namespace {

using chip::Phy;
using chip::Port;
using chip::PortSet;
using chip::Status;
using chip::Switch;

// Cable diagnosis: the states of a wire pair.
constexpr uint32_t kPairGood = 0;
constexpr uint32_t kPairOpen = 1;
constexpr uint32_t kCableMetres = 2;  // every cable of the virtual device

class Ports : public PortsCalls {
  public:
    explicit Ports(Switch &chip) : chip_{chip} {}

    Status user_port_speed_set(int32_t port, uint32_t speed, uint32_t /*mode*/) override {
        return chip_.change_port(port, [&](Port &state) { return state.phy.set_speed(speed); });
    }

    Status user_port_speed_get(int32_t port, uint32_t &speed) override {
        return read_port(chip_, port, speed, [](const Port &state) { return state.phy.speed(); });
    }

    Status user_port_speed_max(int32_t port, uint32_t &speed) override {
        return read_port(chip_, port, speed, [](const Port &state) { return state.phy.max_speed(); });
    }

    Status user_port_duplex_set(int32_t port, uint32_t duplex, uint32_t /*mode*/) override {
        return chip_.change_port(port, [&](Port &state) { return state.phy.set_duplex(duplex); });
    }

    Status user_port_duplex_get(int32_t port, uint32_t &duplex) override {
        return read_port(chip_, port, duplex, [](const Port &state) {
            return state.phy.full_duplex() ? Phy::kFullDuplex : Phy::kHalfDuplex;
        });
    }

    Status user_port_autoneg_set(int32_t port, uint32_t enable) override {
        return set_port(chip_, port, [&](Port &state) { state.phy.set_autoneg(enable != 0); });
    }

    Status user_port_autoneg_get(int32_t port, uint32_t &enable) override {
        return read_port(chip_, port, enable, [](const Port &state) { return state.phy.autoneg(); });
    }

    Status user_port_ability_advert_set(int32_t port, uint32_t abilities) override {
        return set_port(chip_, port, [&](Port &state) { state.phy.set_abilities(abilities); });
    }

    Status user_port_ability_advert_get(int32_t port, uint32_t &abilities) override {
        return read_port(chip_, port, abilities, [](const Port &state) { return state.phy.abilities(); });
    }

    Status user_port_enable_set(int32_t port, uint32_t enable) override { return chip_.set_enabled(port, enable != 0); }

    Status user_port_enable_get(int32_t port, uint32_t &enable) override {
        return read_port(chip_, port, enable, [](const Port &state) { return state.enabled; });
    }

    Status user_port_loopback_set(int32_t port, uint32_t mode) override {
        return chip_.change_port(port, [&](Port &state) {
            if (mode >= Port::kLoopbackModes || port == Switch::kCpuPort) {
                return Status::kBadArgument;
            }
            state.loopback = mode;
            return Status::kOk;
        });
    }

    Status user_port_loopback_get(int32_t port, uint32_t &mode) override {
        return read_port(chip_, port, mode, [](const Port &state) { return state.loopback; });
    }

    Status user_port_pause_set(int32_t port, uint32_t transmit, uint32_t receive) override {
        return set_port(chip_, port, [&](Port &state) { state.phy.set_pause(transmit != 0, receive != 0); });
    }

    Status user_port_pause_get(int32_t port, uint32_t &enable) override {
        return read_port(chip_, port, enable, [](const Port &state) { return state.phy.pause(); });
    }

    Status user_port_pause_get_stat(int32_t port, uint32_t &status) override {
        return read_port(chip_, port, status, [](const Port &state) { return state.is_up() && state.phy.pause(); });
    }

    Status user_port_jumboframe_set(int32_t port, uint32_t value) override {
        return set_port(chip_, port, [&](Port &state) { state.jumbo = value != 0; });
    }

    Status user_port_jumboframe_get(int32_t port, uint32_t &value) override {
        return read_port(chip_, port, value, [](const Port &state) { return state.jumbo; });
    }

    Status user_port_mdix_set(int32_t port, uint32_t mode) override {
        return chip_.change_port(port, [&](Port &state) { return state.phy.set_crossover(mode); });
    }

    Status user_port_mdix_get(int32_t port, uint32_t &mode) override {
        return with_copper_port(port, [&](const Port &state) { mode = static_cast<uint32_t>(state.phy.crossover()); });
    }

    Status user_port_link_medium_get(int32_t port, uint32_t &medium) override {
        return read_port(chip_, port, medium,
                         [](const Port &state) { return static_cast<uint32_t>(state.phy.medium()); });
    }

    Status user_port_link_status_get(int32_t port, uint32_t &status) override {
        return read_port(chip_, port, status, [](const Port &state) { return state.is_up(); });
    }

    // The fibre side of any port reports the port's link, whatever its medium: that is what the election of a group's
    // management interface reads of copper ports too.
    Status user_fiberport_link_status_get(int32_t port, uint32_t &status) override {
        return user_port_link_status_get(port, status);
    }

    Status user_port_learn_set(int32_t port, int32_t mode) override {
        return chip_.change_port(port, [&](Port &state) {
            const auto found = chip::find_learn_mode(mode);
            if (!found) {
                return Status::kBadArgument;
            }
            state.learning = *found;
            return Status::kOk;
        });
    }

    Status user_port_learn_get(int32_t port, uint32_t &mode) override {
        return read_port(chip_, port, mode, [](const Port &state) { return state.learning.number; });
    }

    Status user_eee_portEnable_set(int32_t port, uint32_t enable) override {
        return set_port(chip_, port, [&](Port &state) { state.eee = enable != 0; });
    }

    Status user_eee_portEnable_get(int32_t port, uint32_t &enable) override {
        return read_port(chip_, port, enable, [](const Port &state) { return state.eee; });
    }

    Status User_port_cablediag(int32_t port, adp_cable_diag_t &result) override {
        return with_copper_port(port, [&](const Port &state) {
            for (size_t pair = 0; pair < ADP_CABLE_PAIRS; ++pair) {
                result.state[pair] = state.cable ? kPairGood : kPairOpen;
                result.length[pair] = state.cable ? kCableMetres : 0;
            }
        });
    }

    Status user_port_egress_set(int32_t port, uint32_t module, const adp_port_set_t &egress) override {
        return module != 0 ? Status::kBadArgument : chip_.set_egress(port, PortSet::from_words(egress.word));
    }

    Status user_port_egress_get(int32_t port, uint32_t module, uint32_t *egress) override {
        if (module != 0) {
            return Status::kBadArgument;
        }
        return with_port(chip_, port, [&](const Port &state) {
            state.egress.to_words(egress);
            return Status::kOk;
        });
    }

  private:
    template <typename Operation>
    Status with_copper_port(int32_t port, Operation operation) const {
        return with_port(chip_, port, [&](const Port &state) {
            if (state.phy.medium() != chip::Medium::kCopper) {
                return Status::kWrongMedium;
            }
            operation(state);
            return Status::kOk;
        });
    }

    Switch &chip_;
};

}  // namespace

std::unique_ptr<PortsCalls> ports(Switch &chip) {
    return std::make_unique<Ports>(chip);
}

}  // namespace vdevice::driver
