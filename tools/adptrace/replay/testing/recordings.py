"""Recordings written by hand."""
import json

BOARD = [{"word1": 0, "word2": 0, "phy": phy, "attributes": 0} for phy in (0, *range(4, 30))]


class Recording:
    """Lines are counted from 1; the map of the default board is in line 3."""

    def __init__(self, byte_order="little", word_bits=64):
        self.lines = [
            {"adptrace": 1, "byte_order": byte_order, "word_bits": word_bits, "started": "2026-11-22T18:00:00Z",
             "command": ["program"]},
            {"process": 7, "parent": 0, "at": 0, "program": "/bin/program", "library": None},
            {"board": BOARD, "at": 0}]
        self._calls = 0

    def begin(self, call, arguments, within=None, thread=1):
        self._calls += 1
        around = {"within": within} if within else {}
        self.lines.append({"begin": self._calls, **around, "thread": thread, "at": 1, "call": call,
                           "arguments": arguments})
        return self._calls

    def end(self, number, result=0, outputs=None):
        self.lines.append({"end": number, "at": 1, "result": result, "outputs": outputs or {}})

    def call(self, library, arguments, driver=None, driver_arguments=None, result=0, outputs=None):
        """A library call, and the driver call within it."""
        number = self.begin(library, arguments)
        if driver:
            self.end(self.begin(driver, {"unit": 0, "zero": 0, **driver_arguments}, within=number), result, outputs)
        self.end(number, result, outputs)

    def text(self):
        return "".join(json.dumps(line) + "\n" for line in self.lines)

    def write(self, path):
        path.write_text(self.text(), encoding="ascii")
        return str(path)


def small_life(vid=100, handle=7, **header):
    """A VLAN with two ports, a list of the spanning-tree groups, a call that fails, and the index of an interface."""
    life = Recording(**header)
    life.call("adp_vlan_create", {"vid": vid}, "user_vlan_create", {"vid": vid})
    life.call("adp_vlan_port_set", {"vid": vid, "members": [1, 26], "untagged": [1]},
              "user_vlan_port_set", {"vid": vid, "members": [4, 29], "untagged": [4]})
    groups = {"list": handle, "count": 1}
    life.call("adp_stg_list", {}, "user_stg_list", {}, outputs=groups)
    life.call("adp_stg_list_destroy", groups, "user_stg_list_destroy", groups)
    life.call("get_nic_index", {"name": "eth0"}, result=4711)
    return life
