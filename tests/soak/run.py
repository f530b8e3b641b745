"""Two devices under full traffic: frames between the hosts of both, managers that set and read back, cables that are
pulled and plugged in, managers that are killed, and devices that are switched off and on.

Ends with a table of counts and the status 0, or with a sentence that says what went wrong, and 1. The seed decides what
happens and when. It does not decide how far the processes are by then, so two runs with one seed are alike, not equal.
"""

import argparse
import faulthandler
import sys
import time
from random import Random

from adp.lab import LabError
from fabric import Fabric
from soak import Soak

# Every wait has a deadline of its own. If one has been forgotten, the run ends this long after its time.
HANG_SECONDS = 240


def parse(words):
    parser = argparse.ArgumentParser(prog="script/soak", description="Two virtual devices under full traffic.")
    parser.add_argument("seconds", nargs="?", type=int, default=600, help="duration, by default ten minutes")
    parser.add_argument("--seed", type=int, default=None, help="of a run to be repeated")
    parser.add_argument("--rate", type=int, default=1000, help="frames per second of each host; 0: as many as it can")
    parser.add_argument("--builds", default="host", help="builds of the managers, in turn; for example host,mips")
    parser.add_argument("--device", default="host", help="build of the devices")
    options = parser.parse_args(words)
    options.builds = options.builds.split(",")
    # The address sanitizer keeps freed memory, to detect its use.
    options.judges_memory = options.device != "asan"
    if options.seed is None:
        options.seed = Random().randrange(1 << 31)
    return options


def main(words):
    options = parse(words)
    print(f"Soak test of two devices for {options.seconds} seconds, seed {options.seed}.", flush=True)
    faulthandler.dump_traceback_later(options.seconds + HANG_SECONDS, exit=True)
    began = time.monotonic()
    try:
        with Fabric(options.device, options.builds[0]) as fabric:
            soak = Soak(fabric, options)
            try:
                soak.run()
            finally:
                for name, count in soak.summary():
                    print(f"  {name:28}{count:>14}")
    except LabError as problem:
        print(f"script/soak: FAILED after {time.monotonic() - began:.0f} s, seed {options.seed}: {problem}",
              file=sys.stderr)  # fmt: skip
        return 1
    print(f"ok: no frame misplaced, nothing leaked, in {time.monotonic() - began:.0f} seconds.")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
