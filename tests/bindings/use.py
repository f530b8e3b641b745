"""A program as users write it, for mypy: nothing in it is wrong."""
import adp

Members = dict[int, adp.PortSet]


def members_of(vids: list[int]) -> Members:
    """The members of those VLANs that are there."""
    found: Members = {}
    for vid in vids:
        try:
            members, untagged = adp.vlan_port_get(vid)
        except adp.Error as error:
            print(error.name.upper(), error.status + 1, error.call)
        else:
            found[vid] = adp.PortSet(members | untagged)
    return found


def rule(vid: int) -> adp.FpEntity:
    """A record of a rule that drops a VLAN's frames."""
    entity = adp.FpEntity(submodule_type=2, priority=7)
    entity = adp.fp_add_entity_qualify(entity, adp.FpQualifier.OUTER_VLAN_ID, vid.to_bytes(4, "little"), b"\xff").entity
    index: int = adp.fp_add_entity_action(entity, adp.FpActionType.DROP, b"", b"").result
    assert index == 0 and entity.qualifies[0].data.hex()
    return entity


def on_link(unit: int, port: int, status: int) -> None:
    """A receiver of link changes."""
    print(unit, port, status)


def use() -> int:
    """Numbers, tables, handlers, frames."""
    adp.linkscan_register(on_link)
    adp.register_agg_event_cb(lambda event: event.word[0])
    adp.set_port_mstp_state(0, adp.agg(2), adp.StgState.BLOCKING)
    adp.vlan_port_add(100, None, adp.PortSet({1}))
    adp.transmit_frame_record(adp.TxFrame(bytes(60), source=1), [1, adp.agg(2)], adp.NO_VLAN, adp.TxMode.PORTS)
    parsed = adp.receive_frame_record(adp.RxFrame(bytes(60)), 0)
    start: int | None = parsed.ethernet_header
    rows = [row.phy for row in adp.intf_to_phy_port] + [record.count for record in adp.agg_info[1:3]]
    node = adp.fp_find_list_node_by_entity(2, 7)
    priority = node.entity.priority if node else 0
    return len(rows) + (start or 0) + priority + adp.max_phy_port_num.value + adp.get_port_egress_shaper(1).rate
