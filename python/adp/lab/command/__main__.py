"""python3 -m adp.lab.command: the program adp-lab."""

import sys

from .main import main

if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
