"""The addresses of a lab's nodes: python3 -m adp.panel.addresses LAB prints them as JSON.

It is a process of its own, since who enters a lab cannot leave it again.
"""

import json
import sys

from ..lab.command import record as records
from ..lab.command import run_folder
from ..lab.command.addresses import addresses_from_inside
from .program import program


async def addresses_of(lab):
    """{node: ["10.0.0.1/24"]}; nothing if the lab cannot be entered."""
    async with program([sys.executable, "-B", "-m", __name__, lab]) as process:
        said, _ = await process.communicate()
    return json.loads(said) if process.returncode == 0 else {}


if __name__ == "__main__":
    print(json.dumps(addresses_from_inside(records.read(run_folder.find(sys.argv[1])))))
