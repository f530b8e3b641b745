"""Topology files: what is read, and the sentence for each fault, with its line."""

import pathlib
import random
import time

import pytest
from adp.lab.topology import Cable, End, TopologyError, default_topology, keys, read_topology

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = sorted((ROOT / "examples" / "topologies").glob("*.clab.yml"))
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
MUTATIONS, READING_SECONDS = 300, 5.0


@pytest.fixture
def read(tmp_path):
    """Reads a text as a topology file."""

    def read_text(text):
        path = tmp_path / "x.clab.yml"
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return read_topology(path)

    return read_text


@pytest.fixture
def complaint(read, tmp_path):
    """The line and the sentence with which a text is refused."""

    def of_text(text):
        with pytest.raises(TopologyError) as caught:
            read(text)
        sentence = str(caught.value).removeprefix(f"{tmp_path / 'x.clab.yml'}:")
        assert sentence.endswith((".", "?")) and sentence.isprintable()
        line, _, sentence = sentence.partition(": ")
        return int(line), sentence

    return of_text


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
    assert {path.name for path in EXAMPLES} >= {"two-switches.clab.yml", "ring.clab.yml"}


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


def with_node(text):
    return BASE.replace(SW1, f"    sw1: {text}\n")


def with_host(text):
    return BASE.replace(H1, f"    h1: {text}\n")


def with_link(text):
    return BASE.replace(LINK, f"    - {text}\n")


NO_KEY = "should be a mapping: keys, each with a colon and a value."
FAULTS = {
    "empty": ("", 1, "The file is empty."),
    "no mapping": ("lab\n", 1, f"The file {NO_KEY}"),
    "no YAML": (BASE + "  - x\n", 8, "This is no YAML: expected <block end>, but found '-', while parsing a block"),
    "not UTF-8": (BASE.encode() + b"# \xff\n", 8, "This is not UTF-8."),
    "control character": (BASE + "# \x01\n", 8, "The character 0x1 is not allowed."),
    "no character": ('name: "\\UFFFFFFFF"\n', 1, "This is no YAML: "),
    "two documents": (BASE + "---\na: b\n", 8, "This is no YAML: but found another document"),
    "name missing": (BASE.replace("name: lab\n", ""), 1, "The key 'name' is missing."),
    "topology missing": ("name: lab\n", 1, "The key 'topology' is missing."),
    "alias": (BASE + "mgmt: *x\n", 8, "Aliases and anchors (*name, &name) are not read here: write the value again."),
    "anchor": (BASE + "mgmt: &x {}\n", 8, "Aliases and anchors"),
    "alias bomb": ("a: &a [x, x]\nb: &b [*a, *a]\n", 1, "Aliases and anchors"),
    "itself": ("name: &a [*a]\n", 1, "Aliases and anchors"),
    "tag": (BASE + "mgmt: !!python/object:os.system {}\n", 8, "Tags are not read here: '!!python/object:os.system'."),
    "deep": ("name: lab\nmgmt: " + "[" * 50_000, 2, "There are more than 20 levels."),
    "deep mapping": ("name: lab\nmgmt: " + "{a: " * 50_000, 2, "There are more than 20 levels."),
    "key twice": (BASE.replace(H1, H1 + SW1), 6, "The key 'sw1' is in line 4 already."),
    "ignored key twice": (BASE + "mgmt: {a: 1, a: 2}\n", 8, "The key 'a' is in line 8 already."),
    "key of a list": (BASE + "? [a]\n: b\n", 8, "A key should be a text."),
    "unknown key": (BASE + "nmae: x\n", 8, "The file cannot have a key 'nmae'. Did you mean 'name'?"),
    "unknown node key": (with_host("{kind: linux, exce: []}"), 5,
                         "The node 'h1' cannot have a key 'exce'. Did you mean 'exec'?"),
    "long key": (BASE + f"{'x' * 100}: 1\n", 8, f"The file cannot have a key '{'x' * 59}...'."),
    "odd lab name": (BASE.replace("lab", "../lab", 1), 1, "'../lab' cannot be a name: up to 32 letters"),
    "odd node name": (with_host("{kind: linux}").replace("h1:", "h 1:", 1), 5, "'h 1' cannot be a name"),
    "long node name": (BASE.replace("h1:", f"{'h' * 33}:", 1), 5, f"'{'h' * 33}' cannot be a name"),
    "hidden node name": (BASE.replace("h1:", ".h1:", 1), 5, "'.h1' cannot be a name"),
    "no nodes": ("name: lab\ntopology: {nodes: {}}\n", 2, "There are no nodes."),
    "no node key": ("name: lab\ntopology: {}\n", 2, "There are no nodes."),
    "nodes as list": ("name: lab\ntopology:\n  nodes: [a]\n", 3, f"The key 'nodes' {NO_KEY}"),
    "too many nodes": ("name: lab\ntopology:\n  nodes:\n" + "".join(f"    n{at}:\n" for at in range(1001)), 3,
                       "The key 'nodes' has 1001 entries, and no more than 1000 are read."),
    "no kind": (with_host("{}"), 5, "The node 'h1' has no kind: adp is a device, linux a host."),
    "unknown kind": (with_host("{kind: bridge}"), 5, "There is no kind 'bridge' here: adp is a device, linux a host."),
    "exec as text": (with_host("{kind: linux, exec: ip link}"), 5, "The key 'exec' of the node 'h1' should be a list."),
    "exec of mappings": (with_host("{kind: linux, exec: [{a: b}]}"), 5, "Item 1 of the key 'exec' of the node 'h1' "),
    "empty command": (with_host('{kind: linux, exec: [" "]}'), 5, "Item 1 of the key 'exec' of the node 'h1' should be"
                      " a text of one line."),
    "zero in a command": (with_host('{kind: linux, exec: ["a\\0b"]}'), 5, "Item 1 of the key 'exec'"),
    "odd variable": (with_host("{kind: linux, env: {a=b: c}}"), 5, "'a=b' cannot be the name of a variable."),
    "binds of a host": (with_host('{kind: linux, binds: ["a:/b"]}'), 5,
                        "'binds' has no meaning for a host: hosts see the machine's files."),
    "another bind": (with_node('{kind: adp, binds: ["a:/etc/adp/startup"]}'), 4, "Only /etc/adp/vdeviced.toml and "
                     "/etc/adp/startup.adpsh can be bound, not '/etc/adp/startup': everything else on a device is the "
                     "machine's. Did you mean '/etc/adp/startup.adpsh'?"),
    "no such file": (with_node('{kind: adp, binds: ["a:/etc/adp/startup.adpsh"]}'), 4,
                     "There is no file 'a'; relative paths start in the folder of the topology."),
    "odd file": (with_node('{kind: adp, binds: ["\\0:/etc/adp/startup.adpsh"]}'), 4, "Item 1 of the key 'binds'"),
    "no such configuration": (with_node("{kind: adp, config: {vars: {adp: {configuration: a}}}}"), 4, "There is no "),
    "configured twice": (with_node('{kind: adp, binds: ["x.clab.yml:/etc/adp/vdeviced.toml"], config: {vars: {adp: '
                         "{configuration: x.clab.yml}}}}"), 4, "The node 'sw1' has a file bound to /etc/adp/vdev"),
    "configured host": (with_host("{kind: linux, config: {vars: {adp: {user-ports: 8}}}}"), 5, "The key 'user-ports' "
                        "of the variable 'adp' is for devices, and the node 'h1' is a host."),
    "refused key": (with_host("{kind: linux, ports: []}"), 5, "'ports' has no meaning here: a lab has no management"),
    "refused key of a kind": (BASE.replace("  nodes:", "  kinds:\n    linux: {cmd: bash}\n  nodes:", 1), 4,
                              "'cmd' has no meaning here: name a program: config:"),
    "unknown key of ours": (with_node("{kind: adp, config: {vars: {adp: {program: {}}}}}"), 4,
                            "The variable 'adp' cannot have a key 'program'. Did you mean 'programs'?"),
    "odd program": (with_node("{kind: adp, config: {vars: {adp: {programs: {a/b: c}}}}}"), 4, "'a/b' cannot be a name"),
    "program of nothing": (with_node("{kind: adp, config: {vars: {adp: {programs: {a: }}}}}"), 4,
                           "The program 'a' should be a text."),
    "too many ports": (with_node("{kind: adp, config: {vars: {adp: {user-ports: 32}}}}"), 4,
                       "The key 'user-ports' of the variable 'adp' should be a number from 1 to 31."),
    "odd ports": (with_node("{kind: adp, config: {vars: {adp: {user-ports: [1]}}}}"), 4, "The key 'user-ports' of"),
    "links as mapping": (BASE.replace("    -", "     "), 6, "The key 'links' should be a list."),
    "link as text": (with_link("a"), 7, f"Item 1 of the key 'links' {NO_KEY}"),
    "no ends": (with_link("{}"), 7, "A cable needs the key 'endpoints', a list of two ends."),
    "one end": (with_link('endpoints: ["sw1:eth1"]'), 7, "A cable has two ends, and this one has 1."),
    "no interface": (with_link('endpoints: ["sw1", "h1:eth1"]'), 7,
                     "'sw1' should be a node and its interface: sw1:eth1."),
    "empty interface": (with_link('endpoints: ["sw1:", "h1:eth1"]'), 7, "'sw1:' should be a node and its interface"),
    "key of an end": (with_link('endpoints: [{node: sw1}, "h1:eth1"]'), 7, "An end of a cable needs the key 'interf"),
    "to nowhere": (with_link('endpoints: ["sw1:eth1", "h11:eth1"]'), 7,
                   "A cable to nowhere: there is no node 'h11'. Did you mean 'h1'?"),
    "to the machine": (with_link('endpoints: ["sw1:eth1", "host:eth1"]'), 7,
                       "A cable ends at nodes alone, not at the machine: there is no node 'host'."),
    "another type": (with_link("{type: macvlan, endpoint: {}}"), 7, "'endpoint' has no meaning here: a cable has two"),
    "type": (with_link("{type: vxlan}"), 7, "A cable is of the type veth: it ends at nodes alone, not at the machine."),
    "used twice": (BASE + '    - endpoints: ["sw1:eth2", "h1:eth1"]\n', 8,
                   "The interface h1:eth1 is in use by the cable in line 7."),
    "both at one": (with_link('endpoints: ["sw1:eth1", "sw1:eth1"]'), 7,
                    "The interface sw1:eth1 is in use by the cable in line 7."),
    "no such port": (with_link('endpoints: ["sw1:eth27", "h1:eth1"]'), 7,
                     "The device 'sw1' has no interface 'eth27': its user ports are eth1 to eth26."),
    "port 0": (with_link('endpoints: ["sw1:eth0", "h1:eth1"]'), 7, "The device 'sw1' has no interface 'eth0'"),
    "port 01": (with_link('endpoints: ["sw1:eth01", "h1:eth1"]'), 7, "The device 'sw1' has no interface 'eth01'"),
    "no such port of few": (BASE.replace("{kind: adp}", "{kind: adp, config: {vars: {adp: {user-ports: 8}}}}").replace(
        "sw1:eth1", "sw1:eth9"), 7, "The device 'sw1' has no interface 'eth9': its user ports are eth1 to eth8."),
    "odd interface": (with_link('endpoints: ["sw1:eth1", "h1:a/b"]'), 7, "'a/b' cannot be the name of a host's "),
    "long interface": (with_link('endpoints: ["sw1:eth1", "h1:abcdefghijklmnop"]'), 7, "'abcdefghijklmnop' cannot be"),
    "loopback": (with_link('endpoints: ["sw1:eth1", "h1:lo"]'), 7, "'lo' cannot be the name of a host's interface."),
    "mtu": (BASE + "      mtu: 1400\n", 8, "'mtu' has no meaning here: give it with a command of 'exec'"),
    "unknown condition": (BASE + "      vars: {adp: {los: 5%}}\n", 8,
                          "The variable 'adp' cannot have a key 'los'. Did you mean 'loss'?"),
    "conditions as list": (BASE + "      vars: {adp: [loss]}\n", 8, f"The variable 'adp' {NO_KEY}"),
    "bad cable of hosts": ("name: x\ntopology:\n  defaults: {kind: linux}\n  nodes: {a: , b: }\n  links:\n"
                           '    - endpoints: ["a:eth1", "b:eth1"]\n      vars: {adp: {loss: 5%}}\n', 6,
                           "Only a cable at a device can be a bad one, and this one joins two hosts."),
}  # fmt: skip


@pytest.mark.parametrize("name", FAULTS)
def test_a_fault_is_a_sentence_with_its_line(complaint, name):
    text, line, beginning = FAULTS[name]
    found = complaint(text)
    assert (found[0], found[1][: len(beginning)]) == (line, beginning)


def test_a_file_that_is_large_missing_or_a_folder_is_refused(read, tmp_path):
    with pytest.raises(TopologyError, match="The file is larger than 256 KiB"):
        read(BASE + "#" * 256 * 1024)
    for path, sentence in ((tmp_path / "none.yml", "No such file or directory"), (tmp_path, "Is a directory")):
        with pytest.raises(TopologyError, match=f"{path}: Cannot be read: {sentence}"):
            read_topology(path)


SHARE, TIME = "a percentage from 0% to 100%, as 5%", "a time up to 10s, as 20ms"
RATE, SEED = "a rate up to 100G, as 64k", "a number from 0 to 4294967295"


@pytest.mark.parametrize(
    "name, rights, wrongs, form",
    (
        ("loss", ("0%", "0.0001%", "100%", "5.50%"), ("5", "100.0001%", "0.00001%", "-1%", "5 %", "x%"), SHARE),
        ("delay", ("0us", "0.001us", "1.5ms", "10s"), ("20", "10.1s", "1h", "0.0001us", "1e3ms", "[1]"), TIME),
        ("rate", ("64k", "2.5G", "100G"), ("64", "0.5k", "100.1G", "1m", "99999999999k"), RATE),
        ("seed", ("0", "4294967295"), ("4294967296", "-1", "1.5", "x", "{}"), SEED),
    ),
)
def test_a_condition_is_read_as_the_device_reads_it(read, complaint, name, rights, wrongs, form):
    def given(value):
        return f"{BASE}      vars: {{adp: {{{name}: {value}, duplicate: 1%}}}}\n"

    for value in rights:
        assert read(given(value)).cables[0].conditions == {name: value, "duplicate": "1%"}
    for value in wrongs:
        beginning = f"The key '{name}' of the variable 'adp' should be "
        assert complaint(given(value))[1].startswith((beginning + form, beginning + "a text."))


def test_conditions_that_do_not_go_together_are_refused(complaint):
    jitter = complaint(f"{BASE}      vars:\n        adp:\n          delay: 1ms\n          jitter: 1001us\n")
    assert jitter == (11, "The jitter of a cable is at most its delay.")
    assert complaint(f"{BASE}      vars: {{adp: {{seed: 7}}}}\n") == (8, "A seed alone makes no cable a bad one.")


# Random changes

WORDS = (
    *("", "null", "[]", "{}", "- ", ": ", "'", '"', "&a ", "*a", "!!python/none ", "eth0", "sw1:eth1", "\t", "\\0",),
    *("|\n", "99999999999999999999", "~", "%YAML 1.1\n", "---\n", "<<: ", "adp: ", "\x00", "\ufeff", "\U0001f600", "[" * 30),
)


def mutated(octets, chance):
    for _ in range(chance.randint(1, 4)):
        begin = chance.randrange(len(octets) + 1)
        end = min(len(octets), begin + chance.choice((0, 1, 8, 60)))
        other = chance.randrange(len(octets) + 1)
        put = chance.choice((chance.choice(WORDS).encode(), chance.randbytes(2), octets[other : other + 60]))
        octets = octets[:begin] + put + octets[end:]
    return octets


@pytest.mark.parametrize("path", EXAMPLES, ids=lambda path: path.name)
def test_changed_at_random_a_file_is_read_or_refused(read, path):
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
    assert MUTATIONS / 3 < refused


# The table of the reference page

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


def test_the_page_says_of_every_key_what_becomes_of_it():
    page = (ROOT / "docs" / "reference" / "topology.md").read_text(encoding="utf-8")
    told = {place: {} for place in TABLES}
    for row in page.partition("| in | key | |\n")[2].partition("\n\n")[0].splitlines()[1:]:
        place, names, meaning = (cell.strip() for cell in row.strip("|").split("|"))
        verdict = meaning.removeprefix("refused: ") if meaning.startswith(("refused: ", keys.IGNORED)) else keys.READ
        told[place] |= {name.strip("` "): verdict for name in names.split(",")}
    assert told == TABLES
