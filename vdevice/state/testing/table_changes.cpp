// Changes of trunks, addresses, groups, VLANs, spanning trees, tags, mirrors and the whole chip; and the services'.
#include "vdevice/state/testing/changes.h"

namespace vdevice::state::test {
namespace {

netlink_learn_limit_t limit_of(uint32_t scope) {
    netlink_learn_limit_t limit = {};
    limit.flags = scope;
    limit.vid = kVid;
    limit.port = kPort;
    limit.trunk = kTrunk;
    limit.limit = 5;
    return limit;
}

const Words kPortWords = ports(0x20);
const netlink_mcast_entry_t kAddedGroup = [] {
    netlink_mcast_entry_t record = group_record(6);
    record.vid = kOtherVid;
    return record;
}();
const netlink_mcast_entry_t kChipPorts = group_record(0x10);
const netlink_mcast_entry_t kFrontPorts = group_record(4);
constexpr uint8_t kReserved[] = {0x01, 0x80, 0xC2, 0, 0, 0x99};
constexpr uint32_t kPins = 8;
constexpr uintptr_t kMessage[8] = {1, 2, 3, 4, 5, 6, 7, 0};

constexpr Change kOfAddresses[] = {
    VDEVICE_CHANGE(user_trunk_init, 0, 0),
    VDEVICE_CHANGE(user_trunk_create_id, 0, 0, 2),
    VDEVICE_CHANGE(user_trunk_destroy, 0, 0, kTrunk),
    VDEVICE_CHANGE(user_trunk_set, 0, 0, kTrunk, members({7, kMember})),
    VDEVICE_CHANGE(user_trunk_send_data_to_kernel, 0, 0, kTrunk, members({kMember, 7, 8})),
    VDEVICE_CHANGE(user_trunk_loadbalance_set, 0, 0, kTrunk, 5),
    VDEVICE_CHANGE(user_trunk_trap_lacp, 0, 0, 1, 0),
    VDEVICE_CHANGE(user_mac_addr_add, 0, address(station(70), 0, kPort)),
    VDEVICE_CHANGE(user_mac_addr_add, 0, address(station(70), NETLINK_L2_STATIC, kPort)),
    VDEVICE_CHANGE(user_mac_addr_add, 0, address(station(kStatic), 0x10, kPort)),
    VDEVICE_CHANGE(user_mac_addr_delete, 0, station(kStatic).data(), kVid, 0),
    VDEVICE_CHANGE(user_mac_mcast_addr_add, 0, group_of({kPort})),
    VDEVICE_CHANGE(user_mac_mcast_addr_delete, 0, kGroup.data(), kVid, 0),
    VDEVICE_CHANGE(user_l2_addr_del_all_addr_by_lrntype, 0, 0, 0),
    VDEVICE_CHANGE(user_l2_addr_delete_by_vlan, 0, 0, kVid, 0),
    VDEVICE_CHANGE(user_l2_addr_delete_static_by_vlan, 0, 0, kVid, 0),
    VDEVICE_CHANGE(user_l2_addr_delete_by_mac, 0, 0, station(kLearned).data(), 0),
    VDEVICE_CHANGE(user_l2_addr_delete_static_by_mac, 0, 0, station(kStatic).data(), 0),
    VDEVICE_CHANGE(user_l2_addr_delete_by_port, 0, 0, 0, kPort, 0),
    VDEVICE_CHANGE(user_l2_addr_delete_static_by_port, 0, 0, 0, kPort),
    VDEVICE_CHANGE(user_l2_addr_delete_by_vlan_port, 0, 0, kVid, 0, kPort, 0),
    VDEVICE_CHANGE(user_l2_addr_delete_static_by_vlan_port, 0, 0, kVid, kPort),
    VDEVICE_CHANGE(user_l2_addr_delete_by_vlan_trunk, 0, 0, kVid, kTrunk, 0),
    VDEVICE_CHANGE(user_l2_addr_delete_dynaic_by_mac_port, 0, 0, station(kLearned).data(), kPort, 0),
    VDEVICE_CHANGE(user_l2_addr_delete_static_by_mac_port, 0, 0, station(kStatic).data(), kPort, 0),
    VDEVICE_CHANGE(user_l2_addr_delete_all_by_mac_port, 0, 0, station(kStatic).data(), kPort),
    VDEVICE_CHANGE(user_l2_addr_delete_trunk_dynamic_by_port_mac_vlan, 0, 0, station(kLearnedOfTrunk).data(), kMember,
                   kVid),
    VDEVICE_CHANGE(user_l2_addr_delete_trunk_static_by_port_mac_vlan, 0, 0, station(kStaticOfTrunk).data(), kMember,
                   kVid),
    VDEVICE_CHANGE(user_l2_addr_delete_all_dynamic_by_port_mac_vlan, 0, 0, station(kLearned).data(), kPort, kVid),
    VDEVICE_CHANGE(user_mac_violate_del_by_port, kLimitedPort),
    VDEVICE_CHANGE(user_mac_learn_limit_set, 0, limit_of(NETLINK_LIMIT_SYSTEM)),
    VDEVICE_CHANGE(user_mac_learn_limit_set, 0, limit_of(NETLINK_LIMIT_VLAN)),
    VDEVICE_CHANGE(user_mac_learn_limit_set, 0, limit_of(NETLINK_LIMIT_PORT)),
    VDEVICE_CHANGE(user_mac_learn_limit_set, 0, limit_of(NETLINK_LIMIT_TRUNK)),
    VDEVICE_CHANGE(user_mac_age_time_set, 0, 77),
    VDEVICE_CHANGE(user_l2_bpdu_set, 0, 0, 63, kReserved),
};

constexpr Change kOfGroups[] = {
    VDEVICE_CHANGE(User_mcast_init, 0, 0),
    VDEVICE_CHANGE(User_mcast_addr_add, 0, 0, &kAddedGroup),
    VDEVICE_CHANGE(User_mcast_addr_remove, 0, 0, kGroup.data(), kVid),
    VDEVICE_CHANGE(User_mcast_port_add, 0, 0, &kChipPorts),
    VDEVICE_CHANGE(User_mcast_port_remove, 0, 0, &kFrontPorts),
    VDEVICE_CHANGE(user_igmp_snooping_init, 0, 0),
    VDEVICE_CHANGE(User_switch_ipmc_set, 0, 0, 0),
    VDEVICE_CHANGE(User_switch_ip6mc_mode_set, 0, 0, 0),
    VDEVICE_CHANGE(user_switch_control_set, 0, 0, ADP_CONTROL_MLD, 1),
    VDEVICE_CHANGE(user_switch_control_set, 0, 0, ADP_CONTROL_HASH, 0x50),
    VDEVICE_CHANGE(user_switch_control_set, 0, 0, 255, 9),
    VDEVICE_CHANGE(user_selfmac_trap_to_cpu, 0, 0, 1, 0),
    VDEVICE_CHANGE(user_eoam_trap_set, 0, 0, 1, 0),
    VDEVICE_CHANGE(user_lldp_init, 0, 0),
    VDEVICE_CHANGE(user_dos_attack_prevent_init, 0, 0),
    VDEVICE_CHANGE(user_mirror_init, 0, 0),
    VDEVICE_CHANGE(user_mirror_port_set, 0, 0, kMember, 0, kOtherPort, 2),
    VDEVICE_CHANGE(user_mirror_port_set, 0, 0, kMember, 0, kOtherPort, 4),
    VDEVICE_CHANGE(user_set_flow_mirror, 0, 0, 2, kPort),
    VDEVICE_CHANGE(user_set_mirror_disable, 0, 0, 0, 1),
    VDEVICE_CHANGE(user_pci_write, 0, 0, 0x2004, &kPins),
    VDEVICE_CHANGE(user_pci_write, 0, 0, 0x2008, &kPins),
};

constexpr Change kOfVlans[] = {
    VDEVICE_CHANGE(user_stg_init, 0, 0),
    VDEVICE_CHANGE(user_stg_create_id, 0, 0, 5),
    VDEVICE_CHANGE(user_stg_destroy, 0, 0, kStg),
    VDEVICE_CHANGE(user_stg_vlan_add, 0, 0, kStg, 4000),
    VDEVICE_CHANGE(user_stg_vlan_remove, 0, 0, kStg, kVid),
    VDEVICE_CHANGE(user_stg_stp_set, 0, 0, kStg, kPort, 1),
    VDEVICE_CHANGE(user_stg_list, 0, 0, &device.groups, &device.group_count),
    VDEVICE_CHANGE(user_stg_list_destroy, 0, 0, device.groups, device.group_count),
    VDEVICE_CHANGE(user_stg_vlan_list, 0, 0, kStg, &device.vlans, &device.vlan_count),
    VDEVICE_CHANGE(user_stg_vlan_list_destroy, 0, 0, device.vlans, device.vlan_count),
    VDEVICE_CHANGE(user_vlan_create, 0, 0, 100),
    VDEVICE_CHANGE(user_vlan_createEx, 0, 0, 100, 101),
    VDEVICE_CHANGE(user_vlan_destroy, 0, 0, kVid),
    VDEVICE_CHANGE(user_vlan_destroyEx, 0, 0, kVid, kOtherVid),
    VDEVICE_CHANGE(user_vlan_port_add, 0, 0, 1, kPortWords.data(), Words{}.data()),
    VDEVICE_CHANGE(user_vlan_port_addEx, 0, 0, 1, 1, kPortWords.data(), Words{}.data()),
    VDEVICE_CHANGE(user_vlan_port_remove, 0, 0, kVid, kPortWords.data()),
    VDEVICE_CHANGE(user_vlan_port_removeEx, 0, 0, kVid, kVid, kPortWords.data()),
    VDEVICE_CHANGE(user_vlan_port_set, 0, 0, kVid, kPortWords.data(), kPortWords.data()),
    VDEVICE_CHANGE(user_vlan_default_set, 0, 0, kVid),
    VDEVICE_CHANGE(user_vlan_translate_add, 0, 0, 0, kPort, 0, 101, kVid, 3),
    VDEVICE_CHANGE(user_vlan_translate_delete, 0, 0, 0, kPort, 100),
    VDEVICE_CHANGE(user_vlan_translate_delete_all, 0, 0),
    VDEVICE_CHANGE(user_vlan_translate_egress_add, 0, 0, 0, kPort, kOtherVid, 100, 0xFFFFFFFF),
    VDEVICE_CHANGE(user_vlan_translate_egress_delete, 0, 0, 0, kPort, kVid),
    VDEVICE_CHANGE(user_vlan_translate_egress_delete_all, 0, 0),
    VDEVICE_CHANGE(user_vlan_ip4_add, 0, 0, kPort, 0x0B000000, 0xFF000000, kVid, 3, 0),
    VDEVICE_CHANGE(user_vlan_ip4_delete, 0, 0, kPort, 0x0A000000, 0xFF000000),
    VDEVICE_CHANGE(user_vlan_ip4_delete_all, 0, 0),
    VDEVICE_CHANGE(user_vlan_dtag_add, 0, 0, 0, kPort, 0, 101, kVid, 3),
    VDEVICE_CHANGE(user_vlan_dtag_delete, 0, 0, 0, kPort, 100),
    VDEVICE_CHANGE(user_vlan_dtag_delete_all, 0, 0),
};

constexpr Change kOfServices[] = {
    VDEVICE_CHANGE(equeue_send_ucast, 1, kMessage, 0),
    VDEVICE_CHANGE(add_mac_static_addr, "02:00:00:00:00:46", 2, kVid, 0),
    VDEVICE_CHANGE(del_mac_addr, "02:00:00:00:00:01", kVid, 0),
    VDEVICE_CHANGE(set_mac_tbl_clear_by_port, 2, 7, 3),
};

}  // namespace

std::vector<Change> table_changes() {
    std::vector<Change> changes(std::begin(kOfAddresses), std::end(kOfAddresses));
    changes.insert(changes.end(), std::begin(kOfGroups), std::end(kOfGroups));
    changes.insert(changes.end(), std::begin(kOfVlans), std::end(kOfVlans));
    changes.insert(changes.end(), std::begin(kOfServices), std::end(kOfServices));
    return changes;
}

}  // namespace vdevice::state::test
