"""A small topology file, and faulty ones made of it."""

import pytest
from adp.lab.topology import TopologyError, read_topology

BASE = """\
name: lab
topology:
  nodes:
    sw1: {kind: adp}
    h1: {kind: linux}
  links:
    - endpoints: ["sw1:eth1", "h1:eth1"]
"""
SW1, H1, LINK = "    sw1: {kind: adp}\n", "    h1: {kind: linux}\n", '    - endpoints: ["sw1:eth1", "h1:eth1"]\n'


class TopologyText:
    """Reads texts as topology files."""

    def __init__(self, folder):
        self._path = folder / "x.clab.yml"

    def __call__(self, text):
        self._path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return read_topology(self._path)

    def complaint(self, text):
        """The line and the sentence with which a text is refused."""
        with pytest.raises(TopologyError) as caught:
            self(text)
        line, _, sentence = str(caught.value).removeprefix(f"{self._path}:").partition(": ")
        assert sentence.endswith((".", "?")) and sentence.isprintable()
        return int(line), sentence
