"""The demonstration: a virtual device with six hosts, and the example program frame_path at work on its CPU; then acl,
which guards a port (demo_acl.py); then two devices joined by an aggregation group whose cables are pulled
(failover.py).

Each step shows the call, the ports that the frame left (as the hosts saw it), and what the program received from which
port. Every step is compared with its expected result, so the demonstration is a test as well: its exit status is 0 only
if all agree. script/demo starts it.
"""

import argparse
import contextlib
import dataclasses
import os
import subprocess
import sys

from demo_acl import run_acl
from demo_traffic import HOST_PORTS, RECEIVED, SENT, host_frames
from failover import run_failover
from adp.lab import Build, Lab, LabError
from adp.lab.device import CPU_INTERFACE
from adp.lab.frames import (
    BROADCAST,
    ETHERTYPE_EXPERIMENT,
    OPCODE_SHIFT,
    describe,
    ethernet,
    mac,
    split_switch_tag,
    vlan_tag,
)
from adp.lab.nic import Nic
from adp.lab.process import LineReader, stop

STEP_SECONDS = 30.0
STEP_MARK = "-- "
LAST_STEP = "done"
LISTEN_STEP = "listen"
RECEIVE_STEP = "receive"
CPU_MAC = mac("02:00:00:00:0c:01")
FRAME_BYTES = 96
ASKED_WIDTH = 46
SEEN_WIDTH = 49
CODES = {"bold": "1", "green": "32", "red": "31", "faint": "2"}


def paint(text, look):
    """Text in colour, on a terminal only."""
    return f"\033[{CODES[look]}m{text}\033[0m" if sys.stdout.isatty() and "NO_COLOR" not in os.environ else text


def ports_text(ports):
    return " ".join(map(str, sorted(ports))) or "none"


@dataclasses.dataclass
class Row:
    """One line of the summary."""

    name: str
    asked: str
    seen: str
    good: bool


class Program:
    """frame_path, one step at a time."""

    def __init__(self, lab, build):
        command = Build(build).command("frame_path", "--step")
        self._process = lab.device.popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT
        )
        self._lines = LineReader(self._process.stdout)

    def line(self):
        return self._lines.line(STEP_SECONDS, "frame_path")

    def go_on(self):
        self._process.stdin.write(b"\n")
        self._process.stdin.flush()

    def close(self):
        return stop(self._process)


class Demonstration:
    """Walks the program through its steps and watches the hosts."""

    def __init__(self, lab, program):
        self._lab = lab
        self._program = program
        self._wire = Nic(lab.device.namespace, CPU_INTERFACE, outgoing=True)
        self.rows = []

    def run(self):
        heading = self._read_until_step()[1]
        number = 1
        while heading[0] != LAST_STEP:
            name, asked = heading
            print(f"\n{paint(f'{number:2}  {asked}', 'bold')}  {paint(f'({name})', 'faint')}")
            if name == RECEIVE_STEP:
                self._hosts_speak()
            self._program.go_on()
            output, heading = self._read_until_step()
            for line in output:
                print("    " + line.strip())
            self._judge(name, asked, output)
            number += 1

    def close(self):
        self._wire.close()

    def _read_until_step(self):
        output = []
        while not (line := self._program.line()).startswith(STEP_MARK):
            output.append(line)
            if line.startswith("frame_path:"):
                raise LabError(f"The program stopped. {line}")
        name, _, asked = line.removeprefix(STEP_MARK).partition(": ")
        return output, (name, asked)

    def _judge(self, name, asked, output):
        if name in SENT:
            self._judge_sent(name, asked)
        elif name == RECEIVE_STEP:
            self._judge_received(output)

    def _judge_sent(self, name, asked):
        wanted = SENT[name]
        marker = f"<frame_path {name}>".encode()
        seen = self._lab.arrivals(marker)
        tag = vlan_tag(wanted.vlan) if wanted.vlan else b""
        payload = marker.ljust(FRAME_BYTES - 14 - (4 if wanted.given_tagged else 0), b"\0")
        frame = ethernet(BROADCAST, CPU_MAC, ETHERTYPE_EXPERIMENT, payload, tag)
        good = seen == {port: [frame] for port in wanted.ports}
        self._print_journey(marker, seen)
        tag_text = f", tagged {wanted.vlan}" if wanted.vlan and wanted.ports else ""
        self._row(name, asked, f"left {ports_text(seen)}{tag_text}", good, f"{ports_text(wanted.ports)}{tag_text}")

    def _print_journey(self, marker, seen):
        """Prints the frame as it was given, its switch tag, and how it left each port."""
        for first, second, given in map(split_switch_tag, (each for each in self._wire.waiting() if marker in each)):
            print(f"    given       {describe(given)}")
            print(f"    switch tag  0x{first:08x} 0x{second:08x}: opcode {first >> OPCODE_SHIFT}")
        by_frame = {}
        for port, frames in sorted(seen.items()):
            for frame in frames:
                by_frame.setdefault(frame, []).append(port)
        for frame, ports in by_frame.items():
            noun = "port" if len(ports) == 1 else "ports"
            print(f"    left        {paint(f'{noun} {ports_text(ports)}', 'green')}: {describe(frame)}")
        if not seen:
            print(f"    left        {paint('no port', 'green')}")

    def _hosts_speak(self):
        for port, frame in host_frames():
            print(f"    port {port:<2} sends {describe(frame)}")
            self._lab.hosts[port].send(frame)

    def _judge_received(self, output):
        # Frames of different ports may overtake each other on their way to the CPU.
        lines = sorted(line.strip() for line in output if line.strip().startswith("from port"))
        for port, wanted in RECEIVED.items():
            here = [line for line in lines if line.startswith(f"from port {port} ")]
            what = "; ".join(line.partition(": ")[2] for line in here) or "nothing"
            self._row(f"from-port-{port}", f"receive from port {port}", what, here == [wanted], wanted)
        if len(lines) != len(RECEIVED):
            self._row("receive", "receive from hosts", f"{len(lines)} frames", False, f"{len(RECEIVED)} frames")

    def _row(self, name, asked, seen, good, wanted):
        if not good:
            print(paint(f"      differs: {wanted} was expected", "red"))
        self.rows.append(Row(name, asked, seen, good))


def print_summary(rows, build):
    print(f"\n{paint(f'Summary, {build} build', 'bold')}")
    for row in rows:
        verdict = paint("ok", "green") if row.good else paint("DIFFERS", "red")
        print(f"  {row.asked:{ASKED_WIDTH}} {row.seen:{SEEN_WIDTH}} {verdict}")
    wrong = sum(not row.good for row in rows)
    if wrong:
        print(f"{wrong} of {len(rows)} frames were not as expected.")
    else:
        print(f"All {len(rows)} frames left and arrived at the expected ports.")
    return wrong == 0


def run_program(lab, build):
    """Shows frame_path; true if everything was as expected."""
    with contextlib.closing(Program(lab, build)) as program:
        with contextlib.closing(Demonstration(lab, program)) as demonstration:
            demonstration.run()
    missing = set(SENT) - {row.name for row in demonstration.rows}
    if missing:
        raise LabError(f"The program left out the steps {', '.join(sorted(missing))}.")
    return print_summary(demonstration.rows, build)


def run_programs(lab, build):
    """Shows what runs on one device; true if everything was as expected."""
    good = run_program(lab, build)
    return run_acl(lab, build, paint) and good


def main():
    parser = argparse.ArgumentParser(prog="script/demo", description=__doc__.splitlines()[0])
    parser.add_argument("--build", default="host", help="build of the library to show")
    parser.add_argument("--device", default="host", help="build of the virtual device")
    arguments = parser.parse_args()
    sys.stdout.reconfigure(line_buffering=True)
    print(f"Virtual device with 26 ports; hosts on the ports {ports_text(HOST_PORTS)}.", end=" ", flush=True)
    try:
        with Lab(arguments.device, HOST_PORTS) as lab:
            print("It is up.")
            good = run_programs(lab, arguments.build)
        good = run_failover(arguments.device, arguments.build, paint) and good
    except KeyboardInterrupt:
        sys.exit("\ndemo: interrupted. Everything is switched off.")
    except LabError as problem:
        sys.exit(f"\ndemo: {problem}")
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    main()
