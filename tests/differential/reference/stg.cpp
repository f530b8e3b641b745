// Spanning-tree groups and ring ports.
#include <cstdio>

#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {
namespace {

void release_ports(int32_t stg) {
    for (uint32_t n = 1; n <= 26; ++n) {
        user_stg_stp_set(0, 0, stg, adp_intf_2_phy_id(n), 4);
    }
}

/** "name number" as every report of this family begins; the number is a source line. */
void report(const char *name, const char *text) {
    printf("%s %s%s", name, kAnyNumber, text);
}

int32_t reported(int32_t result, bool is_failure, const char *name, const char *text) {
    if (is_failure) {
        report(name, text);
        printf("%d\n", result);
    }
    return result;
}

}  // namespace

adp_status_t adp_delete_mstp_instance(int32_t stg) {
    if (stg == 0) {
        return 0;
    }
    const int32_t result = user_stg_destroy(0, 0, stg);
    if (result >= 0) {
        adp_del_msti_all_member(stg);
    }
    return result;
}

adp_status_t adp_add_msti_member(int32_t stg, uint32_t vlan) {
    vlan &= 0xFFFF;
    if (vlan >= 4096) {
        return -1;
    }
    if (tables.vlan_stg[vlan] > 0) {
        adp_del_msti_member(tables.vlan_stg[vlan], vlan);
    }
    tables.vlan_stg[vlan] = static_cast<int16_t>(stg);
    return user_stg_vlan_add(0, 0, stg, vlan);
}

adp_status_t adp_del_msti_member(int32_t stg, uint32_t vlan) {
    vlan &= 0xFFFF;
    if (vlan >= 4096) {
        return -1;
    }
    tables.vlan_stg[vlan] = 0;
    release_ports(stg);
    return user_stg_vlan_remove(0, 0, stg, vlan);
}

adp_status_t adp_del_msti_all_member(int32_t stg) {
    for (uint32_t vlan = 0; vlan < tables.vlan_stg.size(); ++vlan) {
        if (stg != 0 && tables.vlan_stg[vlan] == stg) {
            tables.vlan_stg[vlan] = 0;
            user_stg_vlan_remove(0, 0, stg, vlan);
        }
    }
    release_ports(stg);
    return 0;
}

adp_status_t adp_set_port_mstp_state(int32_t stg, adp_intf_t intf, uint32_t state) {
    if (is_user_port(intf)) {
        return user_stg_stp_set(0, 0, stg, adp_intf_2_phy_id(intf), state);
    }
    if (!is_agg(intf)) {
        return -1;
    }
    const Members members = active_members(intf);
    if (members.status != 0) {
        return members.status;
    }
    for (uint32_t n = 0; n < members.count; ++n) {
        const int32_t result = user_stg_stp_set(0, 0, stg, adp_intf_2_phy_id(members.slots[n]), state);
        if (result != 0) {
            printf("%s set tMstId %d tIntfId %d atMemList[%d] %d fail. \n", "adp_set_port_mstp_state", stg,
                   static_cast<int>(intf), static_cast<int>(n), static_cast<int>(members.slots[n]));
            return result;
        }
    }
    return 0;
}

adp_status_t adp_get_max_support_stg(uint32_t *count) {
    uint32_t driver_count = 0;
    const int32_t result = user_stg_max_support_count_get(0, 0, &driver_count);
    if (result < 0) {
        report("adp_get_max_support_stg", ": get max support stg number failed\n");
        return result;
    }
    *count = 16;
    return result;
}

adp_status_t adp_get_l2_cache_size(uint32_t *size) {
    uint32_t driver_size = 0;
    const int32_t result = user_l2_cache_size_get(0, 0, &driver_size);
    if (result == 0) {
        *size = 8192;
    }
    return reported(result, result != 0, "adp_get_l2_cache_size", ": get l2 cache size failed. ret=");
}

adp_status_t adp_stg_default_get(uint32_t *stg) {
    const int32_t result = user_stg_default_get(0, 0, stg);
    if (result == 0) {
        *stg = 0;
    }
    return reported(result, result != 0, "adp_stg_default_get", ": stg vlan list failed. ret=");
}

int32_t adp_get_max_stg() {
    uint32_t count = 0;
    const int32_t result = user_stg_stg_count_get(0, 0, &count);
    reported(result, result < 0, "adp_get_max_stg", " fail.ret=");
    return result < 0 ? result : static_cast<int32_t>(count);
}

adp_status_t adp_get_stg_vlan_each_time_list(int32_t stg, uint16_t *vlans, uint32_t chunk_index, uint32_t chunk_size) {
    const int32_t result = user_stg_vlan_each_time_list(0, 0, stg, vlans, chunk_index, chunk_size);
    if (result < 0) {
        report("adp_get_stg_vlan_each_time_list", " fail.stg ");
        printf("%d ret=%d\n", stg, result);
    }
    return result;
}

int32_t adp_get_stg_max_vlan(int32_t stg) {
    uint32_t count = 0;
    const int32_t result = user_stg_vlan_count_get(0, 0, stg, &count);
    if (result < 0) {
        report("adp_get_stg_max_vlan", " fail.stg:");
        printf("%d ret=%d\n", stg, result);
        return result;
    }
    return static_cast<int32_t>(count);
}

namespace {

/** The VLANs of a group that the chip has. A negative count is an error, but down to -1023 still asks for a chunk. */
int32_t list_vlans(int32_t stg, uint16_t *vlans) {
    const int32_t count = adp_get_stg_max_vlan(stg);
    if (count == 0 || count > 4096) {
        return 0;
    }
    for (int32_t j = 0; j <= count / 1024; ++j) {
        std::vector<uint16_t> chunk(1024, 0);
        adp_get_stg_vlan_each_time_list(stg, chunk.data(), static_cast<uint32_t>(j), 1024);
        for (int32_t n = 0; n < 1024 && 1024 * j + n < count; ++n) {
            vlans[1024 * j + n] = chunk[static_cast<size_t>(n)];
        }
    }
    return count;
}

}  // namespace

adp_status_t adp_get_stg_vlan_list(int32_t stg, uint16_t *vlans) {
    const int32_t count = adp_get_max_stg();
    if (count <= 0) {
        fprintf(stderr, "%s %s: get STG count failed! STG count=%d\n", "adp_get_stg_vlan_list", kAnyNumber, count);
        return 0;
    }
    if (count > 64) {
        return 0;
    }
    const auto groups = static_cast<uint32_t>(count);
    std::vector<int32_t> ids(128, 0);
    for (uint32_t k = 0; k <= groups / 64; ++k) {
        adp_get_stg_each_time_list(&ids[64 * k], k, 64);
    }
    for (uint32_t n = 0; n < groups; ++n) {
        if (ids[n] == stg) {
            return list_vlans(stg, vlans);
        }
    }
    return 0;
}

}  // namespace reference
