"""The view of calls in a browser: what it shows of recordings that grow, and how one finds a call in it."""

import re
import shlex

import pytest
from recordings import EXIT, HEADER, begin, call, end, write
from selenium.webdriver.common.keys import Keys

EVERY_IMPACT = ("minor", "moderate", "serious", "critical")
HOSTILE = "<img src=x onerror=alert(1)>"


@pytest.fixture(name="folder")
def fixture_folder(lab):
    """The run folder of sw1, without recordings before and after."""
    folder = lab.run_folder("sw1")
    yield folder
    for recording in folder.glob("*.adptrace"):
        recording.unlink()


@pytest.fixture(name="view")
def fixture_view(page, folder):
    """The view of a recording with three calls, the second of which fails."""
    write(folder / "agent.adptrace", HEADER + call(1) + begin(2, vid=2) + begin(3, 2, 3) + end(3, -11) + end(2, -11) + call(4))
    page.open("#calls/sw1")
    page.wait_for(".calls-call", "vid=4")
    return page


def texts(page):
    """The calls that the list has, from its top."""
    return [each.text for each in page.all(".calls-text")]


def shown(page, *vids):
    """Waits until the list has the calls of these VLANs and no others."""
    wanted = [f"vid={vid})" for vid in vids]
    page.until(
        lambda: len(found := texts(page)) == len(wanted) and all(map(str.__contains__, found, wanted)), f"The calls {vids}"
    )


def test_the_command_that_is_shown_traces_a_program(page, lab, folder):
    page.open("#calls/sw1")
    command = page.wait_for(".calls-how code", re.compile("^adp-lab|adp-lab exec")).text
    assert not page.all(".calls-list, .calls-controls")
    words = shlex.split(command)
    lab.do(*words[words.index("exec"):])
    page.wait_for(".calls-text", "adp_vlan_default_get() = 0 {vid=1}")
    page.wait_for(".calls-recordings", "agent.adptrace ■ ended")
    page.wait_until_gone(".calls-how p")
    assert (folder / "agent.adptrace").exists()


def test_a_call_is_unfolded_by_the_keyboard(view):
    fold = view.by_role("button", "1 call within adp_vlan_create")
    assert fold.get_attribute("aria-expanded") == "false" and not view.all(".calls-within")
    view.script("arguments[0].focus()", fold)
    view.press(Keys.ENTER)
    inner = view.wait_for(".calls-within", "adp_vlan_create(vid=3) = -11 (vlan_exists)")
    assert "failed" in inner.text and "0.0 µs" in inner.text
    assert fold.get_attribute("aria-expanded") == "true"
    assert view.script("return document.getElementById(arguments[0])?.textContent", fold.get_attribute("aria-controls"))
    view.press(Keys.SPACE)
    view.wait_until_gone(".calls-within")


def test_failed_calls_are_marked_and_chosen(view):
    shown(view, 4, 2, 1)
    assert ["failed" in each.text for each in view.all(".calls-row")] == [False, True, False]
    view.click("label", "Only failed")
    shown(view, 2)
    view.wait_for(".calls-counts", "1 of 3 calls")
    view.click("label", "Only failed")
    search = view.by_role("searchbox", "Text")
    search.send_keys("VID=3")  # of the call within
    shown(view, 2)
    search.clear()
    search.send_keys("nothing")
    view.wait_for("main", "No call is chosen.")


def test_new_calls_wait_while_it_is_paused(view, folder):
    view.click(view.by_role("button", re.compile("Pause")))
    write(folder / "agent.adptrace", call(5) + call(6))
    view.wait_for(".calls-waiting", "paused, 2 newer calls")
    shown(view, 4, 2, 1)
    view.click(view.by_role("button", re.compile("Go on")))
    shown(view, 6, 5, 4, 2, 1)


def test_a_recording_that_fails_and_a_hostile_one_are_told(view, folder):
    write(folder / f"{HOSTILE}.adptrace", HEADER + begin(1, vid=HOSTILE) + EXIT)
    row = view.wait_for(".calls-row", HOSTILE)
    assert "did not return" in row.text
    view.wait_for(".calls-recordings li", f"{HOSTILE}.adptrace ■ ended")
    write(folder / "agent.adptrace", "nonsense\n")
    view.wait_for(".calls-recordings li", "agent.adptrace ✕ line 11 is no JSON object.")
    assert view.script("return document.querySelectorAll('main img').length") == 0


def test_it_keeps_and_shows_the_newest_calls(view, folder):
    write(folder / "agent.adptrace", "".join(call(number) for number in range(11, 1511)))
    view.wait_for(".calls-counts", "100 of the newest 1000 calls")
    view.wait_for(".calls-call:first-child .calls-text", "vid=1510")
    assert view.script("return document.querySelectorAll('.calls-call').length") == 100


@pytest.mark.parametrize("width", [360, 1400])
@pytest.mark.parametrize("theme", ["light", "dark"])
def test_everybody_can_use_it(view, folder, theme, width):
    write(folder / ("long" * 40 + ".adptrace"), HEADER + begin(1, vid="x" * 500) + end(1) + EXIT)
    view.wait_for(".calls-recording", "longlong")
    view.size(width)
    view.theme(theme)
    view.click(".calls-fold[aria-expanded]")
    view.wait_for(".calls-within")
    assert not view.is_scrolled_sideways() and view.axe(EVERY_IMPACT) == []
