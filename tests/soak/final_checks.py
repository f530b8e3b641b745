"""What is checked when nothing disturbs the devices any more."""

import contextlib

from adp.lab import LabError
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, vlan_tag
from adp.lab.process import poll_until
from fabric import SIDES, VLANS
from health import descriptors

RELEASE_SECONDS = 10.0


def check_forwarding(fabric):
    """Broadcasts of a host reach exactly its VLAN, frames to a host that host alone, frames of an intruder nobody."""
    stations = fabric.stations
    for station in stations.all:
        station.host.nic.waiting()  # the queue of the bench's own socket is full
    for station in stations.all:
        for vid in VLANS:
            receivers = stations.partners(station) if vid == station.vid else []
            check_reach(fabric, station, vid, BROADCAST, receivers)
    for station in stations.insiders:
        for partner in stations.partners(station):
            check_reach(fabric, station, station.vid, partner.mac, [partner])


def check_reach(fabric, station, vid, destination, receivers):
    pair = fabric.pair
    marker = pair.near.marker()
    frame = ethernet(destination, station.mac, ETHERTYPE_EXPERIMENT, marker.ljust(64, b"."), vlan_tag(vid))
    station.host.send(frame)
    wanted = [{each.host.port: [frame] for each in receivers if each.host.device is lab.device} for lab in pair.labs]
    arrived = pair.arrivals(marker)
    if list(arrived) != wanted:
        raise LabError(
            f"In the end a frame of host {station.number} in VLAN {vid} to {destination.hex(':')} arrives at the "
            f"ports {[sorted(side) for side in arrived]}, and not once at {[sorted(side) for side in wanted]}."
        )


def check_descriptors(fabric):
    """After the last manager has ended, the devices have as many descriptors open as before the first one."""
    for side in SIDES:
        fabric.end_program(side)
        fabric.operators[side].close()
        device, wanted = fabric.device(side), fabric.fresh[side]
        with contextlib.suppress(LabError):
            poll_until(lambda device=device, wanted=wanted: descriptors(device.pid) == wanted, RELEASE_SECONDS, "")
        if descriptors(device.pid) != wanted:
            raise LabError(
                f"The {device.name} has {descriptors(device.pid)} descriptors open after all managers have ended; "
                f"before they started it had {wanted}."
            )
        status = device.end()
        if status != 0 or device.errors():
            raise LabError(f"The {device.name} ends with {status}. It wrote: {device.errors()}")
