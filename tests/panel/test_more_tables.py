"""Groups, rules, queues, meters, limits, mirrors, tags, priorities, traps, log and events, as the page shows them."""

import re
import shlex
import subprocess
import sys

import pytest
from adp.lab.builds import native_build
from table_parts import adpsh, environment_of, frame, part, row_of, rule, send, show, station, until_row

GROUP, OTHER_GROUP = "01:00:5e:01:02:04", "01:00:5e:01:02:05"
IN_PORTS, SRC_MAC, L4_DST_PORT, SRC_IP = 13, 6, 28, 9
DROP, COUNT, METER, PERMIT = 201, 205, 53, 200
GUARDS, METERS = 20, 30
SCRIPT = "<img src=x onerror=\"document.title='taken over'\">"

# What says how to make a row, on a device that was just switched on.
EMPTY = {
    "multicast": ["Groups", "Ports and unknown groups"],
    "rules": ["Entries", "Miss actions"],
    "meters": ["Meters"],
    "storm": ["Storm limits of ports", "Ingress limits"],
    "limits": ["Limits"],
    "mirrors": ["Mirror sessions"],
    "translations": ["Ingress translations", "Egress translations", "Double-tag entries", "Subnets",
                     "Ports with double tags or another tag type"],
    "priorities": ["Ports"],
    "events": ["Event queue"],
}

LOG = """
import ctypes, sys
ctypes.CDLL(sys.argv[1]).Log_logging_func(5, 1, sys.argv[2].encode(), b"%s", sys.argv[3].encode())
"""


@pytest.fixture(scope="module")
def device(lab):
    """sw1, to which each test adds what it shows."""
    yield lab
    lab.restart("sw1")


def test_empty_tables_say_how_to_fill_them(page, fresh):
    for table, titles in EMPTY.items():
        show(page, table)
        commands = [page.wait_for(f'.part[aria-label="{title}"] .none code').text for title in titles]
        assert [part(page, title) for title in titles] == [[]] * len(titles)
        words = [shlex.split(command) for command in commands]
        assert all(re.search("adp-lab$", each[0]) and each[1:4] == ["adpsh", "sw1", "--map"] for each in words), commands
        lines = [line for each in words for line in each[4:]]
        assert adpsh(fresh, *lines).count("= ") >= len(lines)
        for title in titles:
            page.until(lambda title=title: part(page, title), f"A row of {title} after {lines}")


def test_multicast_groups_with_their_ports(page, device):
    ports = {GROUP: 0x4000022, OTHER_GROUP: 0x81}
    show(page, "multicast")
    for group, bits in ports.items():
        adpsh(device, f"adp_add_mac_mcast_addr {group} {bits:#x} 1 1")
    page.wait_for("tr.new-row", GROUP)
    assert row_of(page, "Groups", Address=GROUP)["Ports"] == "1,5,26"
    assert row_of(page, "Groups", Address=OTHER_GROUP)["Ports"] == "cpu,7"
    assert [each.text.replace("·", " ").split() for each in page.roles("image", re.compile("^Ports"))] == [
        ["1", "5", "26"], ["cpu", "7"]]
    page.wait_for(".bar-text", f"{len(device.ask('sw1', 'mcast')['mcast'])} of 1,024 groups")
    adpsh(device, "adp_control_ipmc_lookup_miss_action ADP_MCAST_MISS_DROP")
    known = row_of(page, "Ports and unknown groups", Port="26")
    assert (known["Unknown group of IPv4"], known["Unknown group of IPv6"]) == ("drop", "flood")


def words_of(text):
    """The rules that `vdevctl fields` prints, by their entries: matches, actions."""
    return {line.split()[0]: tuple(re.split(" {2,}", line)[-1].split(": ", 1))
            for line in text.splitlines()[1:] if re.match(" *[0-9]+ +[0-9]+ ", line)}


def test_rules_are_shown_in_the_device_s_words_with_their_hits(page, device):
    adpsh(
        device, "adp_fp_init",
        rule(GUARDS, 0, [(IN_PORTS, {1}), (SRC_MAC, bytes.fromhex(station(7)))], [(COUNT, 9), (PERMIT,)], priority=3),
        rule(GUARDS, 1, [(IN_PORTS, {1, 2, 3}), (SRC_IP, 0x0A010009), (L4_DST_PORT, 22)], [(DROP,)]),
        rule(METERS, 0, [(SRC_MAC, bytes.fromhex(station(8)))], [(METER, 500, 0)]),
        "adp_add_remark_rule {rule_id=1 port_bitmap=[0,0x20] remark_kind=2 remark_value=46 rule_form=7}",
        "adp_fp_lookupMissAct_set 7 ADP_FP_MISS_TO_CPU")
    show(page, "rules")
    words = words_of(device.vdevctl("sw1", "fields"))
    assert len(words) == 5
    page.until(lambda: len(part(page, "Entries")) == 5, "Five rules")
    rows = {row["Entry"]: row for row in part(page, "Entries")}
    assert {entry: (row["Matches"], row["Actions"]) for entry, row in rows.items()} == words
    order = [(int(row["Group"]), -int(row["Priority"])) for row in part(page, "Entries")]
    assert order == sorted(order)
    assert not any("hit" in row["Hits"] for row in rows.values())
    limited = next(row for row in rows.values() if "meter 0" in row["Actions"])
    assert limited["Meters"] == "meter 0: 500 kbit/s, 0 dropped"
    assert row_of(page, "Miss actions", Port="7")["Frames that no rule matches"] == "go to the CPU alone"

    send(device, frame(station(7)), times=20)
    entry = next(entry for entry, row in rows.items() if "count 9" in row["Actions"])
    hit = row_of(page, "Entries", Entry=entry, Hits="20 hit")
    assert re.fullmatch(r"\d+(\.\d)?( k)?/s", hit["Hits per second"]) and hit["Hits per second"] != "0/s"
    counter = row_of(page, "Counters", Counter="9", Frames="20")
    assert (counter["Octets"], counter["Entries that count"]) == ("2,000", entry)
    quiet = row_of(page, "Entries", Entry=entry, Hits="20")
    assert quiet["Hits per second"] == "0/s"
    page.click("label", "Only rules with hits")
    page.until(lambda: [row["Entry"] for row in part(page, "Entries")] == [entry], "Only the rule with hits")


def test_queues_show_what_waits_and_what_is_lost(page, device):
    adpsh(device, "adp_set_port_egress_shaper 2 100 0", "adp_set_port_queue_sch_mode 2 ADP_SCHEDULING_WEIGHTED")
    show(page, "queues")
    row = row_of(page, "Queues of ports", Port="2", Scheduling="weighted")
    assert (row["Shaper"], row["Weights"]) == ("100 kbit/s", "1 1 1 1 1 1 1 1")
    send(device, frame(station(1), 1400), times=80)
    until_row(page, "Queues of ports", lambda row: row["Port"] == "2" and "lost" in row["Q0"], "frames of port 2 are lost")
    page.size(360)
    send(device, frame(station(1), 1400), times=80)
    page.until(lambda: page.all("td.changed .sign"), "A mark at what has changed")
    assert not page.is_scrolled_sideways(), "a mark far to the right does not make the page wider"
    page.size(1400)
    page.by_role("button", "Queues of port 2").click()
    first = until_row(page, "Queues of port 2", lambda row: row["Queue"] == "0", "a row for queue 0")
    frames, octets = int(first["Frames that wait"]), first["Octets that wait"]
    assert 1 < frames <= 46 and re.fullmatch(r"[0-9]{1,2},[0-9]{3} of 65,536", octets), first
    widths = page.script("""
        return [...document.querySelectorAll(".part[aria-label='Queues of port 2'] tbody.rows td:nth-child(3) .bar-fill")]
            .map((each) => parseFloat(each.style.width));
    """)
    assert widths[0] > 1 and set(widths[1:]) == {0}
    adpsh(device, "adp_set_port_egress_shaper 2 0 0")
    lost = next(port for port in device.ask("sw1", "queues")["ports"] if port["port"] == 2)["queues"][0]["dropped"]
    assert lost > 0
    row_of(page, "Queues of port 2", **{"Queue": "0", "Frames that wait": "0", "Dropped": f"{lost:,}"})
    assert row_of(page, "Queues of ports", Port="2")["Shaper"] == "none"
    few = len(part(page, "Queues of ports"))
    page.click("label", "Also ports without frames")
    page.until(lambda: len(part(page, "Queues of ports")) == 27 > few, "All ports")


def counts_of(row):
    return row["Frames passed"], row["Frames dropped"]


def counted(answer):
    return str(answer["passed"]), str(answer["dropped"])


def test_meters_and_limits_count_what_they_drop(page, device):
    adpsh(
        device, "adp_fp_init", rule(METERS, 0, [(SRC_MAC, bytes.fromhex(station(8)))], [(METER, 64, 0)]),
        "adp_set_storm_control 0 1 ADP_STORM_BROADCAST 64 0", "adp_set_storm_control 0 2 ADP_STORM_MULTICAST 20 0",
        "adp_set_storm_counting_mode 0 ADP_STORM_MULTICAST 0 1", "adp_set_ingress_limit 0 1 10000 0")
    send(device, frame(station(8), 1000), frame(station(9), 1000), times=15)
    show(page, "meters")
    meter = device.ask("sw1", "meters")["meters"][0]
    assert meter["dropped"] > 0 and meter["passed"] > 0
    shown = row_of(page, "Meters", Meter="0", Rate="64.0 kbit/s", Burst="3,084 octets")
    assert counts_of(shown) == counted(meter)
    assert shown["Entries that name it"] == "892"

    show(page, "storm")
    limits = device.ask("sw1", "storm")
    storm = next(row for row in limits["storm"] if (row["port"], row["type"]) == (1, "broadcast"))
    assert storm["exceeded"] and storm["dropped"] > 0
    shown = row_of(page, "Storm limits of ports", Port="1", Frames="broadcast", State="exceeded")
    assert counts_of(shown) == counted(storm)
    assert row_of(page, "Storm limits of ports", Port="2", Frames="multicast")["Limit"] == "20 frames/s"
    assert limits["ingress"][0]["dropped"] > 0
    row_of(page, "Ingress limits", Port="1", Limit="10.0 Mbit/s")
    page.until(lambda: counts_of(part(page, "Ingress limits")[0]) == counted(device.ask("sw1", "storm")["ingress"][0]), "The counts")


def test_limits_on_learning_and_refused_addresses(page, device):
    adpsh(device, "adp_set_storm_control 0 1 ADP_STORM_BROADCAST 0 0", "adp_set_ingress_limit 0 1 0 0",
          "adp_set_mac_limit 1 1 ADP_MAC_SCOPE_INTF", "adp_set_mac_limit 4000 0 ADP_MAC_SCOPE_SYSTEM")
    show(page, "limits")
    send(device, frame(station(0x21)), frame(station(0x22)))
    row = row_of(page, "Refused addresses", Port="1", Address="02:00:00:00:00:22")
    assert row["VLAN"] == "1"
    until_row(page, "Limits", lambda row: row["Addresses of"] == "port 1" and row["State"] == "full", "port 1 is full")
    row_of(page, "Limits", **{"Addresses of": "the whole chip", "Limit": "4,000"})
    page.wait_for(".note", "port 1 refused")


def test_mirrors_tags_and_priorities(page, device):
    adpsh(
        device, "adp_mirror_init", "adp_add_port_mirror 2 24 ADP_MIRROR_INGRESS 2", "adp_set_flow_mirror 26 1",
        "adp_vlan_translate_add 0 8 0 300 100 5", "adp_vlan_ip4_add 8 0xC0A80000 0xFFFF8000 200 ADP_KEEP_PRIORITY 0",
        "adp_vlan_dtag_add 0 9 0 40 200 2", "adp_double_tag_set 9 ADP_DOUBLE_TAG_CUSTOMER", "adp_double_tag_tipd_set 9 0x88a8 0",
        "adp_set_port_pri_trust_mode 9 ADP_TRUST_DSCP", "adp_port_dscp_map_set 0 10 12 2", "adp_cosq_port_mapping_set 9 1 4")
    show(page, "mirrors")
    assert row_of(page, "Mirror sessions", Session="1") == {
        "Session": "1", "What comes in at": "2", "What leaves at": "none", "Is copied to": "24", "Rules copy to": "-",
        "State": "enabled"}
    assert row_of(page, "Mirror sessions", Session="0")["Rules copy to"] == "26"

    show(page, "translations")
    row = row_of(page, "Ingress translations", Port="5")
    assert (row["VLAN in the tag"], row["VLAN inside"], row["Priority"]) == ("300", "100", "5")
    row = row_of(page, "Subnets", Port="5")
    assert (row["Untagged packets of"], row["VLAN"], row["Priority"]) == ("192.168.0.0/17", "200", "kept")
    assert row_of(page, "Double-tag entries", Port="9")["Service's VLAN"] == "200"
    row = row_of(page, "Ports with double tags or another tag type", Port="9")
    assert (row["Double tags"], row["Tag type"]) == ("towards the customer", "0x88a8")

    show(page, "priorities")
    row = row_of(page, "Ports", Port="9")
    assert (row["Trusts"], row["Priority to queue"]) == ("the DSCP", "1→4")
    shown = page.script("return [...document.querySelectorAll('.matrix td')].map((each) => each.innerText)")
    wanted = [f"{row['priority']}{'' if row['mapped'] == row['dscp'] else ' →' + str(row['mapped'])}"
              for row in device.ask("sw1", "priorities")["dscps"]]
    assert shown == wanted and shown[10] == "2 →12"


def test_traps_events_and_addresses(page, device):
    show(page, "reserved")
    row_of(page, "Protocols and attacks", **{"Frames of": "LACP", "Trap or filter": "off", "They": "are forwarded"})
    adpsh(device, "adp_set_trap_lacp_packet 1 0 0 0", "adp_dos_attack_init")
    row = until_row(page, "Protocols and attacks", lambda row: row["Frames of"] == "LACP" and row["Trap or filter"] == "on",
                    "the trap is on")
    assert row["They"] == "go to the CPU alone"
    until_row(page, "Protocols and attacks", lambda row: (row["Frames of"], row["They"]) == ("attacks", "are dropped"), "the filter")
    assert [row["Address"] for row in part(page, "Reserved addresses")] == [
        row["mac"] for row in device.ask("sw1", "reserved")["reserved"]]
    adpsh(device, "adp_link_event_fast_send_unicast_msg_ex 3 1")
    show(page, "events")
    last = device.ask("sw1", "events")["events"][-1]
    row = row_of(page, "Event queue", Time=f"{last['time']:.6f}", Queue=str(last["queue"]))
    assert row["Record"] == " ".join(map(str, last["record"]))


def test_hostile_log_is_text_and_the_newest_is_in_sight(page, device):
    library = native_build().path_of("libdevice_services.so")

    def log(text):
        subprocess.run(
            [sys.executable, "-c", LOG, library, "<b>", text], env=environment_of(device), check=True, timeout=60)

    for number in range(3):
        log(f"{SCRIPT} {number}")
    adpsh(device, *[f"adp_fp_lookupMissAct_set {port} 0" for port in range(1, 25)])
    show(page, "log")
    log("a\nb \x1b[2J \u202e \\ " + SCRIPT)
    row = page.until(lambda: part(page, "Log")[-1:] if "onerror" in part(page, "Log")[-1]["Text"] else None, "The last line")[0]
    assert device.vdevctl("sw1", "log", "--last", "1").splitlines()[0].endswith(f"1 <b>     {row['Text']}")
    assert row["Text"] == f"a\\nb \\x1b[2J \\xe2\\x80\\xae \\\\ {SCRIPT}"
    assert row["Module"] == "1 <b>"
    assert int(row["Line"]) == device.ask("sw1", "log")["total"]
    assert page.all("main img, main b") == [] and page.script("return document.title") != "taken over"
    scroll = "const frame = document.querySelector('.log .scroll');"
    rest = "return frame.scrollHeight - frame.scrollTop - frame.clientHeight"
    assert page.script(f"{scroll} return frame.scrollHeight > frame.clientHeight")
    page.until(lambda: page.script(scroll + rest) < 2, "The end of the log")
    page.script(f"{scroll} frame.scrollTop = 0")
    page.until(lambda: page.script(scroll + rest) > 2, "The beginning of the log")
    log("one more")
    page.until(lambda: any(row["Text"] == "one more" for row in part(page, "Log")), "One more line")
    assert page.script(f"{scroll} return frame.scrollTop") == 0, "who reads is left alone"


METERED = rule(METERS, 0, [(SRC_MAC, bytes.fromhex(station(8)))], [(METER, 64, 0)])
# Calls after which a table has a row, whatever other tests have done.
FILLED = {
    "multicast": f"adp_add_mac_mcast_addr {GROUP} 0x4000022 1 1",
    "rules": METERED,
    "queues": "adp_set_port_egress_shaper 3 10000 0",
    "meters": METERED,
    "storm": "adp_set_storm_control 0 2 ADP_STORM_MULTICAST 20 0",
    "limits": "adp_set_mac_limit 4000 0 ADP_MAC_SCOPE_SYSTEM",
    "mirrors": "adp_set_flow_mirror 26 1",
    "translations": "adp_double_tag_set 9 ADP_DOUBLE_TAG_CUSTOMER",
    "priorities": "adp_set_port_pri_trust_mode 9 ADP_TRUST_DSCP",
    "reserved": "adp_dos_attack_init",
    "log": METERED,
    "events": "adp_link_event_fast_send_unicast_msg_ex 3 1",
}
MARKED = ("rules", "queues")  # have colours of their own


@pytest.mark.parametrize("table", FILLED)
def test_table_is_for_everybody_and_its_commands_work(page, device, table):
    adpsh(device, FILLED[table])
    page.theme("dark")
    page.size(360)
    show(page, table)
    page.until(lambda: page.all(".part tbody.rows tr"), "Rows")
    assert page.axe() == []
    assert not page.is_scrolled_sideways()
    if table in MARKED:
        page.theme("light")
        assert page.axe() == []
    names = page.script("return [...document.querySelectorAll('main .part button')].map((each) => each.title)")
    commands = {name for name in names if " vdevctl sw1 " in name and "--rate" not in name}
    assert commands
    for command in sorted(commands)[:4]:
        said = device.vdevctl("sw1", *shlex.split(command.partition(" vdevctl sw1 ")[2]))
        assert said.strip(), command
