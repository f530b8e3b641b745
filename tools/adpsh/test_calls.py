"""Calls of the library, made from lines."""
import pytest

ALL_ONES = 0xFFFFFFFF


def bits(*numbers, words=2):
    return [sum(1 << n % 32 for n in numbers if n // 32 == word) for word in range(words)]


def test_the_default_map(mapped):
    assert mapped.outputs("adp_get_max_phy_port_num") == {"port_count": 26}
    assert [mapped.result(f"adp_intf_2_phy_id {i}") for i in (0, 1, 26, 27, "agg1")] == [0, 4, 29, -1, -1]
    assert mapped.result("adp_phy_2_intf_id 29") == 26


@pytest.mark.parametrize("number", ["0x10000002", "268435458", "agg2", "ADP_AGG_INTF(2)", "agg_intf=agg2"])
def test_numbers_are_written_in_many_ways(mapped, number):
    assert mapped.result("SET_AGG_MANAGE_INTF agg2 7") == 0
    assert mapped.outputs(f"GET_AGG_MANAGE_INTF {number}") == {"intf": 7}


def test_a_bitmap_is_a_set_or_words(mapped):
    assert mapped.outputs("adp_api_xlate_port_pbmp_p2a {1,5,26}") == {"bitmap": bits(4, 8, 29)}
    assert mapped.outputs("adp_api_xlate_port_pbmp_p2a [0x4000022]") == {"bitmap": bits(4, 8, 29)}


def test_a_list_is_as_long_as_its_count_says(mapped):
    assert mapped.outputs("adp_get_agg_group agg1 3") == {"count": 0, "members": [0, 0, 0]}
    assert mapped.outputs("adp_get_agg_group agg1 1") == {"count": 0, "members": [0]}
    assert mapped.outputs("adp_get_agg_group agg1 0") == {"count": 0, "members": []}


def test_an_output_can_be_given_its_content_before_the_call(mapped):
    assert mapped.outputs("adp_get_agg_group agg1 4 count=7 members=[8,9]") == {"count": 0, "members": [8, 9, 0, 0]}


def test_a_pointer_to_void_has_the_type_that_its_mark_says(mapped):
    assert mapped.outputs("adp_intf_stat_get 1 0 value=0x100000007") == {"value": 0x100000007}
    assert mapped.outputs("adp_intf_cablediag 1 result={state=[1,2] length=[3]}") == {
        "result": {"state": [1, 2, 0, 0], "length": [3, 0, 0, 0]}}


def test_a_count_is_told_from_the_bytes(shell):
    left_out = shell("adp_dump_packet title 0180c2")
    given = shell("adp_dump_packet title 01:80:c2 3")
    named = shell("adp_dump_packet length=3 data=[1,0x80,0xc2] title=\"title\"")
    assert "title:3(0x3)" in left_out["printed"]["stderr"]
    assert left_out == given == named


def test_a_negative_count_is_left_to_the_call(shell):
    printed = shell("adp_dump_packet title 0180c2 -1")["printed"]["stderr"]
    assert "title:-1(0xFFFFFFFF)" in printed and "\n000" not in printed


def test_what_the_library_prints_is_caught(shell):
    answer = shell("get_nic_index nonesuch")
    assert answer["result"] == -1
    assert answer["printed"] == {"stdout": " ioctl failed: \r\nNo such device\r\n\r\n", "stderr": ""}


def test_bytes_are_stored_under_a_name(mapped):
    assert mapped.result("set TAG = 98:00:00:02:00:00:00:00") == 0
    assert mapped("adp_bcmtag_dest_port_intf_2_phy $TAG")["outputs"] == {"tag": "9800001000000000"}


def test_a_received_frame_and_the_address_of_its_start(mapped):
    frame = "0180c2000000" "aabbccddeeff" "887400000004" "0800" "0102"
    assert mapped.outputs(f"adp_receive_frame {frame}") == {
        "frame": "0180c2000000" "aabbccddeeff" "0800" "0102" "000408000102", "out_frame": 0, "out_length": 16,
        "out_flag": 0, "out_intf": 1}


def test_a_receive_record_shows_addresses_as_offsets(mapped):
    header = "45000014" "0000" "0000" "4011" "0000" "0a000001" "0a000002"
    frame = "0180c2000000" "aabbccddeeff" "88740000001d" "81000064" "0800" + header + "00010002" "00080000"
    record = mapped.outputs(f"__adp_receive_frame {{frame={frame}}} 0")["desc"]
    shown = {name: record[name] for name in ("length", "ethernet_header", "udp_header", "ipv4_header", "ipv6_header",
                                             "vlan_tag", "l4_header", "intf", "phy")}
    assert shown == {"length": len(frame) // 2 - 10, "ethernet_header": 0, "udp_header": 38, "ipv4_header": 18,
                     "ipv6_header": None, "vlan_tag": 12, "l4_header": 38, "intf": 26, "phy": 29}
    assert record["frame"].startswith("0180c2000000aabbccddeeff810000640800" + header)


def test_a_callback_reports_events(shell):
    assert shell.result("adp_linkscan_register print") == 0
    assert shell("show link_event_handle")["value"] == "print"
    answer = shell("linkscan_handle_cb 0 5 [9,9,9,1]")
    assert answer["events"] == ["adp_link_event_cb_t(unit=0, port=5, status=1)"]
    assert shell.result("adp_linkscan_register none") == 0
    assert shell("linkscan_handle_cb 0 5 [9,9,9,1]")["events"] == []


def test_a_call_without_a_result(shell):
    assert shell("adp_bcmtag_dest_port_intf_2_phy 2000000200000000")["result"] is None


def test_null_is_an_address_too(shell):
    assert shell.result("adp_transmit_frame null 64 0 1 3") == -1
    assert shell.result("__adp_transmit_frame {length=64} null ADP_NO_VLAN ADP_TX_SWITCH") == -1


def test_a_missing_device_is_a_failed_call(mapped):
    answer = mapped("adp_vlan_port_set 100 {1,26} {1}")
    assert answer["result"] == -1
    assert "cannot be reached" in answer["printed"]["stderr"]
    assert mapped.outputs("adp_vlan_port_get 100 {4} {}") == {"members": bits(1, words=8), "untagged": [0] * 8}
    assert mapped.result("adp_vlan_port_add 100 {4,5} null") == -1
    assert mapped.result("check_port_vlan_ability 1 100") == -1


def test_the_driver_calls_of_a_call(mapped):
    assert mapped.result("trace on") == 0
    assert mapped("adp_vlan_port_set 100 {1,26} {1}")["trace"] == [
        "user_vlan_port_set(unit=0, zero=0, vid=100, members={4,29}, untagged={4}) -> -1"]
    assert mapped("adp_intf_2_phy_id 1")["trace"] == []
    assert mapped.result("trace off") == 0
    assert mapped("adp_vlan_create 100")["trace"] == []


def test_exported_tables(shell):
    assert shell("show intf_to_phy_port")["value"] is None
    assert shell.result("map") == 0
    rows = shell("show intf_to_phy_port")["value"]
    assert [row["phy"] for row in rows] == [0] + list(range(4, 30))
    assert shell("show adp_max_phy_port_num")["value"] == 26
    assert shell("show agg_info")["value"] == [{"count": 0, "in_use": 0, "ports": "00" * 11}] * 8
    assert shell("show agg_standby_members")["value"] == [[0, 0]] * 8
