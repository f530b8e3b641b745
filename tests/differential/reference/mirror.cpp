// Mirroring.
#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {

adp_status_t adp_add_port_mirror(adp_intf_t source, adp_intf_t destination, uint32_t directions, uint32_t session) {
    const uint32_t mode = (directions & 1 ? 2u : 0u) + (directions & 2 ? 4u : 0u);
    if (mode == 0) {
        return 0;
    }
    return user_mirror_port_set(0, 0, adp_intf_2_phy_id(source), session - 1, adp_intf_2_phy_id(destination), mode);
}

adp_status_t adp_del_port_mirror(adp_intf_t source, adp_intf_t destination, uint32_t /*unused*/, uint32_t session) {
    return user_mirror_port_set(0, 0, adp_intf_2_phy_id(source), session - 1, adp_intf_2_phy_id(destination), 0);
}

adp_status_t adp_set_flow_mirror(adp_intf_t intf, uint32_t session) {
    return user_set_flow_mirror(0, 0, session - 1, adp_intf_2_phy_id(intf));
}

adp_status_t adp_set_mirror_disable(uint32_t session, uint32_t /*unused2*/, uint32_t /*unused3*/, adp_word_t value) {
    return user_set_mirror_disable(0, 0, session - 1, value);
}

adp_status_t adp_check_set_mirror_disable(uint32_t session, uint32_t /*unused2*/, uint32_t /*unused3*/,
                                          adp_word_t value) {
    return user_check_set_mirror_disable(0, 0, session - 1, value);
}

}  // namespace reference
