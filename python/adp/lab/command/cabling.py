"""The interfaces of a topology's cables, made in one run of `ip`."""

import itertools

from ..device import CPU_INTERFACE
from ..offload import disable_offloads

CPU_PORT_INTERFACE = "cpu0"
CPU_MTU = 9300
FIRST_INDEX = 1000


def port_of(end):
    """The user port of a device's end: eth3 is port 3."""
    return int(end.interface.removeprefix("eth"))


def interface_of(end, nodes):
    """Name of the interface that is a cable's end."""
    return f"port{port_of(end)}" if nodes[end.node].node.is_device else end.interface


def lay_cables(nodes, cables, ip):
    """`nodes` has LabNodes by name; `ip` runs lines of the program in any namespace."""
    # The kernel reports a carrier at once only if the indexes of the two ends differ; otherwise it may take a second.
    indexes = itertools.count(FIRST_INDEX)

    def side(node, interface):
        return f"{interface} netns {nodes[node].namespace.holder_pid} index {next(indexes)}"

    devices = [name for name, node in nodes.items() if node.node.is_device]
    pairs = [((name, CPU_PORT_INTERFACE), (name, CPU_INTERFACE)) for name in devices]
    pairs += [tuple((end.node, interface_of(end, nodes)) for end in cable.ends) for cable in cables]
    lines = [f"link add {side(*near)} type veth peer name {side(*far)}" for near, far in pairs]
    if lines:
        ip(*lines)
    for name in devices:
        namespace = nodes[name].namespace
        namespace.ip(f"link set {CPU_INTERFACE} mtu {CPU_MTU} up")
        with namespace.entered():
            disable_offloads(CPU_INTERFACE)


def set_conditions(nodes, cables):
    """Hands each cable's conditions to the device at one end, which treats frames of both directions."""
    for cable in cables:
        if cable.conditions:
            end = next(end for end in cable.ends if nodes[end.node].node.is_device)
            nodes[end.node].conditions[port_of(end)] = cable.conditions
