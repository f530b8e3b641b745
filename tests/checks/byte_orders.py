"""Compares the complete traces of two builds, one of each byte order: of unit tests, and of random calls.

Every imported call with its arguments, its result and what it wrote, and every system call with the frames that leave
have to be the same text on both machines.
"""
import argparse
import difflib
import os
import shlex
import subprocess
import sys
import tempfile

CONTEXT = 1
MOST_SHOWN = 12
LONGEST_LINE = 300


def run(command, environment):
    done = subprocess.run(command, env={**os.environ, **environment}, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          stdin=subprocess.DEVNULL, check=False)
    if done.returncode != 0:
        sys.exit(f"byte_orders: {shlex.join(command)} ended with {done.returncode}:\n"
                 + done.stdout.decode(errors="replace")[-2000:])


def sections(path):
    """The trace's parts by their headings, `== NAME`."""
    parts, name = {}, ""
    with open(path, encoding="utf-8", errors="backslashreplace") as trace:
        for line in trace:
            if line.startswith("== "):
                name = line[3:].strip()
                if name in parts:
                    sys.exit(f"byte_orders: two parts of a trace are called {name}")
                parts[name] = []
            else:
                parts.setdefault(name, []).append(line)
    return parts


def shortened(line):
    return line[:LONGEST_LINE] + " ...\n"


def show_difference(what, host, target):
    print(f"\n{what}: the traces differ (- host, + target)")
    lines = list(difflib.unified_diff(host, target, lineterm="\n", n=CONTEXT))[2:]
    sys.stdout.writelines(line if len(line) < LONGEST_LINE else shortened(line) for line in lines[:MOST_SHOWN])
    if len(lines) > MOST_SHOWN:
        print(f"... and {len(lines) - MOST_SHOWN} lines more")


def compare(program, host_path, target_path):
    """Prints what differs. Gives the number of parts and of lines, and of parts that differ."""
    host, target = sections(host_path), sections(target_path)
    if host.keys() != target.keys():
        for name in sorted(host.keys() ^ target.keys()):
            print(f"{program}: {name} runs on the {'host' if name in host else 'target'} only")
        return len(host), 0, len(host.keys() ^ target.keys())
    different = [name for name in host if host[name] != target[name]]
    for name in different[:5]:
        show_difference(f"{program} {name}", host[name], target[name])
    if different[5:]:
        print(f"\n{program}, likewise: " + ", ".join(different[5:]))
    return len(host), sum(map(len, host.values())), len(different)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("host", help="the host's build folder")
    parser.add_argument("target", help="the target's build folder")
    parser.add_argument("--emulator", default="", help="what runs the target's programs")
    parser.add_argument("--calls", type=int, default=0, help="number of random calls to compare as well")
    parser.add_argument("--programs", nargs="*", default=[], help="unit test programs, by name")
    options = parser.parse_args()
    jobs = [(name, []) for name in options.programs]
    if options.calls:
        jobs.append(("differential", [str(options.calls), "1"]))
    if not jobs:
        sys.exit("byte_orders: there is nothing to compare")
    failed = 0
    with tempfile.TemporaryDirectory() as folder:
        for program, arguments in jobs:
            traces = []
            for side, build, emulator in (("host", options.host, []),
                                          ("target", options.target, shlex.split(options.emulator))):
                path = os.path.join(build, program)
                if not os.path.exists(path):
                    sys.exit(f"byte_orders: {path} is missing: build the {side} first")
                trace = os.path.join(folder, f"{program}.{side}")
                if program == "differential":
                    run(emulator + [path] + arguments + ["--trace", trace], {})
                else:
                    run(emulator + [path], {"ADP_TRACE_FILE": trace})
                traces.append(trace)
            parts, lines, different = compare(program, *traces)
            print(f"{program}: {parts} parts, {lines} lines" + (f", {different} differ" if different else ""))
            # A program that traces nothing compares nothing.
            if different or not lines:
                failed += 1
            for trace in traces:
                os.remove(trace)
    if failed:
        sys.exit(f"byte_orders: FAILED: {failed} of {len(jobs)} programs behave differently on the two machines")
    print(f"ok: {len(jobs)} programs do the same in both byte orders")


if __name__ == "__main__":
    main()
