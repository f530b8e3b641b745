// Speed and duplex that ethtool shows of an interface.
#pragma once

#include <stdint.h>

namespace switchd {

/** Where the kernel lets a program say so, as for TAP; elsewhere nothing happens. @p speed is in Mb/s. */
void show_link_mode(int index, uint32_t speed, bool is_full_duplex);

}  // namespace switchd
