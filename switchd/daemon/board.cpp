// Start-up in the order that the library asks for.
#include "switchd/daemon/board.h"

#include <adp/adp.h>

#include <string>

#include "vdevice/io/error.h"

namespace switchd {
namespace {

void check(adp_status_t status, const char *what) {
    if (status != ADP_OK) {
        throw vdevice::io::Error{std::string{"cannot "} + what + ": the library answered " + std::to_string(status) +
                                 "."};
    }
}

}  // namespace

void fill_port_map(const Configuration &configuration) {
    check(adp_set_max_phy_port_num(configuration.user_ports), "make the port map");
    check(adp_add_cpu_port(0, 0, 0, configuration.cpu_physical_port, 0), "map the CPU port");
    for (uint32_t port = 1; port <= configuration.user_ports; ++port) {
        check(adp_add_phy_port(port, 0, 0, configuration.physical_ports.at(port - 1), 0), "map a port");
    }
}

bool is_chip_in_use(const Configuration &configuration) {
    adp_ports_t members{};
    adp_ports_t untagged{};
    return adp_vlan_port_get(configuration.first_internal_vid + 1U, members, untagged) == ADP_OK;
}

void initialise_chip() {
    check(adp_modules_init(), "initialise the switch; is its driver there");
    // All ports are in the default VLAN now. The chip is read next, which takes thousands of driver calls.
    uint32_t vid = 0;
    const adp_ports_t none{};
    check(adp_vlan_default_get(&vid), "read the default VLAN");
    check(adp_vlan_port_set(vid, none, none), "take all ports out of the default VLAN");
}

}  // namespace switchd
