// A C++ program as a user would write it: includes the one header, links, reads the exported tables.
#include <adp/adp.h>

#include <iostream>

int main() {
    if (adp_set_max_phy_port_num(4) != ADP_OK || adp_add_cpu_port(0, 0, 0, 0, 0) != ADP_OK) {
        return 1;
    }
    for (uint32_t port = 1; port <= adp_max_phy_port_num; ++port) {
        adp_add_phy_port(port, 0, 0, port + 3, 0);
    }
    uint32_t ports[2] = {1u << 2, 0};
    adp_api_xlate_port_pbmp_p2a(ports);
    std::cout << "user port 4 is physical port " << intf_to_phy_port[4].phy << ", user port 2 is bit word " << ports[0]
              << '\n';
    return intf_to_phy_port[4].phy == 7 && ports[0] == 1u << 5 && agg_event_handle == nullptr ? 0 : 1;
}
