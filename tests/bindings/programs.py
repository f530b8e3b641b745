"""Programs that use the bindings on a device's CPU, for test_device.py: programs.py NAME. Each says what it finds."""
import queue
import sys

import adp

PORT = 3
FIRST_PHYSICAL_PORT = 4
SECONDS = 20
GROUP = adp.agg(2)
SUBMODULE = 2


def failure():
    try:
        adp.get_agg_group_by_map(0x10000009)
    except adp.Error as error:
        print(error.call, error.name, error.status, error.outputs)


def no_map():
    print(len(adp.intf_to_phy_port), list(adp.intf_map_trunk))


def tables():
    adp.map_ports()
    print(adp.max_phy_port_num.value, len(adp.intf_to_phy_port), adp.intf_to_phy_port[PORT].phy)
    adp.create_agg_group(GROUP)
    adp.add_agg_member(GROUP, [1, 2])
    print(adp.agg_info[1].count, adp.agg_info[1].ports[:2].hex(), adp.intf_map_trunk[:3] == [0, GROUP, GROUP])
    adp.add_agg_standby_member(GROUP, 6, 0)
    print(adp.agg_standby_members[1], len(adp.agg_standby_members))
    adp.vlan_create(5)
    adp.create_mstp_instance(PORT)
    adp.add_msti_member(PORT, 5)
    print(adp.aiVlanStg[4:7], len(adp.aiVlanStg))


def rules():
    adp.map_ports()
    for number in (4, 7):
        entity = adp.FpEntity(submodule_type=SUBMODULE, entity_id=number)
        vlan, mask = number.to_bytes(4, sys.byteorder), 0xFFF.to_bytes(4, sys.byteorder)
        result, entity = adp.fp_add_entity_qualify(entity, adp.FpQualifier.OUTER_VLAN_ID, vlan, mask)
        entity = adp.fp_add_entity_action(entity, adp.FpActionType.DROP, b"", b"").entity
        print(result, adp.fp_add_entity_rule(entity))
    print([each.entity_id for each in adp.acl_fp_list_head], adp.acl_fp_list_head[1].action_num)
    found = adp.fp_find_list_node_by_entity(SUBMODULE, 7)
    print(found.entity.qualifies[0].data[:4] == vlan, adp.fp_find_list_node_by_entity(SUBMODULE, 8))


def handlers():
    def fail(event):
        raise KeyError("not lost")

    adp.register_agg_event_cb(lambda event: event.word[2])
    print(adp.agg_event_handle.value, adp.adp_agg_event_handle("a program", adp.AggEvent([0, 0, 7])))
    adp.register_agg_event_cb(fail)
    print(adp.adp_agg_event_handle("a program", adp.AggEvent()))
    adp.register_agg_event_cb(lambda event: 1 << 31)
    print(adp.adp_agg_event_handle("a program", adp.AggEvent()))
    adp.register_agg_event_cb(None)
    print(adp.agg_event_handle.value)


def links():
    changes = queue.Queue()
    adp.map_ports()
    adp.linkscan_register(lambda unit, port, status: changes.put((port, status)))
    adp.scan_links()
    for _ in range(3):
        while (change := changes.get(timeout=SECONDS))[0] != PORT + FIRST_PHYSICAL_PORT - 1:
            pass
        print(change[1], flush=True)


def no_device():
    try:
        adp.scan_links()
    except adp.LibraryError as error:
        print(error)


def received():
    adp.map_ports()
    addresses, vlan_tag, ip = bytes(range(12)), bytes.fromhex("81000064"), bytes.fromhex("080045") + bytes(57)
    frame = addresses + bytes.fromhex("887400000006") + vlan_tag + ip
    stripped, start, length, _, intf = adp.receive_frame(frame)
    print(stripped[start : start + length] == addresses + vlan_tag + ip, intf)
    parsed = adp.receive_frame_record(adp.RxFrame(frame), 0)
    header = parsed.ethernet_header
    print(parsed.frame[header : header + 12] == addresses, parsed.frame[parsed.ipv4_header] == 0x45, parsed.ipv6_header,
          parsed.vlan_tag - header, parsed.length == len(frame) - 10, parsed.intf, parsed.phy)


if __name__ == "__main__":
    {each.__name__: each for each in (failure, no_map, tables, rules, handlers, links, no_device, received)}[sys.argv[1]]()
