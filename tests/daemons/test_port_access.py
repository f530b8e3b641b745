"""hostapd on the switch lets a host in that runs wpa_supplicant."""

import pytest
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet
from adp.lab.port_access import Hostapd, Supplicant
from adp.lab.process import poll_until

GUEST, OTHER, THIRD = 5, 1, 2
ACCESS = """
[ports.swp5]
dot1x = "port"
"""
ADDRESSES = {GUEST: "10.5.0.5", OTHER: "10.5.0.1", THIRD: "10.5.0.2"}
SWITCH = "10.5.0.100"
USERS = {"guest": "secret"}
ACCESS_SECONDS = 20.0
QUIET_SECONDS = 1.0

pytestmark = [pytest.mark.needs("hostapd", "wpa_supplicant")]


@pytest.fixture
def switch(make_switch):
    made = make_switch((GUEST, OTHER, THIRD), ACCESS)
    made.bridge("br10", ["swp1", "swp2", "swp5"], addresses=[f"{SWITCH}/24"])
    for port, host in made.hosts.items():
        host.set_address(f"{ADDRESSES[port]}/24")
    poll_until(lambda: made.hosts[OTHER].ping(ADDRESSES[THIRD], 1), ACCESS_SECONDS, "A ping between other hosts")
    return made


def shout(switch):
    """The ports where a frame of the guest arrives that is for everybody."""
    marker = switch.lab.marker()
    frame = ethernet(BROADCAST, switch.lab.mac(GUEST), ETHERTYPE_EXPERIMENT, marker.ljust(46, b"."))
    switch.hosts[GUEST].send(frame)
    return set(switch.lab.arrivals(marker))


def check(switch, is_in):
    """Whether the guest reaches everybody, or nobody at all."""
    guest = switch.hosts[GUEST]
    everybody = (ADDRESSES[OTHER], SWITCH)
    if is_in:
        for address in everybody:
            poll_until(lambda: guest.ping(address, 1), ACCESS_SECONDS, f"A ping of the guest to {address}")
        assert shout(switch) == {OTHER, THIRD}
    else:
        assert [address for address in everybody if guest.ping(address, QUIET_SECONDS)] == []
        assert shout(switch) == set()


@pytest.mark.needs_chip
def test_a_host_is_let_in_by_its_password_and_out_when_it_logs_off(switch):
    hostapd = switch.add(Hostapd(switch.namespace, "swp5", USERS, switch.switchd))
    check(switch, is_in=False)
    host = switch.hosts[GUEST]
    supplicant = switch.add(Supplicant(host.namespace, host.nic.interface, "guest", "secret"))
    poll_until(supplicant.is_let_in, ACCESS_SECONDS, "The supplicant's success")
    assert len([line for line in hostapd.stations().splitlines() if "AUTHORIZED" in line]) == 1
    check(switch, is_in=True)
    supplicant.log_off()
    poll_until(lambda: shout(switch) == set(), ACCESS_SECONDS, "The end of the guest's access")
    check(switch, is_in=False)
    supplicant.log_on()
    check(switch, is_in=True)


@pytest.mark.needs_chip
def test_a_host_with_a_wrong_password_stays_out(switch):
    hostapd = switch.add(Hostapd(switch.namespace, "swp5", USERS, switch.switchd))
    host = switch.hosts[GUEST]
    supplicant = switch.add(Supplicant(host.namespace, host.nic.interface, "guest", "wrong"))
    poll_until(lambda: "CTRL-EVENT-EAP-FAILURE" in supplicant.log(), ACCESS_SECONDS, "The supplicant's failure")
    assert "AUTHORIZED" not in hostapd.stations()
    check(switch, is_in=False)
