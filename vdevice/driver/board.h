// The board: which chip port each user port is wired to. User ports count from 1 and lie on consecutive chip ports.
#pragma once

#include <stdint.h>
#include <optional>

#include "vdevice/chip/switch.h"

namespace vdevice::driver {

inline constexpr const char *kImpossibleBoard =
    "cannot wire such a board: the user ports must lie on the chip's ports 1 to 31.";
static_assert(chip::Switch::kPorts == 32);

struct Board {
    static constexpr int kDefaultUserPorts = 26;
    static constexpr int kDefaultFirstPort = 4;

    static constexpr int kCpuFrontPort = 0;
    static constexpr int kFirstTenGigabitPort = 25; /**< user ports before it are gigabit ports */

    int user_ports = kDefaultUserPorts;
    int first_port = kDefaultFirstPort; /**< the chip port of user port 1 */

    /** The CPU has the chip's port 0, so user ports start at 1 and end within the chip. */
    constexpr bool is_possible() const {
        return user_ports >= 1 && first_port >= 1 && user_ports <= chip::Switch::kPorts - first_port;
    }

    constexpr std::optional<int> chip_port(int64_t user_port) const {
        if (user_port < 1 || user_port > user_ports) {
            return std::nullopt;
        }
        return static_cast<int>(user_port) - 1 + first_port;
    }

    /** The chip ports of a set of front ports, of which 0 is the CPU's. Nothing if the board has not all of them. */
    constexpr std::optional<chip::PortSet> chip_ports(const chip::PortSet &front_ports) const {
        chip::PortSet ports;
        bool has_all = true;
        front_ports.for_each([&](int front_port) {
            const auto port = front_port == kCpuFrontPort ? chip::Switch::kCpuPort : chip_port(front_port);
            has_all = has_all && port.has_value();
            ports.add(port.value_or(chip::Switch::kCpuPort));
        });
        return has_all ? std::optional{ports} : std::nullopt;
    }

    static constexpr uint32_t max_speed(int user_port) {
        return user_port < kFirstTenGigabitPort ? chip::kGigabit : chip::kTenGigabit;
    }

    constexpr std::optional<int> user_port(int chip_port) const {
        if (chip_port < first_port || chip_port >= first_port + user_ports) {
            return std::nullopt;
        }
        return chip_port - first_port + 1;
    }
};

}  // namespace vdevice::driver
