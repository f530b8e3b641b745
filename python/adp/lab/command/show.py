"""The tables of a lab: its nodes, and what has ended."""

import time

from .addresses import addresses
from .cabling import port_of
from .namespaces import pids_outside
from .node import HOLDER
from .panel import panel_address
from .programs import how_it_ended
from .words import PROGRAM, counted, table

NONE = "-"


def end_name(end, topology):
    """A cable's end as it is written on the command line."""
    return f"{end.node}:{port_of(end)}" if topology.nodes[end.node].is_device else str(end)


def _cables(record, name):
    """ "1=h1:eth1 2=h2:eth1": the node's ends, and what is at the other ones."""
    topology = record.topology
    found = []
    for cable in topology.cables:
        for near, far in (cable.ends, cable.ends[::-1]):
            if near.node == name:
                own = port_of(near) if topology.nodes[name].is_device else near.interface
                found.append((own, f"{own}={end_name(far, topology)}"))
    return " ".join(text for _own, text in sorted(found)) or NONE


def nodes_table(record):
    """What `up` shows: nodes with their cables and addresses."""
    found = addresses(record)
    rows = [("NODE", "CABLES", "ADDRESSES")]
    rows += [(name, _cables(record, name), " ".join(found[name]) or NONE) for name in record.topology.nodes]
    return table(rows)


def _is_running(state):
    return state["status"] is None


def processes_table(record):
    """What `ps` shows: nodes with their programs."""
    found = addresses(record)
    outside = pids_outside(record)
    rows = [("NODE", "PROGRAM", "STATE", "PID", "CABLES", "ADDRESSES")]
    for name in record.topology.nodes:
        about = (_cables(record, name), " ".join(found[name]) or NONE)
        shown = {key: value for key, value in record.nodes[name]["processes"].items() if key != HOLDER}
        for program, state in shown.items() or [(NONE, record.nodes[name]["processes"][HOLDER])]:
            running = _is_running(state)
            pid = str(outside.get(state["pid"], NONE)) if running else NONE
            rows.append((name, program, "running" if running else "ended", pid, *about))
            name, about = "", ("", "")
    return table(rows)


def _remark(record, name, program, state):
    restart = f"'{PROGRAM} restart {name}' starts it again."
    if program == HOLDER:
        return f"{name}: the process that stands for it {how_it_ended(state['status'])}. {restart}"
    last = f'Its last line: "{state["last_line"]}".' if state["last_line"] else "It wrote nothing."
    return f"{name}: {program} {how_it_ended(state['status'])}. {last} {restart}"


def remarks_on(record, name):
    """A sentence for each process of a node that has ended."""
    processes = record.nodes[name]["processes"]
    return [_remark(record, name, program, state) for program, state in processes.items() if not _is_running(state)]


def remarks(record):
    """The same of all nodes."""
    return [remark for name in record.nodes for remark in remarks_on(record, name)]


def heading(record):
    nodes = record.topology.nodes.values()
    devices = sum(node.is_device for node in nodes)
    minutes, seconds = divmod(int(time.time() - record.data["started"]), 60)
    since = f"{minutes} min {seconds} s" if minutes else f"{seconds} s"
    return (
        f"Lab '{record.name}', up for {since}: {counted(devices, 'device')}, {counted(len(nodes) - devices, 'host')}, "
        f"{counted(len(record.topology.cables), 'cable')}."
    )


def suggestions(record):
    """Two commands to try."""
    nodes = record.topology.nodes
    found = addresses(record)
    hosts = [name for name, node in nodes.items() if not node.is_device and found[name]]
    devices = [name for name, node in nodes.items() if node.is_device]
    tries = [f"exec {hosts[0]} -- ping -c1 {hosts[1]}"] if len(hosts) > 1 else []
    tries += [f"vdevctl {devices[0]} ports"] if devices else []
    tries += [f"shell {next(iter(nodes))}"] if nodes else []
    return [f"{PROGRAM} {words}" for words in tries[:2]]


def lab_text(record):
    """What `ps` shows of a lab."""
    address = panel_address(record.folder)
    panel = [f"The panel: {address}"] if address else []
    return "\n".join([heading(record), processes_table(record), *panel, *remarks(record)])
