// The board: the library's port map, and a chip that is set up for the daemon.
#pragma once

#include "switchd/daemon/configuration.h"

namespace switchd {

/** Fills the library's port map, which every other call needs. Throws a vdevice::io::Error. */
void fill_port_map(const Configuration &configuration);

/** The chip goes on as an earlier daemon has left it: the VLANs of single ports are there. */
bool is_chip_in_use(const Configuration &configuration);

/**
 * Initialises the chip's protocol features, which takes all earlier settings back, and takes all ports out of the
 * default VLAN, so that no frame goes from port to port. Throws a vdevice::io::Error.
 */
void initialise_chip();

}  // namespace switchd
