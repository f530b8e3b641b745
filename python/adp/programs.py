"""What the programs of the installed package start."""

import sys


def adp_lab():
    """The program adp-lab."""
    from .lab.command.main import main

    return main(sys.argv[1:])
