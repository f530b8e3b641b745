"""A laboratory bench in Linux network namespaces: a virtual device, hosts on its ports, and a management process.

    with Lab(device_build="host", hosts=[1, 5, 22]) as lab:
        shell = lab.shell("mips")                       # adpsh of any build, on the device's CPU
        shell.call("map")
        lab.hosts[1].send(frame)                        # out of the host's interface, exactly these bytes
        lab.arrivals(marker)                            # {5: [frame], 22: [frame]}: what arrived at which port

Everything is in namespaces that the bench makes itself, so nothing is ever sent on the machine's own interfaces. The
device's namespace holds `vdeviced`, the CPU's "eth0" and the management processes; each host has a namespace of its own
with the far end of one cable, and sends raw frames, since the kernel may have no VLAN devices.

Root needs nothing else. An ordinary user enters a user namespace first, which `python3 -m adp.lab.isolate COMMAND` does
(with PYTHONPATH=python); `script/scenario` and `script/demo` start that way.

Only the standard library is used, and PyYAML for topology files. The modules, each using those before it: `netns` (namespaces), `process` (bounded
start and stop), `nic` (interfaces and frames on them), `frames` (building and describing frames), `builds` (programs
of a build and the emulator), `device`, `host`, `shell` (adpsh as a function call), `bench` (the Lab itself),
`recording` (what became of a lab's frames), `cable` (between two labs), `pair` (two, joined by cables), `ring` (three in
a ring, and its example program), `load` (many flows from one side to the other), `rules` (records for adpsh, and their
places in the chip), `ip` (IPv4 packets), `listener` (multicast groups that a host's kernel joins), `acl`, `snooping` and
`aggregation` (the example programs of an access list, of multicast snooping and of an aggregation group), `failover`
(the latter on both devices of a pair, under load), `flow` (numbered frames, and which of them were lost), `program` (other
projects' programs in a namespace), `lldp`, `openvswitch`, `port_access`, `routing`, `dhcp` and `iperf` (each a daemon or
two), `switchd` (adp-switchd), `switch` (a device with adp-switchd, bridges and daemons), `board` (a real board in the
place of the virtual device) with `board_file`, `board_port`, `board_shell` and `serial_line`, `topology` (topology files)
`command` (the program adp-lab and its labs, which stay) and `entered` (a pair in such a lab).
"""

from .bench import Lab
from .builds import Build
from .pair import Pair
from .problem import LabError

__all__ = ["Build", "Lab", "LabError", "Pair"]
