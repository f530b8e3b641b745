"""The picture of a lab: every node and cable is in it, and what is not as it should be is told in words."""

import xml.etree.ElementTree

import pytest
from adp.lab import LabError
from adp.lab.topology import Cable, End, Node, Topology, default_topology
from adp.lab.topology.graph import EndState, Live, svg

SVG = "{http://www.w3.org/2000/svg}"
CONDITIONS = {"loss": "5%", "delay": "20ms"}


def drawn(topology, live=None):
    """The picture's texts, and its lines by the nodes at their ends, each with its attributes."""
    picture = xml.etree.ElementTree.fromstring(svg(topology, live))
    texts = [text.text.strip() for text in picture.iter(f"{SVG}text") if text.text and text.text.strip()]
    edges = [group for group in picture.iter(f"{SVG}g") if group.get("class") == "edge"]
    titles = [edge.find(f"{SVG}title").text.split("--") for edge in edges]
    nodes = [tuple(end.partition(":")[0] for end in title) for title in titles]
    lines = dict(zip(nodes, (edge.find(f"{SVG}path").attrib for edge in edges), strict=True))
    return texts, lines


def test_every_node_and_every_cable_is_drawn():
    topology = default_topology()
    texts, lines = drawn(topology)
    hosts, ports = {f"10.0.0.{at}/24" for at in range(1, 5)}, {"1", "2", "3", "4"}
    assert {word for text in texts for word in text.split()} == {*topology.nodes, *hosts, *ports, "lab"}
    assert set(lines) == {("sw1", host) for host in ("h1", "h2", "h3", "h4")}
    assert all("stroke-dasharray" not in line for line in lines.values())


def test_what_is_not_as_it_should_be_is_told_in_words_and_by_the_line():
    port = {at: End("sw1", f"eth{at}") for at in range(1, 5)}
    ends = {
        port[1]: EndState(),
        port[2]: EndState(is_up=False, is_pulled=True),
        port[3]: EndState(conditions=CONDITIONS),
        port[4]: EndState(is_up=False, conditions={"loss": "1%"}),
    }
    texts, lines = drawn(default_topology(), Live(ends, {"sw1": "ring has ended with <1>", "h2": "gone"}))
    assert {"1", "2 pulled", "3 loss 5%, delay 20ms", "4 down, loss 1%"} < set(texts)
    assert {"ring has ended with <1>", "gone"} < set(texts)
    assert {host: ("stroke-dasharray" in line, "stroke-width" in line) for (_, host), line in lines.items()} == {
        "h1": (False, False), "h2": (True, False), "h3": (False, True), "h4": (True, False),
    }  # fmt: skip


def test_without_a_lab_the_conditions_of_the_file_are_told(tmp_path):
    kinds = {"h1": "linux", "h2": "linux", "sw1": "adp", "sw2": "adp", "sw3": "adp"}
    nodes = {name: Node(name, kind) for name, kind in kinds.items()}
    joints = (("h1:eth1", "h2:eth1"), ("h1:eth2", "sw1:eth1"), ("sw2:eth25", "sw1:eth26"), ("sw1:eth2", "sw1:eth3"))
    joints = [tuple(End(*end.split(":")) for end in ends) for ends in joints]
    cables = tuple(Cable(ends, CONDITIONS if at else {}, 1) for at, ends in enumerate(joints))
    texts, lines = drawn(Topology("x", nodes, cables, tmp_path))
    assert {"1 loss 5%, delay 20ms", "25 loss 5%, delay 20ms", "26", "eth1", "eth2", "sw3"} < set(texts)
    assert set(lines) == {("h1", "h2"), ("sw1", "h1"), ("sw1", "sw2"), ("sw1", "sw1")}


def test_without_graphviz_there_is_a_sentence(monkeypatch, tmp_path):
    monkeypatch.setenv("PATH", str(tmp_path))
    with pytest.raises(LabError, match="drawn by Graphviz, which is missing: apt-get install graphviz."):
        svg(default_topology())


def test_odd_texts_are_only_shown():
    topology = default_topology()
    texts, _ = drawn(topology, Live(faults={"sw1": 'a\x00"</b>&\\l' + "x" * 100}))
    assert 'a?"</b>&\\l' + "x" * 50 + "..." in texts
