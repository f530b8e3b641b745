"""Ten thousand stations that come, move and go, more than the table holds, against a plain map of them."""

import random
from collections import Counter

from segment import ALL, DYNAMIC, SLOTS, Segment, bucket, colon_form, in_a_row

PORTS = (1, 5, 22, 26)
WITNESS = 3
STATIONS = 10_000
BATCH = 250
DELETED_AT_ONCE = 20
ROUNDS_BETWEEN_FLUSHES = 9
SEED = 20


class PlainMap:
    """Where each station is, as far as its bucket had room when it spoke."""

    def __init__(self, vid):
        self._vid = vid
        self.places = {}
        self.refused = 0
        self._used = Counter()

    def speak(self, address, port):
        if address not in self.places:
            home = bucket(address, self._vid)
            if self._used[home] == SLOTS:
                self.refused += 1
                return
            self._used[home] += 1
        self.places[address] = port

    def forget(self, address):
        if self.places.pop(address, None) is not None:
            self._used[bucket(address, self._vid)] -= 1

    def forget_port(self, port):
        for address in [address for address, place in self.places.items() if place == port]:
            self.forget(address)

    def on_port(self, port):
        return sum(place == port for place in self.places.values())


class Churn:
    """The device and the map, which are told the same."""

    def __init__(self, segment):
        self.segment, self.map = segment, PlainMap(segment.vid)
        self.refused_before = self._table()["refused"]

    def _table(self):
        return self.segment.lab.device.control("macs")

    def speak(self, port, stations):
        self.segment.crowd(port, stations)
        for address in stations:
            self.map.speak(address, port)

    def delete(self, addresses):
        for address in addresses:
            assert self.segment.cpu.result("adp_del_mac_addr_by_mac", address.hex(), ALL) == 0
            self.map.forget(address)

    def flush(self, port):
        assert self.segment.cpu.result("adp_del_mac_addr_by_intf", port, DYNAMIC) == 0
        self.map.forget_port(port)

    def check_counts(self):
        assert {port: self.segment.learned(port) for port in PORTS} == {port: self.map.on_port(port) for port in PORTS}

    def check_places(self):
        table = self._table()
        wanted = {colon_form(address): port for address, port in self.map.places.items()}
        assert {row["mac"]: row["port"] for row in table["macs"]} == wanted
        assert len(table["macs"]) == len(wanted)
        assert table["refused"] == self.refused_before + self.map.refused


def test_counts_equal_a_plain_map_of_ten_thousand_stations(lab, cpu):
    assert cpu.result("adp_del_mac_by_lrntype", ALL) == 0
    chance = random.Random(SEED)
    churn = Churn(Segment(lab, cpu, (*PORTS, WITNESS)))
    everybody = in_a_row(STATIONS)
    chance.shuffle(everybody)
    turns = [everybody[first : first + BATCH] for first in range(0, STATIONS, BATCH)]
    turns += [chance.sample(everybody, BATCH) for _ in turns]
    for number, stations in enumerate(turns, 1):
        churn.speak(chance.choice(PORTS), stations)
        churn.delete(chance.sample(stations, DELETED_AT_ONCE))
        churn.check_counts()
        if number % ROUNDS_BETWEEN_FLUSHES == 0 and number > len(turns) // 2:
            churn.flush(chance.choice(PORTS))
            churn.check_counts()
        if number % (len(turns) // 4) == 0:
            churn.check_places()
    assert churn.map.refused > 0, "the stations were too few to fill a bucket"
