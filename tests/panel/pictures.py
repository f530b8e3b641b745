"""Takes the pictures of the front panel for the documents: script/picture panel."""

import contextlib
import pathlib
import subprocess
import sys
import tempfile
import time

from adp.lab.process import stop

from .browser import browser
from .panels import lab_of, module, server_of

ROOT = pathlib.Path(__file__).resolve().parents[2]
FAILOVER = ROOT / "examples" / "topologies" / "failover.clab.yml"
MOST_OCTETS = 100 * 1024
COLOURS = 64
HISTORY_SECONDS, FLOW_SECONDS = 20, 4
HOSTS = range(1, 13)
OFFICE = """\
name: office
topology:
  nodes:
    sw1: {{kind: adp}}
    sw2: {{kind: adp}}
{hosts}
  links:
    - endpoints: ["sw1:eth25", "sw2:eth25"]
{cables}
""".format(
    hosts="\n".join(
        f'    h{number}: {{kind: linux, exec: ["ip address add 10.0.0.{number}/24 dev eth1"]}}' for number in HOSTS
    ),
    cables="\n".join(f'    - endpoints: ["sw1:eth{number}", "h{number}:eth1"]' for number in HOSTS),
)
SETTINGS = (
    "adp_vlan_create 100",
    "adp_vlan_port_set 100 {1-8} {1-8}",
    "adp_create_agg_group agg2",
    "adp_add_agg_member_by_map agg2 0x600 0",
    "adp_set_port_erps_state 8 1",
    "adp_intf_learn_set 6 8",
    "adp_set_phy_port_attr 12 ADP_ATTR_ADMIN_STATE 0 0",
    "adp_add_port_mirror 1 7 3 1",
)
# The frame of the picture: from h2 to the group of all routers, which is flooded.
FRAME = (
    "01005e000002 0200000000a2 0800 4500003200010000 0111 0000 0a000002 e0000002 1f40 1f41 001e 0000"
    " 6164702066726f6e742070616e656c2064656d6f"
).replace(" ", "")


@contextlib.contextmanager
def traffic(lab, *flows):
    """Pings from one host to another, each with a pause in seconds."""
    with contextlib.ExitStack() as stack:
        for source, address, pause in flows:
            command = module("adp.lab.command", "exec", source, "--", "ping", "-q", "-s", "900", "-i", pause, address)
            process = subprocess.Popen(command, env=lab.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            stack.callback(stop, process)
        yield


def picture(page, folder, name):
    """A small file, whatever the screen has shown."""
    path = folder / f"panel-{name}.png"
    page.screenshot(path)
    command = ["pngquant", "--force", "--strip", "--speed", "1", "--output", path, COLOURS, path]
    subprocess.run(list(map(str, command)), check=True, timeout=60)
    octets = path.stat().st_size
    print(f"{path.name}: {octets} octets")
    if octets > MOST_OCTETS:
        sys.exit(f"{path} is larger than {MOST_OCTETS} octets.")


def office(page, folder):
    """The front of a switch, and a frame that it is asked about."""
    with lab_of(OFFICE) as lab, server_of(lab) as server:
        lab.adpsh("sw1", *SETTINGS)
        lab.do("pull", "sw1:4")
        page.begin(server.url)
        page.media(**{"prefers-color-scheme": "light", "prefers-reduced-motion": "reduce"})
        page.size(1200, 700)
        flows = (("h1", "10.0.0.2", 0.002), ("h3", "10.0.0.2", 0.01), ("h5", "10.0.0.7", 0.05))
        page.open("#front/sw1/2")
        with traffic(lab, *flows):
            page.wait_for(".front-details")
            time.sleep(HISTORY_SECONDS)
            picture(page, folder, "front")
        page.size(1200, 1050)
        page.open(f"#explain/sw1/2/{FRAME}")
        page.wait_for("main", "10.0.0.2")
        time.sleep(FLOW_SECONDS)
        picture(page, folder, "explain")
        page.end()


def failover(page, folder):
    """A group of four cables of which two are pulled, while frames flow."""
    with lab_of(FAILOVER) as lab, server_of(lab) as server:
        page.begin(server.url)
        page.media(**{"prefers-color-scheme": "dark", "prefers-reduced-motion": "reduce"})
        page.size(1200, 620)
        with traffic(lab, ("h1", "10.0.0.3", 0.002), ("h4", "10.0.0.2", 0.005), ("h2", "10.0.0.3", 0.01)):
            lab.do("pull", "sw1:1")
            lab.do("pull", "sw1:3")
            page.open("#topology")
            page.wait_for("main", "pulled")
            time.sleep(FLOW_SECONDS)
            picture(page, folder, "failover")
        page.end()


def main(folder):
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True, timeout=30)
    with tempfile.TemporaryDirectory() as downloads, browser(downloads) as page:
        page.driver.execute_cdp_cmd("Emulation.setScrollbarsHidden", {"hidden": True})
        office(page, folder)
        failover(page, folder)


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]))
