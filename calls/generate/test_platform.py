"""What the imported headers declare, and that their structs have the driver's layout."""
import os
import shutil
import subprocess
import sys

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)

import headers  # noqa: E402  (the path has to be set first)
from sections import Section  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(HERE))
TYPES = os.path.join(ROOT, "include", "adp", "types.h")
DRIVER = os.path.join(ROOT, "platform", "netlink_api.h")
SERVICES = os.path.join(ROOT, "platform", "device_services.h")
SYMBOLS = os.path.join(ROOT, "platform", "symbols")


def listed(name):
    with open(os.path.join(SYMBOLS, name), encoding="utf-8") as lines:
        return [line.strip() for line in lines if line.strip() and not line.startswith("#")]


@pytest.fixture(name="driver", scope="module")
def driver_fixture():
    return headers.read([TYPES, DRIVER])


@pytest.fixture(name="services", scope="module")
def services_fixture():
    return headers.read([TYPES, SERVICES])


@pytest.mark.parametrize("name, count", [("driver-calls.txt", 234), ("platform-services.txt", 12),
                                         ("exported-functions.txt", 271), ("exported-data.txt", 14)])
def test_symbol_lists_are_complete_and_without_doubles(name, count):
    names = listed(name)
    assert len(names) == count
    assert len(set(names)) == count


def test_the_driver_header_declares_the_listed_calls(driver):
    assert sorted(f.name for f in driver.functions) == sorted(listed("driver-calls.txt"))
    assert driver.data == []


def test_the_services_header_declares_the_listed_names(services):
    names = [f.name for f in services.functions] + [d.name for d in services.data]
    assert sorted(names) == sorted(listed("platform-services.txt"))
    assert [(d.name, d.type) for d in services.data] == [("erps_event_queue", "uintptr_t")]


def test_every_section_of_the_driver_has_its_source_file(driver):
    named = [Section(heading, []).name for heading in driver.headings]
    assert len(named) == 23
    folder = os.path.join(ROOT, "vdevice", "driver")
    assert [name for name in named if not os.path.isfile(os.path.join(folder, f"{name}.cpp"))] == []


def test_every_imported_call_is_documented(driver, services):
    assert [f.name for f in driver.functions + services.functions if not f.doc] == []


def test_every_imported_call_returns_a_status_or_a_text(driver, services):
    others = {f.name: f.returns for f in driver.functions + services.functions if f.returns != "int32_t"}
    assert others == {"onu_mac2str": "const char *"}


# The driver calls that do not begin with unit and zero, as the driver library orders their arguments. The field
# processor's calls begin with handle and unit; they are recognised by their names.
IRREGULAR = {
    "user_mac_addr_add": "unit entry",
    "user_mac_addr_delete": "unit key vid option",
    "user_mac_addr_get": "unit key vid entry",
    "user_mac_mcast_addr_add": "unit entry",
    "user_mac_mcast_addr_delete": "unit key vid option",
    "user_mac_mcast_addr_get": "unit key vid entry",
    "user_netlink_mac_nextValidAddr_get": "unit index entry option",
    "user_mac_violate_del_by_port": "port",
    "user_mac_violate_count_get_by_port": "port count",
    "user_mac_learn_count_get_by_port": "port count",
    "user_mac_learn_limit_set": "unit limit",
    "user_mac_learn_limit_get": "unit limit",
    "user_mac_age_time_set": "unit seconds",
    "user_mac_age_time_get": "unit seconds",
    "user_mac_table_show": "unit vid option option2",
    "user_mac_mcast_table_show": "unit vid option option2",
    "user_l2_mactable_fread": "first second third fourth",
    "User_mcast_addr_t_init": "unit entry key vid",
    "user_is_mcast_addr_exist_by_vlan": "unit vid last_vid option",
    "user_is_mcast_addr_exist_vlan_is": "unit vid option option2",
    "User_switch_port_control_l2mc_enable": "unit port zero enable",
    "User_switch_port_control_l2mc_get": "unit port zero enable",
    "User_switch_port_control_ipmc_set": "unit port zero enable",
    "User_switch_port_control_ipmc_get": "unit port zero enable",
    "user_field_meter_entry_set": "unit rate meter",
    "user_field_meter_ifg_exclude_init": "",
    "user_qos_schedule_set": "port queue weight flags",
    "user_qos_schedule_get": "port queue weight flags",
    "user_qos_default_cos_src_init": "",
    "user_qos_remark_inner_tag_src_init": "",
    "user_qos_trust_sel_group_init": "",
    "user_qos_cpu_weight_init": "",
    "user_qos_pri_remap_set": "unit port priority new_priority option option2 option3 option4",
    "user_qos_port_cos_set": "port cos",
    "user_qos_port_cos_get": "port cos",
}


def begins_with_handle(name):
    return name.startswith("user_field_") and name != "user_field_init" and name not in IRREGULAR


def test_only_known_calls_do_not_begin_with_unit_and_zero(driver):
    seen = {}
    for function in driver.functions:
        names = [p.name for p in function.params]
        if begins_with_handle(function.name):
            assert names[:2] == ["handle", "unit"], function.name
        elif names[:2] != ["unit", "zero"]:
            seen[function.name] = " ".join(names)
    assert seen == IRREGULAR


def test_ports_trunks_and_ids_have_one_type_throughout(driver):
    kinds = {"unit": {"u32"}, "zero": {"u32"}, "handle": {"i32"}, "port": {"i32"}, "trunk": {"i32"}, "stg": {"i32"},
             "vid": {"u32"}, "entry": {"u32", "struct"}, "option": {"word"}}
    passed_through = ("user_vlan_translate_", "user_vlan_ip4_", "user_qos_schedule_", "user_qos_pri_queue_map_",
                      "user_qos_dscp_map_")
    words = {("user_mac_table_show", "vid"), ("user_mac_mcast_table_show", "vid"),
             ("user_is_mcast_addr_exist_vlan_is", "vid"), ("user_qos_pri_remap_set", "port")}
    for function in driver.functions:
        if function.name.startswith(passed_through):
            continue
        for param in function.params:
            if not param.pointer and param.name in kinds:
                expected = {"word"} if (function.name, param.name) in words else kinds[param.name]
                assert param.kind in expected, f"{function.name}: {param.name}"


def test_keys_are_eight_bytes_and_are_read(driver):
    keys = [(f.name, p) for f in driver.functions for p in f.params if p.name == "key"]
    assert len(keys) == 15
    for name, param in keys:
        assert (param.kind, param.direction, param.extent) == ("u8", "in", 8), name


def test_a_get_call_writes_something(driver):
    gets = [f for f in driver.functions if f.name.endswith(("_get", "_get_stat", "_get_by_port"))]
    assert len(gets) > 40
    for function in gets:
        assert any(p.direction in ("out", "inout") for p in function.params), function.name


def test_a_set_call_writes_nothing(driver):
    sets = [f for f in driver.functions if f.name.endswith(("_set", "_add", "_delete", "_remove", "_destroy", "_init"))]
    assert len(sets) > 90
    writers = [f.name for f in sets if any(p.direction in ("out", "inout") for p in f.params)]
    assert writers == ["User_mcast_addr_t_init"]


LAYOUT = """
#include <stddef.h>
#include "netlink_api.h"
#include "device_services.h"
#ifdef __cplusplus
#define CHECK(condition) static_assert(condition, #condition)
#else
#define CHECK(condition) _Static_assert(condition, #condition)
#endif
CHECK(sizeof(adp_l2_entry_t) == 88);
CHECK(offsetof(adp_l2_entry_t, mac) == 4 && offsetof(adp_l2_entry_t, vid) == 10);
CHECK(offsetof(adp_l2_entry_t, port) == 12 && offsetof(adp_l2_entry_t, trunk) == 20);
CHECK(offsetof(adp_l2_entry_t, index) == 32 && offsetof(adp_l2_entry_t, ports) == 36);
CHECK(sizeof(netlink_mcast_entry_t) == 88);
CHECK(offsetof(netlink_mcast_entry_t, ports) == 12 && offsetof(netlink_mcast_entry_t, index) == 76);
CHECK(sizeof(adp_agg_record_t) == 16 && offsetof(adp_agg_record_t, ports) == 5);
CHECK(sizeof(netlink_learn_limit_t) == 24);
CHECK(offsetof(netlink_learn_limit_t, vid) == 4 && offsetof(netlink_learn_limit_t, port) == 8);
CHECK(offsetof(netlink_learn_limit_t, trunk) == 12 && offsetof(netlink_learn_limit_t, limit) == 20);
CHECK(sizeof(adp_cable_diag_t) == 32);
CHECK(sizeof(adp_port_set_t) == 32);
"""

COMPILERS = [("gcc", "c11"), ("clang-14", "c11"), ("mips-linux-gnu-gcc", "c11"),
             ("g++", "c++20"), ("clang++-14", "c++20"), ("mips-linux-gnu-g++", "c++20")]
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Wconversion", "-Wsign-conversion", "-Wundef", "-Werror"]


@pytest.mark.parametrize("compiler, standard", COMPILERS)
def test_the_headers_compile_and_have_the_drivers_layout(tmp_path, compiler, standard):
    if shutil.which(compiler) is None:
        pytest.skip(f"{compiler} is not installed")
    source = tmp_path / ("layout.c" if standard == "c11" else "layout.cpp")
    source.write_text(LAYOUT, encoding="utf-8")
    command = [compiler, f"-std={standard}", *WARNINGS, "-fsyntax-only", f"-I{ROOT}/include", f"-I{ROOT}/platform",
               str(source)]
    result = subprocess.run(command, capture_output=True, text=True, timeout=60, check=False)
    assert result.returncode == 0, result.stderr
