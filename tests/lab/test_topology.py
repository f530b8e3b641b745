"""Topology files: what is read, and that nothing but a sentence comes of one that is not as it should be."""

import pathlib
import random
import re
import time

import pytest
from adp.lab.topology import Cable, End, TopologyError, default_topology, keys, read_topology
from topologies import BASE, H1, SW1, TopologyText

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = sorted((ROOT / "examples" / "topologies").glob("*.clab.yml"))
PAGE = ROOT / "docs" / "reference" / "topology.md"
MUTATIONS, READING_SECONDS = 300, 5.0


@pytest.fixture
def read(tmp_path):
    return TopologyText(tmp_path)


def test_the_default_is_one_device_with_four_hosts():
    topology = default_topology()
    assert [name for name, node in topology.nodes.items() if node.is_device] == ["sw1"]
    hosts = [node for node in topology.nodes.values() if not node.is_device]
    assert [host.name for host in hosts] == ["h1", "h2", "h3", "h4"]
    assert [host.commands for host in hosts] == [(f"ip address add 10.0.0.{at}/24 dev eth1",) for at in (1, 2, 3, 4)]
    assert [str(end) for cable in topology.cables for end in cable.ends] == [
        end for at in (1, 2, 3, 4) for end in (f"sw1:eth{at}", f"h{at}:eth1")
    ]


@pytest.mark.parametrize("path", EXAMPLES, ids=lambda path: path.name)
def test_the_topologies_of_the_documents_are_read(path):
    topology = read_topology(path)
    assert f"{topology.name}.clab.yml" == path.name
    assert topology.cables


def test_there_are_topologies_of_the_documents():
    assert {path.name for path in EXAMPLES} >= {"two-switches.clab.yml", "ring.clab.yml", "failover.clab.yml"}


def test_a_node_of_the_kind_linux_is_a_device_by_its_image(read):
    for image in ("localhost/adp:latest", "adp", "adp:1.2", "example.org/x/adp", "adp@sha256:00"):
        assert read(f"name: x\ntopology: {{nodes: {{a: {{kind: linux, image: '{image}'}}}}}}\n").nodes["a"].is_device
    for image in ("localhost/adp-tools:latest", "adp/alpine", "notadp"):
        topology = read(f"name: x\ntopology: {{nodes: {{a: {{kind: linux, image: '{image}'}}}}}}\n")
        assert not topology.nodes["a"].is_device


def test_a_node_takes_what_is_said_for_all_for_its_kind_and_for_its_group(read):
    node = read("""
name: x
topology:
  defaults: {kind: linux, env: {A: all, B: all, C: all}, exec: [all]}
  kinds: {linux: {exec: [kind], env: {B: kind, C: kind}}}
  groups: {red: {exec: [group], config: {vars: {adp: {programs: {p: group}}}}}}
  nodes:
    h1: {group: red, exec: [own], env: {C: own, D: 5, E: }}
    h2:
""").nodes
    assert node["h1"].commands == ("all", "kind", "group", "own")
    assert node["h1"].environment == {"A": "all", "B": "kind", "C": "own", "D": "5", "E": ""}
    assert node["h1"].programs == {"p": "group"}
    assert (node["h2"].commands, node["h2"].programs) == (("all", "kind"), {})


def test_a_device_has_programs_ports_and_files(read, tmp_path):
    (tmp_path / "sw1.toml").write_text("")
    (tmp_path / "ring.adpsh").write_text("")
    vars_ = "config: {vars: {other: 1, adp: {user-ports: 8, programs: {ring: agent 1 2}, configuration: sw1.toml}}}"
    binds = 'binds: ["sw1.toml:/etc/adp/vdeviced.toml", "ring.adpsh:/etc/adp/startup.adpsh:ro"]'
    first = read(BASE.replace(SW1, f"    sw1: {{kind: adp, {vars_}}}\n")).nodes["sw1"]
    assert (first.user_ports, first.programs) == (8, {"ring": "agent 1 2"})
    assert (first.configuration, first.startup) == (tmp_path / "sw1.toml", None)
    second = read(BASE.replace(SW1, f"    sw1: {{kind: adp, {binds}}}\n")).nodes["sw1"]
    assert (second.configuration, second.startup) == (tmp_path / "sw1.toml", tmp_path / "ring.adpsh")
    assert (second.user_ports, second.line) == (26, 4)


def test_what_the_image_starts_and_takes_off_is_meant_here_too(read, tmp_path):
    (tmp_path / "my switchd.toml").write_text("")
    given = 'binds: ["my switchd.toml:/etc/adp/switchd.toml:ro"], exec: [on-cpu ip link, "adpsh map"]'
    node = read(BASE.replace(SW1, f"    sw1: {{kind: adp, {given}}}\n")).nodes["sw1"]
    assert node.programs == {"adp-switchd": f"adp-switchd --config '{tmp_path}/my switchd.toml'"}
    assert node.commands == ("ip link", "adpsh map")


def test_a_cable_is_read_in_either_form_with_its_conditions(read):
    conditions = {"loss": "5%", "delay": "20ms", "jitter": "2ms", "rate": "100M", "corrupt": "0.1%",
                  "duplicate": "1%", "seed": "7"}
    given = ", ".join(f"{name}: {value}" for name, value in conditions.items())
    cables = read(f"""\
{BASE}      vars: {{adp: {{{given}}}}}
    - type: veth
      endpoints:
        - node: sw1
          interface: eth26
        - {{node: h1, interface: uplink0}}
""").cables
    assert cables == (
        Cable((End("sw1", "eth1"), End("h1", "eth1")), conditions, 7),
        Cable((End("sw1", "eth26"), End("h1", "uplink0")), {}, 9),
    )


def test_what_is_for_containers_alone_is_ignored(read):
    text = BASE.replace(H1, "    h1: {kind: linux, labels: {a: b}, image: x, memory: 1G, mgmt-ipv4: 172.20.20.2}\n")
    assert read(f"prefix: ''\nmgmt: {{network: x}}\n{text}").nodes["h1"].commands == ()


def test_a_file_that_is_large_missing_or_a_folder_is_refused(read, tmp_path):
    with pytest.raises(TopologyError, match="The file is larger than 256 KiB"):
        read(BASE + "#" * 256 * 1024)
    for path, sentence in ((tmp_path / "none.yml", "No such file or directory"), (tmp_path, "Is a directory")):
        with pytest.raises(TopologyError, match=f"{path}: Cannot be read: {sentence}"):
            read_topology(path)


# Random changes

WORDS = (
    *("", "null", "[]", "{}", "- ", ": ", "'", '"', "&a ", "*a", "!!python/none ", "eth0", "sw1:eth1", "\t", "\\0",),
    *("|\n", "99999999999", "~", "%YAML 1.1\n", "---\n", "<<: ", "adp: ", "\x00", "\ufeff", "\U0001f600", "[" * 30),
)


def mutated(octets, chance):
    """One or two words or places changed."""
    for _ in range(chance.randint(1, 2)):
        words = [match.span() for match in re.finditer(rb"[\w.:/%-]+", octets)] or [(0, 0)]
        place = chance.randrange(len(octets) + 1)
        begin, end = chance.choice((chance.choice(words), (place, place + chance.choice((0, 1, 4, 20)))))
        other = slice(*chance.choice(words))
        letter = bytes([chance.choice((*range(32, 127), 255))])
        put = chance.choice((chance.choice(WORDS).encode(), letter, octets[other]))
        octets = octets[:begin] + put + octets[end:]
    return octets


@pytest.mark.parametrize("path", EXAMPLES, ids=lambda path: path.name)
def test_changed_at_random_a_file_is_read_or_refused(read, tmp_path, path):
    for startup in path.parent.glob("*.adpsh"):
        (tmp_path / startup.name).write_bytes(startup.read_bytes())
    chance = random.Random(path.name)
    octets, refused = path.read_bytes(), 0
    for _ in range(MUTATIONS):
        text, begin = mutated(octets, chance), time.monotonic()
        try:
            read(text)
        except TopologyError as error:
            assert str(error).isprintable()
            refused += 1
        assert time.monotonic() - begin < READING_SECONDS, text
    assert MUTATIONS / 10 < refused < MUTATIONS


# The documents

TABLES = {
    "file": keys.TOP,
    "topology": keys.TOPOLOGY,
    "node": keys.NODE,
    "config of a node": keys.CONFIG,
    "adp of a node": keys.NODE_VARS,
    "link": keys.LINK,
    "end of a link": keys.ENDPOINT,
    "adp of a link": keys.LINK_VARS,
}


def test_the_topologies_in_the_text_of_documents_are_read(read, tmp_path):
    for name in ("startup.adpsh", "vdeviced.toml", "switchd.toml"):
        (tmp_path / name).write_text("")
    found = {}
    for page in sorted((ROOT / "docs").rglob("*.md")):
        for text in re.findall(r"^```yaml[^\n]*\n(name: .*?)^```$", page.read_text(encoding="utf-8"), re.M | re.S):
            found[page.stem] = read(text)
    assert [str(cable.conditions) for cable in found["topology"].cables] == ["{}", "{'loss': '10%', 'seed': '9'}"]
    assert {"lab", "run-in-containers", "topology"} <= set(found)


def test_the_page_says_of_every_key_what_becomes_of_it():
    told = {place: {} for place in TABLES}
    for row in PAGE.read_text(encoding="utf-8").partition("| in | key | |\n")[2].partition("\n\n")[0].splitlines()[1:]:
        place, names, meaning = (cell.strip() for cell in row.strip("|").split("|"))
        verdict = meaning.removeprefix("refused: ") if meaning.startswith(("refused: ", keys.IGNORED)) else keys.READ
        told[place] |= {name.strip("` "): verdict for name in names.split(",")}
    assert told == TABLES
