"""Topology files that are not as they should be: the sentence for each fault, with its line."""

import pytest
from adp.lab import Lab, LabError
from topologies import BASE, H1, LINK, SW1, TopologyText


@pytest.fixture
def read(tmp_path):
    return TopologyText(tmp_path)


@pytest.fixture(scope="module")
def device(device_build):
    with Lab(device_build, (), user_ports=4) as lab:
        yield lab.device


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
    "unknown kind of all": (BASE.replace("  nodes:", "  kinds: {lnx: {}}\n  nodes:", 1), 3, "There is no kind 'lnx'"),
    "unknown group": (with_host("{group: rde}").replace("  nodes:", "  groups: {red: {kind: linux}}\n  nodes:", 1), 6,
                      "There is no group 'rde'. Did you mean 'red'?"),
    "exec as text": (with_host("{kind: linux, exec: ip link}"), 5, "The key 'exec' of the node 'h1' should be a list."),
    "exec of mappings": (with_host("{kind: linux, exec: [{a: b}]}"), 5, "Item 1 of the key 'exec' of the node 'h1' "),
    "empty command": (with_host('{kind: linux, exec: [" "]}'), 5, "Item 1 of the key 'exec' of the node 'h1' should be"
                      " a text of one line."),
    "zero in a command": (with_host('{kind: linux, exec: ["a\\0b"]}'), 5, "Item 1 of the key 'exec'"),
    "odd variable": (with_host("{kind: linux, env: {a=b: c}}"), 5, "'a=b' cannot be the name of a variable."),
    "binds of a host": (with_host('{kind: linux, binds: ["a:/b"]}'), 5,
                        "'binds' has no meaning for a host: hosts see the machine's files."),
    "another bind": (with_node('{kind: adp, binds: ["a:/etc/adp/startup"]}'), 4, "No file can be bound to "
                     "'/etc/adp/startup': a device sees the machine's files, and looks for its own in /etc/adp/"
                     "vdeviced.toml, /etc/adp/startup.adpsh, /etc/adp/switchd.toml. Did you mean '/etc/adp/startup."
                     "adpsh'?"),
    "program twice": (with_node('{kind: adp, binds: ["x.clab.yml:/etc/adp/switchd.toml"], config: {vars: {adp: '
                      "{programs: {adp-switchd: x}}}}}"), 4, "The file bound to /etc/adp/switchd.toml has a program "
                      "'adp-switchd' started already."),
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
def test_a_fault_is_a_sentence_with_its_line(read, name):
    text, line, beginning = FAULTS[name]
    found = read.complaint(text)
    assert (found[0], found[1][: len(beginning)]) == (line, beginning)


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
def test_a_condition_is_read_as_the_device_reads_it(read, device, name, rights, wrongs, form):
    def given(value):
        return f"{BASE}      vars: {{adp: {{{name}: {value}, duplicate: 1%}}}}\n"

    for value in rights:
        assert read(given(value)).cables[0].conditions == {name: value, "duplicate": "1%"}
        device.cable(1, **{name: value, "duplicate": "1%"})
    for value in wrongs:
        beginning = f"The key '{name}' of the variable 'adp' should be "
        assert read.complaint(given(value))[1].startswith((beginning + form, beginning + "a text."))
        with pytest.raises(LabError, match=form):
            device.cable(1, **{name: value, "duplicate": "1%"})


def test_conditions_that_do_not_go_together_are_refused(read):
    jitter = read.complaint(f"{BASE}      vars:\n        adp:\n          delay: 1ms\n          jitter: 1001us\n")
    assert jitter == (11, "The jitter of a cable is at most its delay.")
    assert read.complaint(f"{BASE}      vars: {{adp: {{seed: 7}}}}\n") == (8, "A seed alone makes no cable a bad one.")
