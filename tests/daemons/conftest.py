"""Switches for the scenarios of daemons, and what a failed one tells: what every daemon has said."""

import contextlib
import os

import pytest
from adp.lab import Lab, lldp, openvswitch
from adp.lab.program import Program, path_of
from adp.lab.switch import Switch

pytest.register_assert_rewrite("bench")
from bench import USER_PORTS, CablesLab  # noqa: E402

PACKAGES = {
    "lldpd": "lldpd",
    "ovs-vswitchd": "openvswitch-switch",
    "hostapd": "hostapd",
    "wpa_supplicant": "wpasupplicant",
    "ospfd": "frr",
    "dnsmasq": "dnsmasq-base",
    "udhcpc": "udhcpc",
    "iperf3": "iperf3",
    "ethtool": "ethtool",
}


# What an ordinary user may lack.
RIGHTS = {
    "lldpd": (lldp.is_usable, lldp.NOT_USABLE),
    "ovs-vswitchd": (openvswitch.is_usable, openvswitch.NOT_USABLE),
}


def pytest_addoption(parser):
    parser.addoption("--without-switch", action="store_true", help="daemons on bare cables: is it they, or the switch?")


def pytest_configure(config):
    config.addinivalue_line("markers", "needs(*programs): what other projects must provide for this scenario")
    config.addinivalue_line("markers", "needs_chip: the scenario makes no sense with --without-switch")


def pytest_runtest_setup(item):
    Program.said.clear()
    programs = [program for mark in item.iter_markers("needs") for program in mark.args]
    missing = [PACKAGES[program] for program in programs if not path_of(program)]
    reasons = [sentence for name, (is_usable, sentence) in RIGHTS.items() if name in programs and not is_usable()]
    if missing:
        reasons = [f"These packages are missing, which 'script/setup daemons' installs: {' '.join(missing)}"]
    if reasons:
        (pytest.fail if os.environ.get("CI") == "true" else pytest.skip)(" ".join(reasons))
    if item.config.getoption("--without-switch") and item.get_closest_marker("needs_chip"):
        pytest.skip("It needs a switch.")


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport():
    outcome = yield
    report = outcome.get_result()
    if report.failed:
        said = {**Program.said, **{program.name: program.log() for program in Program.running}}
        report.sections += [(f"what {name} said", log) for name, log in said.items() if log]


@pytest.fixture
def make_switch(request, device_build):
    """make_switch(hosts, configuration): a switch that is up, with hosts at these ports."""
    without = request.config.getoption("--without-switch")
    with contextlib.ExitStack() as stack:

        def make(hosts, configuration=""):
            bench = (CablesLab if without else Lab)(device_build, hosts, USER_PORTS, "switch")
            lab = stack.enter_context(bench)
            return stack.enter_context(contextlib.closing(Switch(lab, configuration, not without)))

        yield make
