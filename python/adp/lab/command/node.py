"""A device or host of a lab that stays."""

import subprocess

from ..device import Device
from ..netns import NetNamespace
from ..offload import disable_offloads
from ..problem import LabError
from .programs import Place, Program, last_line_of_file
from .record import environment_of

DAEMON = "vdeviced"
HOLDER = "(holder)"


class LabDevice(Device):
    """A device on cables that others lay, in a run folder that others remove."""

    def __init__(self, build, node, namespace, run_dir):
        self._describe(build, node.user_ports, node.name)
        self.namespace = namespace
        self.run_dir = str(run_dir)
        self._options = ["--port-interfaces", "port"]
        self._options += ["--config", str(node.configuration)] if node.configuration else []

    @property
    def process(self):
        """The daemon's process, the latest one."""
        return self._daemon

    def start(self):
        self._start()

    def popen(self, command, namespace=None, **options):
        """Starts a program in the device's namespace. It ends with the lab, not with the thread that starts it."""
        with (namespace or self.namespace).entered():
            return subprocess.Popen(command, env=self.environment, **options)

    def _start(self, *options):
        super()._start(*self._options, *options)


class LabNode:
    """A node's namespace, device and programs."""

    def __init__(self, node, folder, path, topology):
        """`folder` is the node's own one; `path` has the folders of the lab's programs."""
        self.node = node
        self.name = node.name
        self.folder = folder
        folder.mkdir(mode=0o700, parents=True)
        self.namespace = NetNamespace(node.name, ipv6=not node.is_device)
        self.interfaces = [end.interface for cable in topology.cables for end in cable.ends if end.node == node.name]
        own = {"VDEVICE_DIR": str(folder), "ADP_SWITCHD_DIR": str(folder / "switchd")} if node.is_device else {}
        self.environment = {**own, **node.environment}
        self.place = Place(node.name, self.namespace, environment_of(path, self.environment), topology.folder)
        self.device = None
        self.conditions = {}  # {user port: options of `vdevctl cable`}
        self.programs = [self._program(name, command) for name, command in node.programs.items()]

    def _program(self, name, command):
        if self.node.is_device and name == DAEMON:
            raise LabError(f"On {self.name}, a program cannot have the name {DAEMON}: the device itself has it.")
        return Program(self.place, name, command, self.folder / f"program-{name}.log")

    def switch_on(self, build, management):
        """Starts the device, whose cables are there. adpsh of the `management` build reads the start-up lines."""
        self.device = LabDevice(build, self.node, self.namespace, self.folder)
        self._management = management
        self.device.start()
        self._set_up()

    def _set_up(self):
        """What the device does not remember when it is switched off."""
        for port, conditions in self.conditions.items():
            options = [word for name, value in conditions.items() for word in (f"--{name}", value)]
            self.device.run_control("--run-dir", self.device.run_dir, "cable", port, *options)
        if self.node.startup:
            lines = self.node.startup
            words = self._management.command("adpsh", "--map", "--script", lines)
            self.place.run_words(words, f"adpsh with the lines of {lines}")

    def raise_interfaces(self):
        """A host's interfaces carry its frames as they are."""
        if self.interfaces:
            self.namespace.ip(*(f"link set {interface} up" for interface in self.interfaces))
            with self.namespace.entered():
                for interface in self.interfaces:
                    disable_offloads(interface)

    def run_commands(self):
        for command in self.node.commands:
            self.place.run(command)

    def start_programs(self):
        for program in self.programs:
            program.start()

    def restart(self):
        """Starts everything of the node again, on the cables that it has."""
        self.namespace.hold()
        if self.device:
            self.device.restart()
            self._set_up()
        for program in self.programs:
            program.restart()

    def processes(self):
        """{name: (process, log)}"""
        found = {HOLDER: (self.namespace.holder, None)}
        if self.device:
            found[DAEMON] = (self.device.process, self.folder / "vdeviced.err")
        return {**found, **{program.name: (program.process, program.log) for program in self.programs}}

    def state(self):
        """What lab.json says of the node."""
        return {
            "namespace": self.namespace.descriptor,
            "environment": self.environment,
            "folder": str(self.folder),
            "processes": {
                name: {
                    "pid": process.pid,
                    "status": process.poll(),
                    "log": log and str(log),
                    "last_line": last_line_of_file(log) if log and process.returncode is not None else "",
                }
                for name, (process, log) in self.processes().items()
            },
        }
