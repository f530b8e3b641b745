"""What the programs of the installed package start."""

import sys


def adp_lab():
    """The program adp-lab."""
    from .lab.command.main import main

    return main(sys.argv[1:])


def adp_panel():
    """The program adp-panel."""
    try:
        import aiohttp  # noqa: F401  (all else comes with the package)
    except ModuleNotFoundError:
        from .panel.options import PROGRAM, parse

        parse(sys.argv[1:])
        sys.exit(f"{PROGRAM}: It needs aiohttp, which is missing: install python3-aiohttp, or 'pip install aiohttp'.")
    from .panel.command import main

    return main(sys.argv[1:])
