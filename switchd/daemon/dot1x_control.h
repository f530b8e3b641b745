// How 802.1X controls a port.
#pragma once

#include <stdint.h>

namespace switchd {

enum class Dot1xControl : uint8_t {
    kNone,
    kPort,    /**< whoever is let in opens the port for all of its stations */
    kStations /**< each station is let in by itself */
};

}  // namespace switchd
