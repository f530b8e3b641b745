"""What the panel says of a lab, and that it ends with it."""

import asyncio

import pytest
from adp.lab.process import poll_until
from panels import Server, lab_of
from test_command import failed, page_of

pytestmark = pytest.mark.usefixtures("loopback")
SECONDS = 30
TOPOLOGY = """\
name: small
topology:
  nodes:
    sw1: {kind: adp}
    h1: {kind: linux, exec: ["ip address add 10.0.0.1/24 dev eth1"], config: {vars: {adp: {programs: {waiting: sleep 1000}}}}}
  links:
    - endpoints: ["sw1:eth3", "h1:eth1"]
"""


@pytest.fixture(name="small", scope="module")
def make_small(loopback):
    with lab_of(TOPOLOGY) as made:
        yield made


@pytest.fixture(name="panel")
def make_panel(small):
    server = Server(small)
    yield server
    server.close()


async def until(page, condition):
    """The first state of the panel of which the condition holds."""
    async with asyncio.timeout(SECONDS):
        while not condition(state := await page.hear_panel()):
            pass
    return state


def of(state, name):
    return next(node for node in state["lab"]["nodes"] if node["name"] == name)


def test_a_page_is_told_of_nodes_cables_and_commands(small, panel):
    async def use(page):
        state = await until(page, lambda state: of(state, "h1")["addresses"])
        assert (state["lab"]["name"], len(state["lab"]["nodes"])) == ("small", 2)
        assert of(state, "h1") == {
            "name": "h1", "kind": "linux", "running": True, "addresses": ["10.0.0.1/24"], "remarks": []
        }
        assert of(state, "sw1") == {"name": "sw1", "kind": "adp", "running": True, "addresses": [], "remarks": []}
        ends = [
            {"node": "sw1", "interface": "eth3", "port": 3},
            {"node": "h1", "interface": "eth1", "port": None},
        ]
        assert state["lab"]["cables"] == [{"ends": ends}]
        command = state["lab"]["command"]
        assert state["devices"] == [
            {
                "name": "sw1",
                "running": True,
                "vdevctl": f"{command} vdevctl sw1",
                "adpsh": f"{command} adpsh sw1",
                "exec": f"{command} exec sw1 --",
            }
        ]

    asyncio.run(page_of(panel.url, use))


def test_a_page_is_told_of_a_program_that_ends_and_starts_again(small, panel):
    async def use(page):
        await until(page, lambda state: of(state, "h1")["running"])
        small.exec("h1", "pkill", "-x", "sleep")
        state = await until(page, lambda state: not of(state, "h1")["running"])
        (remark,) = of(state, "h1")["remarks"]
        assert remark.startswith("h1: waiting was ended by the signal SIGTERM.")
        small.restart("h1")
        assert of(await until(page, lambda state: of(state, "h1")["running"]), "h1")["remarks"] == []

    asyncio.run(page_of(panel.url, use))


def test_a_device_that_is_started_again_is_told(small, panel):
    async def use(page):
        await page.say(1, device="sw1", read={"command": "version"}, every=0.25)
        before = (await page.hear(1))["answer"]
        small.restart("sw1")
        while "error" not in await page.hear(1):
            pass
        assert (await page.hear(1))["answer"]["uptime"] < before["uptime"] + 60
        assert (await page.hear_panel())["devices"][0]["running"]

    asyncio.run(page_of(panel.url, use))


def test_a_lab_without_its_option_is_a_sentence(small, monkeypatch, capfd):
    complaint = "adp-panel: There is no folder 'small'. 'adp-panel --lab small' shows the lab of this name.\n"
    assert failed(monkeypatch, capfd, "small", ADP_LAB_DIR=small.environment["ADP_LAB_DIR"]) == (1, complaint)


def test_the_panel_ends_with_its_lab():
    with lab_of(TOPOLOGY.replace("small", "brief")) as lab:
        server = Server(lab)
        try:
            lab.close()
            poll_until(lambda: server.process.poll() is not None, SECONDS, "the end of the panel")
            assert server.process.returncode == 0
            assert server.said() == "adp-panel: The lab 'brief' has ended.\n"
        finally:
            server.close()
