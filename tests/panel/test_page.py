"""The page as a whole: every view for everybody, two devices, what is gone and comes back, read-only, hostile names."""

import ctypes
import os
import re

import pytest
from adp.lab.builds import native_build
from panels import server_of
from selenium.webdriver.common.keys import Keys

VIEWS = ("front", "topology", "tables", "frames", "explain", "calls")
LOOKS = (("light", 1400), ("dark", 360))
SCRIPT = "<img src=x onerror=\"document.title='taken over'\">"
LOST = re.compile("The panel's server is gone")


def is_shown(page, view, device="sw1"):
    """The view is there, with an answer of the device."""
    page.wait_for(f'.views a[aria-current="page"][href="#{view}/{device}"]')
    page.until(lambda: page.text("main").strip(), f"The content of {view}")


@pytest.mark.parametrize("view", VIEWS)
def test_view_is_for_everybody(page, view):
    for theme, width in LOOKS:
        page.theme(theme)
        page.size(width)
        page.open(f"#{view}/sw1")
        is_shown(page, view)
        assert page.axe() == [], (theme, width)
        assert not page.is_scrolled_sideways(), (theme, width)


def test_accessibility_faults_are_found(page):
    page.open("#front/sw1")
    is_shown(page, "front")
    page.script("document.querySelector('main').innerHTML = '<button></button><img src=\"icon.svg\"><input>'")
    assert {fault.rule for fault in page.axe()} == {"button-name", "image-alt", "label"}


def test_theme_is_the_system_s_or_what_one_chooses(page):
    ground = "return getComputedStyle(document.body).backgroundColor"
    page.theme("dark")
    page.open("#front/sw1")
    button = page.by_role("button", "Colours: as the system")
    dark = page.script(ground)
    button.click()
    page.by_role("button", "Colours: dark").click()
    page.by_role("button", "Colours: light")
    light = page.script(ground)
    assert light != dark
    page.open("#front/sw1")
    page.by_role("button", "Colours: light").click()
    page.by_role("button", "Colours: as the system")
    page.until(lambda: page.script(ground) == dark, "The system's colours")
    page.theme("light")
    page.until(lambda: page.script(ground) == light, "The system's other colours")


def outline(page):
    """What the page shows around the element with the focus, and whether that is within the window."""
    return page.script("""
        const element = document.activeElement, style = getComputedStyle(element), box = element.getBoundingClientRect();
        return [style.outlineStyle, style.outlineWidth, box.left >= 0 && box.top >= 0 && box.width > 0 && box.height > 0];
    """)


def test_keyboard_reaches_everything_and_shows_where_one_is(page):
    page.open("#front/sw1")
    is_shown(page, "front")
    page.press(Keys.TAB)
    assert page.focused().text == "To the content"
    assert outline(page)[0] != "none" and outline(page)[2]
    names = []
    for _ in range(len(VIEWS) + 3):
        page.press(Keys.TAB)
        names.append(page.focused().text)
        style, width, is_seen = outline(page)
        assert (style, is_seen) == ("solid", True) and int(width.removesuffix("px")) >= 2, names
    assert names == ["Front", "Topology", "Tables", "Frames", "Explain", "Calls", "Colours: as the system", "sw1", "sw2"]
    page.focused().send_keys(Keys.ENTER)
    page.wait_for('.devices a[aria-current="true"]', "sw2")


def test_skip_link_leads_to_the_content(page):
    page.open("#tables/sw1")
    is_shown(page, "tables")
    place = page.script("return location.hash")
    page.press(Keys.TAB, Keys.ENTER)
    assert page.focused().get_attribute("id") == "main"
    assert page.script("return location.hash") == place
    page.press(Keys.TAB)
    assert page.script("return document.querySelector('main').contains(document.activeElement)")


def test_view_stays_when_the_device_changes(page):
    page.open("#front/sw1")
    for view in ("front", "tables", "frames"):
        page.click(".views a", view.title())
        page.click(".devices a", "sw2")
        is_shown(page, view, "sw2")
        assert page.script("return document.title").startswith(f"{view.title()}, sw2")
        page.click(".devices a", "sw1")
        is_shown(page, view, "sw1")


def test_unknown_place_is_the_front_of_the_first_device(page):
    for place in ("#nonsense", "#front/sw9", "#%ff/%", "#front/sw1/99", "#tables/sw1/%3Cimg%3E/x/y", "#//"):
        page.open(place)
        page.until(lambda: page.text("main").strip(), f"The content at {place}")


def test_device_that_is_killed_comes_back_without_a_reload(page, fresh):
    page.open("#front/sw1")
    is_shown(page, "front")
    page.script("window.isTheSame = true")
    fresh.kill("sw1")
    page.wait_for(".state", "sw1 is not running")
    page.wait_for(".devices .gone", "gone")
    page.click(".devices a", "sw2")
    page.wait_until_gone(".state")
    page.click(".devices a", "sw1")
    page.wait_for(".state", "sw1 is not running")
    fresh.restart("sw1")
    page.wait_until_gone(".state")
    page.wait_until_gone(".devices .gone")
    assert page.script("return window.isTheSame")


def test_page_says_that_the_server_is_gone(page, lab):
    with server_of(lab) as server:
        page.open("#front/sw1", server.url)
        is_shown(page, "front")
        first = server.url
    page.wait_for(".state", LOST)
    with server_of(lab) as server:
        assert server.url != first
        page.wait_for(".state", LOST)
    page.open()  # the one that is left tries again and again
    page.expect_errors("WebSocket connection to .* failed")


def refusal(page, request):
    """What the server answers to a request that the page's own code would not make."""
    return page.driver.execute_async_script("""
        const [request, done] = arguments, socket = new WebSocket(new URL("socket", document.baseURI).href.replace("http", "ws"));
        socket.onopen = () => socket.send(JSON.stringify({id: 1, device: "sw1", ask: request}));
        socket.onmessage = (event) => JSON.parse(event.data).id === 1 && done(JSON.parse(event.data));
        socket.onclose = () => done(null);
    """, request)


def test_read_only_page_changes_nothing(page, lab, read_only):
    for view in VIEWS:
        page.open(f"#{view}/sw1", read_only.url)
        page.wait_for(".badge", "read-only")
        is_shown(page, view)
    for request in ({"command": "pull", "port": 1}, {"command": "cable", "port": 1, "set": {"loss": 100}}, {"command": "clear"}):
        answer = refusal(page, request)
        assert "error" in answer and "answer" not in answer, (request, answer)
    assert lab.is_linked("sw1", 1)


def log(folder, text):
    """A program on the device logs a text, by the device's own service."""
    services = ctypes.CDLL(str(native_build().path_of("libdevice_services.so")))
    before = os.environ.get("VDEVICE_DIR")
    os.environ["VDEVICE_DIR"] = str(folder)
    try:
        assert services.sys_trace_add_log(text.encode(), text.encode()) == 0
    finally:
        del os.environ["VDEVICE_DIR"]
        os.environ.update({} if before is None else {"VDEVICE_DIR": before})


def test_lines_of_the_log_are_texts(page, fresh):
    page.open("#tables/sw1/log")
    page.wait_for(".tables")
    log(fresh.run_folder("sw1"), SCRIPT)
    page.wait_for("main td", SCRIPT)
    assert page.all("main img") == []
    assert page.script("return document.title") != "taken over"


HREFS = "return [...document.querySelectorAll(arguments[0])].map((link) => link.getAttribute('href'))"


def test_links_within_the_page_lead_somewhere(page):
    """To a view, one of its devices, one of its tables."""
    page.open("#tables/sw1")
    page.wait_for(".tables")
    tables = [link.rpartition("/")[2] for link in page.script(HREFS, ".tables a")]
    assert len(tables) > 10
    for place in ("front/sw1/1", "topology", *(f"tables/sw1/{name}" for name in tables), "frames/sw1", "explain/sw1"):
        page.go(f"#{place}")
        page.until(lambda: page.text("main").strip(), f"The content of {place}")
        for link in page.script(HREFS, "main a[href^='#']"):
            view, device, *rest = [*link.removeprefix("#").split("/"), ""]
            assert view in VIEWS and (view == "topology" or device in ("sw1", "sw2")), (place, link)
            assert view != "tables" or rest[0] in ("", *tables), (place, link)


def test_names_of_devices_are_texts(page, lab):
    with server_of(lab, f"{SCRIPT}={lab.run_folder('sw1')}", f"b={lab.run_folder('sw2')}") as server:
        for view in VIEWS:
            page.open(f"#{view}", server.url)
            page.wait_for(".devices a", SCRIPT)
            page.until(lambda: page.text("main").strip(), f"The content of {view}")
            assert page.all(".devices img, main img") == []
            assert page.script("return document.title") != "taken over"
