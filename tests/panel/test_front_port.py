"""The port that one has chosen on the front: its cable, what is counted, settings and commands."""

import re

from fronts import wait_for_marks, wait_for_name


def test_cable_is_pulled_and_plugged_in(page, lab):
    page.open("#front/sw1/2")
    wait_for_name(page, 2, "Port 2, up, .*")
    page.click(".front-pull", "Pull the cable")
    wait_for_name(page, 2, "Port 2, down, cable pulled")
    wait_for_marks(page, 2, "pulled")
    page.wait_for('.front-news[role="status"]', "Port 2: cable pulled.")
    assert not lab.is_linked("sw1", 2)
    assert page.all("#front-port-2 .front-plug") == []
    page.click(".front-pull", "Plug the cable in")
    page.wait_for(".front-news", "Port 2: link up.")
    assert page.all("#front-port-2 .front-plug") != []
    lab.wait(lambda: lab.is_linked("sw1", 2), "The link")


def set_condition(page, name, value):
    field = page.wait_for(f'.front-cable .cable-form input[name="{name}"]')
    field.clear()
    field.send_keys(value)


def test_cable_is_made_bad_and_good_again(page, lab):
    page.open("#front/sw1/2")
    set_condition(page, "loss", "2%")
    set_condition(page, "delay", "20ms")
    page.click(".front-cable .cable-form button", "Make it bad")
    wait_for_marks(page, 2, "bad")
    page.wait_for(".front-cable", "A bad cable: loss 2%, delay 20ms.")
    assert lab.ask("sw1", "cables")["cables"][0]["conditions"] == {"delay": "20ms", "loss": "2%", "seed": 1}
    set_condition(page, "loss", "200%")
    page.click(".front-cable .cable-form button", "Change")
    page.wait_for(".front-cable .problem", "takes a percentage from 0% to 100%")
    page.click(".front-cable .cable-form button", "Make it good")
    wait_for_marks(page, 2)
    assert lab.ask("sw1", "cables")["cables"] == []


def test_read_only_panel_says_why_it_changes_no_cable(page, read_only):
    page.open("#front/sw1/2", read_only.url)
    page.wait_for(".front-reason", "The panel is read-only")
    controls = page.all(".front-pull, .front-cable fieldset button, .front-cable input")
    assert len(controls) == 10 and not any(each.is_enabled() for each in controls)


def test_counts_begin_when_the_page_was_opened_or_now(page, lab):
    lab.exec("h1", "ping", "-q", "-c", "1", "10.0.0.2")
    page.open("#front/sw1/1")
    page.wait_for(".front-counts tbody tr", re.compile("^Frames 0 0$"))
    lab.exec("h1", "ping", "-q", "-c", "100", "-i", "0.002", "10.0.0.2")
    page.wait_for(".front-counts tbody tr", re.compile("^Frames 10[0-9] 10[0-9]$"))
    page.click(".front-since")
    page.wait_for(".front-counts tbody tr", re.compile("^Frames [0-9] [0-9]$"))


def test_drops_are_marked_and_counted_by_reason(page, fresh):
    page.open("#front/sw1/1")
    page.wait_for(".front-counters", "None")
    fresh.adpsh("sw1", "adp_set_port_erps_state 1 1")
    fresh.exec("h1", "sh", "-c", "ping -q -c 5 -i 0.01 -W 0.1 10.0.0.2 || true")
    wait_for_name(page, 1, ".*drops frames now")
    page.wait_for(".front-counters tr", re.compile("^stp_blocked [1-9]"))
    wait_for_name(page, 1, "Port 1, up, 1000 Mb/s full, blocked by spanning tree")


def test_details_name_the_settings_and_commands(page, fresh):
    fresh.adpsh("sw1", "adp_vlan_create 100", "adp_vlan_port_set 100 {1-3} {1}")
    fresh.adpsh("sw1", "adp_vlan_create 200", "adp_vlan_port_set 200 {1} {}")
    fresh.exec("h1", "ping", "-q", "-c", "1", "10.0.0.2")
    page.open("#front/sw1/1")
    page.wait_for(".front-settings", "untagged 1,100; tagged 200")
    link = page.wait_for(".front-settings a", "1 address")
    assert link.get_attribute("href").endswith("#tables/sw1/addresses")
    page.click(".front-commands summary")
    texts = [each.text for each in page.all(".front-commands code")]
    assert len(texts) == 8 and all(" sw1 " in text for text in texts)
    assert any(text.endswith("vdevctl sw1 ports 1") for text in texts)
    assert any(text.endswith("pull 1") for text in texts)
    (line,) = re.findall("adpsh sw1 --map '(.*)'$", texts[-1])
    fresh.adpsh("sw1", line)
    wait_for_name(page, 1, "Port 1, down, disabled")
    page.wait_for(".front-commands code", "ADP_ATTR_ADMIN_STATE 1 0")


def test_plate_of_a_killed_device_is_dark(page, fresh):
    page.open("#front/sw1/1")
    page.wait_for(".front-power.on")
    fresh.kill("sw1")
    page.wait_for(".front-kind", "not running")
    assert page.all(".front-power.on") == []
    page.wait_for(".front-reason", "sw1 is not running")
    fresh.restart("sw1")
    page.wait_for(".front-power.on")
