"""The field processor: rules, counters, miss actions and meters."""
from testing.daemon import BROADCAST, PAYLOAD, datagram, station, wait_until


def test_a_rule_rewrites_what_it_matches_and_nothing_else(device):
    one, two = device.nics("host1", "host2")
    assert device.call("rule", 768, 23, 1, 46, 0) == "0"
    assert device.call("rule", 768, 23, 1, 46, 0).startswith("-"), "the entry is there"
    one.send(BROADCAST + station(1) + datagram())
    assert two.receive() == BROADCAST + station(1) + datagram(tos=46 << 2)
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + PAYLOAD
    assert device.ask("fields")["fields"] == [
        {"entry": 768, "group": 3, "part": "whole", "installed": True, "changed": False, "priority": 1, "matches": 1,
         "qualifiers": [{"field": "in_ports", "ports": [1], "text": "in_ports 1"},
                        {"field": "protocol", "data": 17, "mask": 0xFFFFFFFF, "text": "protocol 17/0xffffffff"}],
         "actions": [{"action": "set_dscp", "value": 46, "text": "set_dscp 46"}]}]
    assert device.control("fields").stdout.splitlines()[1].split() == [
        "768", "3", "whole", "1", "installed", "1", "in_ports", "1,", "protocol", "17/0xffffffff:", "set_dscp", "46"]
    assert device.call("destroy-rule", 768) == "0"
    one.send(BROADCAST + station(1) + datagram())
    assert two.receive() == BROADCAST + station(1) + datagram()


def test_rules_count_and_ports_have_miss_actions(device):
    one, two, cpu = device.nics("host1", "host2", "eth0")
    assert device.call("rule", 768, 23, 205, 7, 0) == "0"
    assert device.call("miss", 23, 3) == "0"
    for _ in range(3):
        one.send(BROADCAST + station(1) + datagram())
        assert two.receive() is not None
        assert cpu.receive() is not None
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert cpu.receive() is not None
    assert two.receive(0.2) is None, "to the CPU only"
    assert device.call("read-field-counter", 7, 0) == "3 0"
    assert device.call("read-field-counter", 7, 1) == "180 0"
    fields = device.ask("fields")
    assert fields["counters"] == [{"counter": 7, "frames": 3, "octets": 180}]
    assert fields["miss_actions"] == [{"port": 1, "action": 3}]
    assert device.control("fields").stdout.splitlines()[-2:] == [
        "counter 7: 3 frames, 180 octets", "port 1: miss action 3"]


def test_a_meter_lets_a_burst_pass_and_drops_the_rest(device):
    one, _ = device.nics("host1", "host2")
    assert device.call("meter", 1, 5) == "0"
    assert device.call("rule", 768, 23, 53, 0, 5) == "0"
    # Each takes 1538 octets out of 3084 with all that goes with it; at 1 kbit/s a third would have to wait 12 seconds.
    for _ in range(4):
        one.send(BROADCAST + station(1) + datagram(1500))
    wait_until(lambda: device.counters(1)["rx_frames"] == 4, "four frames to come in")
    answer = device.ask("meters")
    time = answer.pop("time")
    assert answer == {"capacity": 64, "counts_gap": True, "meters": [
        {"meter": 5, "rate": 1, "depth": 3084, "passed": 2, "dropped": 2, "entries": [768]}]}
    assert 0 < time <= device.ask("version")["uptime"] < time + 60
    assert device.counters(1)["drops"]["meter"] == 2
    assert device.control("meters").stdout.splitlines()[1:] == [
        f"{5:>5}  {1:>10}  {3084:>10} {2:>12} {2:>12}  768", "1 of 64 meters; preamble and gap counted"]
