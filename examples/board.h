/* The board that the examples run on: user port 1 is wired to the chip's port 4, 2 to 5 and so on; the CPU to port 0.
 */
#pragma once

#include <adp/adp.h>

enum { kCpuPhysicalPort = 0, kFirstPhysicalPort = 4 };

/* Fills the port map, which every other call needs. */
static inline adp_status_t set_up_board(void) {
    adp_status_t status = adp_set_max_phy_port_num(ADP_USER_PORTS);
    if (status == ADP_OK)
        status = adp_add_cpu_port(0, 0, 0, kCpuPhysicalPort, 0);
    for (uint32_t port = 1; status == ADP_OK && port <= ADP_USER_PORTS; port++)
        status = adp_add_phy_port(port, 0, 0, port + kFirstPhysicalPort - 1, 0);
    return status;
}
