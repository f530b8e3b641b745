"""The view of a lab's topology: its picture for everybody, what one does with cables, and what happens to the lab meanwhile."""

import json
import re
import subprocess
import time

import pytest
from adp.lab.topology import default_topology, read_topology
from panels import module
from selenium.webdriver.common.keys import Keys

SHOWN_SECONDS = 1.0
CABLE = "Cable sw1:1 to h1:eth1"


def cable(page, state="up", ends="sw1:1 to h1:eth1"):
    """The button of a cable in the picture, once its state is this."""
    return page.by_role("button", re.compile(rf"Cable {ends}, {state}\b"))


def words_of(element):
    """The texts in the picture, which stand beside their button."""
    return element.find_element("xpath", "..").get_attribute("textContent")


def details(page):
    return page.text(".topology-details")


@pytest.fixture(name="picture")
def opened(page):
    page.open("#topology/sw1")
    cable(page)
    return page


@pytest.fixture(name="mended")
def cables_as_they_were(lab):
    """Leaves good cables that are plugged in."""
    yield
    for port in (1, 25):
        lab.vdevctl("sw1", "plug", str(port))
        lab.vdevctl("sw1", "cable", str(port), "--clear")
    lab.wait(lambda: lab.is_linked("sw1", 1) and lab.is_linked("sw2", 25), "The links")


def test_nodes_and_cables_are_buttons_with_names(picture):
    for name in ("Device sw1, running", "Device sw2, running", "Host h1, running, 10.0.0.1/24"):
        picture.by_role("button", name)
    cable(picture, ends="sw1:25 to sw2:25")
    shown = words_of(picture.wait_for("svg.topology"))
    assert [word for word in ("sw1", "h4", "10.0.0.4/24", "eth1", "25") if word not in shown] == []
    rows = picture.wait_for(".topology-list table").text.splitlines()
    assert sum(" to " in row and " up" in row for row in rows) == 5


@pytest.mark.usefixtures("mended")
def test_a_cable_that_is_pulled_in_a_terminal_shows_at_once(picture, lab):
    for command in ("pull", "plug"):
        lab.vdevctl("sw1", command, "1")
        began = time.monotonic()
        state = "pulled" if command == "pull" else "up"
        picture.until(
            lambda s=state: picture.script("return document.querySelectorAll(arguments[0]).length", f"svg.topology .is-{s}")
            == (1 if s == "pulled" else 5),
            f"A cable that is {state}",
        )
        assert time.monotonic() - began < SHOWN_SECONDS
        assert ("×" in words_of(cable(picture, state))) == (state == "pulled")
    lab.vdevctl("sw2", "pull", "25")
    cable(picture, "pulled", "sw1:25 to sw2:25")
    lab.vdevctl("sw2", "plug", "25")
    cable(picture, "up", "sw1:25 to sw2:25")


@pytest.mark.usefixtures("mended")
def test_pull_and_plug_by_keyboard(picture, lab):
    picture.script("arguments[0].focus()", cable(picture))
    picture.press(Keys.ENTER)
    picture.until(lambda: picture.focused().text == CABLE, "The focus on the heading")
    picture.by_role("button", "Pull the cable").send_keys(Keys.SPACE)
    cable(picture, "pulled")
    assert not lab.is_linked("sw1", 1)
    assert re.search(" plug sw1:1$", details(picture), re.M)
    picture.by_role("button", "Plug the cable in").send_keys(Keys.ENTER)
    cable(picture, "up")
    lab.wait(lambda: lab.is_linked("sw1", 1), "The link")
    picture.by_role("button", "Close").send_keys(Keys.ENTER)
    picture.wait_until_gone(".topology-details")
    assert picture.focused().accessible_name.startswith(CABLE)


def conditions(lab, device="sw1"):
    return {row["port"]: row["conditions"] for row in lab.ask(device, "cables")["cables"]}


@pytest.mark.usefixtures("mended")
def test_a_cable_is_made_bad_and_good_again(picture, lab):
    picture.open("#topology/sw1/cable/sw1%3A25")
    picture.wait_for(".cable-form", "A good cable.")
    fields = {name: picture.wait_for(f'.cable-form input[name="{name}"]') for name in ("loss", "delay", "jitter", "rate")}
    fields["jitter"].send_keys("2ms")
    picture.click(".cable-form button", "Make it bad")
    picture.wait_for(".cable-form [role=alert]", "the jitter of a cable is at most its delay.")
    assert conditions(lab) == {}
    fields["loss"].send_keys("5")
    fields["delay"].send_keys("20ms")
    picture.wait_for(".cable-form code", "cable sw1:25 --loss 5% --delay 20ms --jitter 2ms")
    picture.click(".cable-form button", "Make it bad")
    picture.wait_for(".cable-form", "A bad cable: loss 5%, delay 20ms, jitter 2ms.")
    assert conditions(lab) == {25: {"loss": "5%", "delay": "20ms", "jitter": "2ms", "seed": 1}}
    assert "!" in words_of(cable(picture, "bad", "sw1:25 to sw2:25"))
    picture.wait_for(".topology-list td", "loss 5%, delay 20ms, jitter 2ms")
    assert picture.axe() == []
    picture.click(".cable-form button", "Make it good")
    picture.wait_for(".cable-form", "A good cable.")
    assert conditions(lab) == {}


@pytest.mark.usefixtures("mended")
def test_a_cable_that_is_bad_at_its_other_end_is_changed_there(picture, lab):
    lab.vdevctl("sw2", "cable", "25", "--loss", "1%")
    cable(picture, "bad", "sw1:25 to sw2:25")
    picture.go("#topology/sw1/cable/sw1%3A25")
    picture.wait_for(".cable-form", "A bad cable: loss 1%.")
    picture.click(".cable-form button", "Make it good")
    cable(picture, "up", "sw1:25 to sw2:25")
    assert conditions(lab, "sw2") == {}


def test_frames_move_on_the_cables_that_carry_them(picture, lab):
    picture.media(**{"prefers-reduced-motion": "no-preference"})
    words = module("adp.lab.command", "exec", "h1", "--", "ping", "-q", "-i0.02", "-w60", "h3")
    with subprocess.Popen(words, env=lab.environment, stdout=subprocess.DEVNULL):
        for ends in ("sw1:1 to h1:eth1", "sw1:25 to sw2:25", "sw2:1 to h3:eth1"):
            name = re.compile(rf"Cable {ends}, up, [1-9][0-9.]* frames/s there, [1-9][0-9.]* frames/s back")
            found = picture.by_role("button", name)
            lanes = "return [...arguments[0].querySelectorAll('.lane')].map((lane) => getComputedStyle(lane).animationName)"
            picture.until(
                lambda f=found: sorted(picture.script(lanes, f)) == ["topology-backward", "topology-onward"], f"Lanes of {ends}"
            )
        picture.media(**{"prefers-reduced-motion": "reduce"})
        assert picture.script(lanes, found) == ["none", "none"]
        picture.go("#topology/sw1/cable/sw1%3A1")
        picture.until(lambda: len(re.findall(r"[1-9][\d.]* frames/s, [\d.]+ kbit/s", details(picture))) == 2, "Bits per second")
        lab.exec("h1", "pkill", "-x", "ping")
    idle = re.compile("Cable sw1:1 to h1:eth1, up, 0 frames/s there, 0 frames/s back")
    picture.by_role("button", idle)
    assert picture.script(lanes, cable(picture)) == []


def test_a_device_that_ends_and_comes_back(picture, lab):
    lab.kill("sw2")
    began = time.monotonic()
    picture.wait_for(".topology .device.is-gone")
    assert time.monotonic() - began < SHOWN_SECONDS
    assert "?" in words_of(cable(picture, "gone", "sw1:25 to sw2:25"))
    picture.go("#topology/sw1/node/sw2")
    picture.wait_for(".topology-details", "sw2: vdeviced was ended by the signal SIGKILL.")
    lab.restart("sw2")
    picture.by_role("button", "Device sw2, running")
    cable(picture, "up", "sw1:25 to sw2:25")
    picture.wait_until_gone(".topology-details .problem")
    picture.wait_for(".topology-details", "3 of 26")


def test_details_of_devices_and_hosts(picture):
    picture.click(picture.by_role("button", "Device sw1, running"))
    picture.until(lambda: "3 of 26" in details(picture), "The ports")
    assert [link.text for link in picture.all(".topology-links a")] == ["Front of sw1", "Tables of sw1", "Frames of sw1"]
    picture.click(picture.by_role("button", re.compile("^Host h2")))
    picture.wait_for(".topology-details", "10.0.0.2/24")
    assert re.search("exec h2 -- ping h1$", details(picture), re.M)
    picture.click(".topology-details button", "Close")
    picture.wait_until_gone(".topology-details")


def test_read_only(page, read_only):
    page.open("#topology/sw1/cable/sw1%3A1", read_only.url)
    assert not page.by_role("button", "Pull the cable").is_enabled()
    assert [page.by_role("button", name).is_enabled() for name in ("Make it bad", "Make it good")] == [False, False]
    assert not page.wait_for('input[name="loss"]').is_enabled()


def lab_as_told(topology):
    """A topology as the server tells it."""
    def end(each):
        port = int(each.interface.removeprefix("eth")) if topology.nodes[each.node].is_device else None
        return {"node": each.node, "interface": each.interface, "port": port}

    nodes = [{"name": n.name, "kind": n.kind, "running": True, "addresses": [], "remarks": []} for n in topology.nodes.values()]
    return {"name": "lab", "command": "", "nodes": nodes, "cables": [{"ends": list(map(end, c.ends))} for c in topology.cables]}


def made_lab(devices, hosts, joined):
    """Devices with as many hosts each, and cables between the pairs of devices `joined`."""
    nodes = [(f"sw{at}", "adp") for at in range(devices)] + [(f"h{at}", "linux") for at in range(devices * hosts)]
    ends = [((f"sw{at // hosts}", at % hosts + 1), (f"h{at}", None)) for at in range(devices * hosts)]
    ends += [((f"sw{one}", 20 - number % 7), (f"sw{other}", 26 - number % 6)) for number, (one, other) in enumerate(joined)]
    end = lambda name, port: {"node": name, "interface": f"eth{port or 1}", "port": port}  # noqa: E731
    return {
        "name": "made", "command": "",
        "nodes": [{"name": n, "kind": kind, "running": True, "addresses": [], "remarks": []} for n, kind in nodes],
        "cables": [{"ends": [end(*one), end(*other)]} for one, other in ends],
    }


LAY_OUT = """
    const [labs, room, done] = [JSON.parse(arguments[0]), arguments[1], arguments[2]];
    const from = (name) => import(new URL(`topology/${name}.js`, document.baseURI));
    Promise.all([from("layout"), from("wires")]).then(([{layoutOf}, {wiresOf}]) => done(labs.map((lab) => {
        const layout = layoutOf(lab, room);
        const boxes = [...layout.boxes.values()].map(({node, x, y, width, height}) => ({name: node.name, x, y, width, height}));
        return {width: layout.width, height: layout.height, rows: layout.rows, boxes, wires: wiresOf(lab, layout)};
    })), (problem) => done(String(problem)));
"""
MESH = [(one, other) for one in range(8) for other in range(one)]
LABS = {
    "default": lambda: lab_as_told(default_topology()),
    "ring": lambda: lab_as_told(read_topology("examples/topologies/ring.clab.yml")),
    "two": lambda: lab_as_told(read_topology("examples/topologies/two-switches.clab.yml")),
    "failover": lambda: lab_as_told(read_topology("examples/topologies/failover.clab.yml")),
    "chain": lambda: made_lab(8, 8, [(at, at + 1) for at in range(7)]),
    "leaves": lambda: made_lab(8, 8, [(spine, leaf) for leaf in range(2, 8) for spine in (0, 1)]),
    "tree": lambda: made_lab(7, 3, [(0, 1), (0, 2), (1, 3), (1, 4), (2, 5), (2, 6)]),
    "mesh": lambda: made_lab(8, 2, MESH),
    "apart": lambda: made_lab(3, 1, []),
}


@pytest.fixture(name="laid", scope="module")
def layouts(the_browser, server):
    the_browser.open("", server.url)
    labs = json.dumps([make() for make in LABS.values()])
    found = {}
    for room in (360, 1400, 1400):
        done = the_browser.driver.execute_async_script(LAY_OUT, labs, room)
        assert isinstance(done, list), done
        assert found.setdefault(room, done) == done
    return {room: dict(zip(LABS, done, strict=True)) for room, done in found.items()}


def overlap(one, other):
    return all(
        one[axis] < other[axis] + other[size] and other[axis] < one[axis] + one[size]
        for axis, size in (("x", "width"), ("y", "height"))
    )


@pytest.mark.parametrize("name", LABS)
def test_layout_has_a_place_for_everything(laid, name):
    for layout in (laid[360][name], laid[1400][name]):
        boxes = layout["boxes"]
        assert len(boxes) == len(LABS[name]()["nodes"])
        for at, box in enumerate(boxes):
            assert 0 <= box["x"] and box["x"] + box["width"] <= layout["width"], box
            assert 0 <= box["y"] and box["y"] + box["height"] <= layout["height"], box
            assert [other["name"] for other in boxes[:at] if overlap(box, other)] == []
        marks = {(round(wire["mark"]["x"]), round(wire["mark"]["y"])) for wire in layout["wires"]}
        assert len(marks) == len(layout["wires"])
        tabs = {(tab["x"], tab["y"]) for wire in layout["wires"] for tab in wire["tabs"]}
        assert len(tabs) == 2 * len(layout["wires"])


def test_layout_of_the_labs_that_one_meets_first(laid):
    wide = laid[1400]
    assert wide["ring"]["rows"] == [["sw1"], ["sw2", "sw3"]]
    assert wide["failover"]["rows"] == [["sw1", "sw2"]]
    assert wide["chain"]["rows"] == [[f"sw{at}" for at in (0, 1, 2, 3)], [f"sw{at}" for at in (7, 6, 5, 4)]]
    assert wide["leaves"]["rows"] == [["sw0", "sw1"], [f"sw{at}" for at in range(2, 8)]]
    assert wide["tree"]["rows"] == [["sw0"], ["sw1", "sw2"], ["sw3", "sw4", "sw5", "sw6"]]
    assert laid[360]["default"]["width"] <= 360
    joined = [wire for wire in wide["failover"]["wires"] if wire["isLevel"]]
    assert [wire["tabs"][0]["y"] == wire["tabs"][1]["y"] for wire in joined] == [True] * 4
