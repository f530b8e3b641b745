"""Switches to be measured on one bed: the virtual device, the Linux bridge, and Open vSwitch's user-space datapath.

`bed` holds the cables and the counters at their ends, `traffic` the stream, `cores` who runs where and for how long;
`device`, `bridge` and `ovs` are the switches, `rules` what two of them are given to compare frames with, and `course`
is the whole of a measurement. All of it runs in network namespaces of its own; `python3 -m bench.switches.course`
starts it.

A switch has the attributes `name`, `takes_rules` and `passes_frames`, and the methods `processes()`, `addresses()`,
`add_rules(rules)`, `delete_rules(rules)` and `close()`, of which one that passes none needs the first and the last.
"""
