"""What mypy has to find: an error in every line behind the imports that is not blank."""
import adp

adp.vlan_create("100")
adp.vlan_creat(100)
adp.vlan_create()
adp.vlan_port_set(100, {1, 2}, adp.PortSet())
adp.add_mac_addr("020000000001", 1, 1, 0)
adp.add_agg_member(adp.agg(1), 7)
adp.linkscan_register(lambda unit, port: 0)
adp.linkscan_register(lambda unit, port, status: "up")
adp.vlan_port_get(100).vlan
adp.transmit_frame_record(adp.RxFrame(bytes(60)), None, 0, 0)
adp.fp_find_list_node_by_entity(2, 7).entity
adp.FpEntity(prio=7)
adp.StgState.BLOCKED
adp.agg_info["1"]
adp.max_phy_port_num + 1
