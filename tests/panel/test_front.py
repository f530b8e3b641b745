"""The front: where ports stand, how keys lead from one to another, their lights and marks."""

import re

import pytest
from fronts import port, wait_for_marks, wait_for_name
from selenium.webdriver.common.keys import Keys

BLINKS = "return getComputedStyle(document.querySelector(arguments[0])).animationName !== 'none'"
BOXES = """
    return Object.fromEntries([...document.querySelectorAll(".front-port")].map((port) => {
        const box = port.querySelector(".front-ring").getBoundingClientRect();
        return [port.id.split("-").pop(), [box.left, box.top, box.right, box.bottom]];
    }));
"""
# What a lab without the programs of a real device does not bring about, or not one at a time.
ANSWERS = """
    const row = (port, more) => ({
        port, medium: "copper", interface: `port${port}`, up: true, speed: 100, full_duplex: false, present: true,
        pulled: false, enabled: true, learning: 5, loopback: 0, egress: [0, 1, 2, 3, 4], ...more,
    });
    const group = (number, vlans, more) => ({
        group: number, vlans, blocking: [], listening: [], learning: [], disabled: [], ...more,
    });
    const faces = code.facesOf({
        ports: {ports: [
            row(0), row(1), row(2, {egress: [0]}), row(3, {learning: 4}), row(4, {present: false, up: false}),
        ]},
        trunks: {trunks: [{trunk: 7, group: 8, members: [1], standby: [2]}]},
        groups: {groups: [group(0, [[1, 4094]], {listening: [1]}), group(1, [], {blocking: [3]})]},
        mirrors: {enabled: true, mirrors: [
            {ingress: [1], egress: [], destination: 2, flow: 3, disabled: false},
            {ingress: [], egress: [3], destination: 2, flow: null, disabled: true},
        ]},
        cables: {cables: [{port: 3}, {port: 3}]},
    }, new Map([[1, {rx_frames: 0.5, tx_frames: 12345}]]), new Set([3]));
    const marksOf = (face) => face.marks.map((mark) => [mark.kind, mark.letter, mark.isHollow]);
    return faces.map((face) => [face.name, marksOf(face), face.in, face.out]);
"""
ANSWERS_SEEN = [
    ["CPU port, up, 100 Mb/s half", [], 0, 0],
    [
        "Port 1, up, 100 Mb/s half, listening in spanning tree, trunk 7 (group 8), mirrored in",
        [["blocked", "Li", False], ["trunk", "T7", False], ["mirrored", "M", False]],
        1,
        5,
    ],
    [
        "Port 2, up, 100 Mb/s half, standby in trunk 7 (group 8), mirror destination, isolated",
        [["standby", "S7", True], ["copies", "M", False], ["isolated", "I", False]],
        0,
        0,
    ],
    [
        "Port 3, up, 100 Mb/s half, drops frames now, bad cable, mirrored out (mirroring is off), "
        "mirror destination",
        [["dropping", "!", False], ["bad", "", False], ["mirrored", "M", True], ["copies", "M", False]],
        0,
        0,
    ],
    ["Port 4, down, no interface", [], 0, 0],
]


def calls(page, file, text):
    """What comes of a call of the page's own code, whose module is `code`."""
    return page.driver.execute_async_script(f"""
        const done = arguments[0];
        import(new URL("front/{file}.js", document.baseURI)).then((code) => {{ {text} }})
            .then(done, (problem) => done(String(problem)));
    """)


def boxes(page):
    page.wait_for("#front-port-1")
    return {int(number): box for number, box in page.script(BOXES).items()}


def test_ports_stand_as_on_a_face_plate(page):
    page.open("#front/sw1")
    where = boxes(page)
    assert sorted(where) == list(range(27))
    for odd in range(1, 24, 2):
        assert where[odd][0] == where[odd + 1][0] and where[odd][3] <= where[odd + 1][1]
        assert odd == 1 or where[odd - 2][2] <= where[odd][0]
    assert where[0][2] <= where[1][0], "the CPU port is at the left"
    assert where[23][2] + 5 < where[25][0] and where[25][3] <= where[26][1], "fibre slots are apart at the right"
    assert len(page.all(".front-port.fibre .front-cage")) == 2
    assert len(page.all(".front-port.cpu .front-chip")) == 1
    wait_for_name(page, 1, "Port 1, up, 1000 Mb/s full")
    wait_for_name(page, 3, "Port 3, down, no interface")
    wait_for_name(page, 25, "Port 25, up, 10 Gb/s full")
    wait_for_name(page, 0, "CPU port, up, 1000 Mb/s full")
    page.by_role("button", "Port 25, up, 10 Gb/s full")
    page.wait_for(".front-words", "3 of 26 ports have a link; 23 without an interface.")


@pytest.mark.parametrize("width", [360, 800])
def test_jacks_are_large_enough_to_tap(page, width):
    page.size(width)
    page.open("#front/sw1/1")
    where = boxes(page)
    assert len(where) == 27
    assert all(right - left >= 24 and bottom - top >= 24 for left, top, right, bottom in where.values())
    assert all(0 <= left and right <= width for left, _, right, _ in where.values())
    page.wait_for(".front-counters")
    assert not page.is_scrolled_sideways()
    assert page.axe() == []


def test_ports_of_every_number_have_a_place_that_the_keys_reach(page):
    page.open("#front/sw1")
    faults = calls(page, "layout", """
        const faults = [];
        for (let count = 1; count <= 31; count++) {
            for (const width of [300, 360, 500, 800, 1400, 2000]) {
                const faces = Array.from({length: count + 1}, (_, port) => ({port, isFibre: port === 25 || port === 26}));
                const {spots, width: all, height} = code.layoutOf(faces, width);
                const list = [...spots.values()];
                const inside = list.every((a) => a.x >= 0 && a.y >= 0 && a.x + a.width <= all && a.y + 70 <= height);
                const isBefore = (a, b) => a.x + a.width <= b.x || a.y + 70 <= b.y;
                const apart = list.every((a) => list.every((b) => a === b || isBefore(a, b) || isBefore(b, a)));
                const reached = new Set([0]);
                reached.forEach((from) => ["ArrowLeft", "ArrowRight", "ArrowUp", "ArrowDown"].forEach(
                    (key) => reached.add(code.neighbour(spots, from, key))));
                const wide = list.every((a) => a.width * width / all >= 24);
                if (list.length !== count + 1 || !inside || !apart || reached.size !== count + 1 || !wide) {
                    faults.push([count, width, list.length, inside, apart, reached.size, wide]);
                }
            }
        }
        return faults;
    """)
    assert faults == []


def test_keys_lead_from_port_to_port(page):
    page.open("#front/sw1")
    port(page, 1)
    stops = [each for each in page.all(".front-port") if each.get_attribute("tabindex") == "0"]
    assert stops == [port(page, 1)], "the tab key stops once"
    page.script("document.getElementById('front-port-1').focus()")
    ways = [
        (Keys.ARROW_DOWN, 2), (Keys.ARROW_RIGHT, 4), (Keys.ARROW_UP, 3), (Keys.ARROW_UP, 3), (Keys.END, 25),
        (Keys.ARROW_LEFT, 23), (Keys.HOME, 1), (Keys.ARROW_DOWN, 2), (Keys.ARROW_LEFT, 0),
    ]  # fmt: skip
    for key, reached in ways:
        page.press(key)
        assert page.focused().get_attribute("id") == f"front-port-{reached}"
    page.press(Keys.ARROW_RIGHT, Keys.ENTER)
    page.wait_for(".front-details h2", "Port 2")
    assert page.script("return location.hash") == "#front/sw1/2"
    assert port(page, 2).get_attribute("aria-pressed") == "true"
    page.click(".front-close")
    page.wait_until_gone(".front-details")
    assert page.focused().get_attribute("id") == "front-port-2"


def test_address_names_the_chosen_port(page):
    page.open("#front/sw2/25")
    page.wait_for(".front-details h2", "Port 25")
    page.click(port(page, 0))
    page.wait_for(".front-details h2", "CPU port")
    assert page.script("return location.hash") == "#front/sw2/cpu"
    assert page.all(".front-cable") == [], "the CPU port has no cable"
    page.go("#front/sw2/77")
    page.wait_until_gone(".front-details")


def test_marks_show_what_the_software_has_set(page, fresh):
    page.open("#front/sw1")
    wait_for_marks(page, 2)
    fresh.adpsh(
        "sw1",
        "adp_create_agg_group agg3",
        "adp_add_agg_member_by_map agg3 0x60 0",
        "adp_set_port_erps_state 2 1",
        "adp_vlan_create 200",
        "adp_create_mstp_instance 1",
        "adp_add_msti_member 1 200",
        "adp_set_port_mstp_state 1 2 1",
        "adp_set_port_mstp_state 1 7 3",
        "adp_intf_learn_set 8 8",
        "adp_intf_learn_set 9 0",
        "adp_set_phy_port_attr 10 ADP_ATTR_ADMIN_STATE 0 0",
        "adp_set_phy_port_attr 11 ADP_ATTR_LOOPBACK ADP_LOOPBACK_MAC 0",
        "adp_add_port_mirror 12 13 3 1",
    )
    wait_for_marks(page, 5, "trunk")
    wait_for_name(page, 5, r"Port 5, down, no interface, trunk 2 \(group 3\)")
    wait_for_marks(page, 2, "blocked")
    wait_for_name(page, 2, "Port 2, up, 1000 Mb/s full, blocked by spanning tree")
    wait_for_marks(page, 7, "blocked?")
    wait_for_name(page, 7, ".*, learning in spanning tree in group 1 only")
    wait_for_marks(page, 8, "unauthorised")
    wait_for_marks(page, 9, "unauthorised")
    wait_for_marks(page, 10, "disabled")
    wait_for_marks(page, 11, "looped")
    wait_for_marks(page, 12, "mirrored?")
    wait_for_name(page, 12, r".*, mirrored in and out \(mirroring is off\)")
    wait_for_marks(page, 13, "copies?")
    page.wait_for(".front-words", "1 disabled; 2 held by spanning tree; 2 unauthorised")
    page.click(port(page, 9))
    page.wait_for(".front-settings", "closed: only stations that were let in pass (mode 0)")
    page.wait_for(".front-marks", "unauthorised")
    page.click(".front-legend summary")
    page.click(".front-commands summary")
    assert page.axe() == []


def test_answers_become_marks(page):
    page.open("#front/sw1")
    assert calls(page, "state", ANSWERS) == ANSWERS_SEEN


def test_rates_are_those_since_the_last_look(page):
    """A server that says nothing while counts stay the same has looked all the time."""
    page.open("#front/sw1")
    looks = [calls(page, "traffic", f"return code.sinceLook({each}).before") for each in (
        "{before: {time: 10}, now: {time: 100}}, true", "{before: {time: 10}, now: {time: 100}}, false",
        "{before: {time: 99.8}, now: {time: 100}}, true", "{before: null, now: {time: 100}}, true",
    )]  # fmt: skip
    assert looks == [{"time": 99.5}, {"time": 10}, {"time": 99.8}, None]
    levels = calls(page, "state", "return [0, 0.1, 1, 9, 10, 99, 100, 1e5, 1e6, 1e7].map(code.levelOf)")
    assert levels == [0, 1, 1, 1, 2, 2, 3, 6, 7, 7]
    scales = calls(page, "plots", "return [0, 1, 1.5, 3, 7, 10, 11, 480000].map(code.scaleOf)")
    assert scales == [1, 1, 2, 5, 10, 10, 20, 500000]


def test_every_mark_has_a_shape_and_a_name_of_its_own(page):
    page.open("#front/sw1")
    page.click(".front-legend summary")
    page.wait_for(".front-legend li")
    keys = page.script("""
        return [...document.querySelectorAll(".front-legend .front-mark")].map((mark) => [
            [...mark.children].filter((part) => part.localName !== "text").map((part) => part.outerHTML).join(""),
            mark.textContent.trim(), mark.closest("li").textContent.trim(),
        ]);
    """)
    assert len(keys) == 12
    assert len({shape for shape, _, _ in keys}) == len({words for _, _, words in keys}) == len(keys)
    lights = [len(each.find_elements("css selector", ".lit")) for each in page.all(".front-legend .front-link")]
    assert lights == [1, 2, 3, 4, 0], "speeds differ in their bars, not in colour alone"


def test_lights_follow_the_frames(page, lab):
    page.media(**{"prefers-reduced-motion": "no-preference"})
    page.open("#front/sw1/1")
    page.wait_for("#front-port-1 .in.level-0")
    assert not page.script(BLINKS, "#front-port-1 .in")
    lab.exec("h1", "ping", "-q", "-c", "200", "-i", "0.002", "10.0.0.2")
    page.wait_for("#front-port-1 .in.level-2, #front-port-1 .in.level-3")
    assert page.script(BLINKS, "#front-port-1 .in")
    page.media(**{"prefers-reduced-motion": "reduce"})
    assert not page.script(BLINKS, "#front-port-1 .in")
    page.wait_for("#front-port-1 .in.level-0")
    page.wait_for(".front-values", "in 0")
    name = page.by_role("image", re.compile("^Frames per second in the last minute: in 0, at most [1-9]"))
    assert name.find_element("css selector", ".front-in-line").get_attribute("d").startswith("M")
