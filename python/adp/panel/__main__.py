"""python3 -m adp.panel: the program adp-panel."""

import sys

from ..programs import adp_panel

if __name__ == "__main__":
    sys.exit(adp_panel())
