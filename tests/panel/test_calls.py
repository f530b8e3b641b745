"""The stream of calls: recordings are found, followed and left, whatever stands in them, and no program stays behind."""

import asyncio
import contextlib
import json
import os
import pathlib
import types

import pytest
from adp.panel import calls as panel_calls
from adp.panel import program as panel_program
from adp.panel.calls import MOST_RECORDINGS, MOST_STREAMS, NEWEST_CALLS, calls
from adp.panel.problem import PanelError
from client import SECONDS, panel_of
from false_device import false_device
from recordings import EXIT, HEADER, begin, call, end, write


def programs():
    """The programs that follow recordings for this process."""
    children = pathlib.Path(f"/proc/{os.getpid()}/task/{os.getpid()}/children").read_text(encoding="ascii").split()
    return [pid for pid in children if b"--follow" in pathlib.Path(f"/proc/{pid}/cmdline").read_bytes()]


class Looking:
    """A page that looks at the calls of a device."""

    def __init__(self, pieces):
        self.pieces = pieces
        self._lines = []

    async def until(self, is_enough):
        """The lines until these are enough."""
        async with asyncio.timeout(SECONDS):
            while not is_enough(self._lines):
                piece = await anext(self.pieces)
                assert piece.endswith(b"\n") or not piece
                self._lines += map(json.loads, piece.splitlines())
        lines, self._lines = self._lines, []
        return lines

    async def lines(self, count):
        return await self.until(lambda lines: len(lines) >= count)

    async def said(self, **members):
        """The lines until one has these members."""
        return await self.until(lambda lines: any(members.items() <= line.items() for line in lines))


def looking(test, folder, recordings=()):
    async def run():
        device = types.SimpleNamespace(folder=folder, recordings=recordings)
        async with contextlib.aclosing(calls(device, {"command": "calls"})) as pieces:
            assert await anext(pieces) == b""
            await test(Looking(pieces))
        assert programs() == []

    asyncio.run(run())


def test_calls_come_as_they_end(tmp_path):
    recording = tmp_path / "agent.adptrace"
    write(recording, HEADER + call(1))

    async def test(page):
        state, first = await page.lines(2)
        assert state == {"recording": "agent.adptrace", "state": "followed"}
        assert first["recording"] == "agent.adptrace" and first["text"] == "adp_vlan_create(vid=1) = 0"
        write(recording, begin(2) + begin(3, 2) + end(3, -11))
        write(recording, end(2, -11) + EXIT)
        second, state = await page.lines(2)
        assert (second["failed"], [each["text"] for each in second["within"]]) == (
            True,
            ["adp_vlan_create(vid=1) = -11 (vlan_exists)"],
        )
        assert state == {"recording": "agent.adptrace", "state": "ended"}
        assert programs() == []

    looking(test, tmp_path)


def test_new_and_given_and_replaced_recordings_are_followed(tmp_path):
    folder, given = tmp_path / "run", tmp_path / "given"
    folder.mkdir()
    write(given, HEADER + call(7) + EXIT)

    async def test(page):
        lines = await page.said(state="ended")
        assert [line.get("text") for line in lines] == [None, "adp_vlan_create(vid=7) = 0", None]
        assert {line["recording"] for line in lines} == {str(given)}
        write(folder / "new.adptrace", "")
        assert await page.lines(1) == [{"recording": "new.adptrace", "state": "followed"}]
        write(folder / "new.adptrace", HEADER + call(1))
        assert (await page.lines(1))[0]["text"] == "adp_vlan_create(vid=1) = 0"
        (folder / "new.adptrace").rename(folder / "old")
        write(folder / "new.adptrace", HEADER + call(2))
        lines = await page.lines(2)
        assert [line.get("text", line.get("state")) for line in lines] == ["followed", "adp_vlan_create(vid=2) = 0"]

    looking(test, folder, (str(given),))


def test_the_newest_calls_come_first(tmp_path):
    write(tmp_path / "agent.adptrace", HEADER + "".join(map(call, range(1, 1001))) + EXIT)

    async def test(page):
        texts = [line["text"] for line in await page.said(state="ended") if "text" in line]
        assert len(texts) == NEWEST_CALLS and texts[-1] == "adp_vlan_create(vid=1000) = 0"

    looking(test, tmp_path)


def test_what_is_no_recording_is_told(tmp_path):
    write(tmp_path / "bad.adptrace", HEADER + "nonsense\n")
    write(tmp_path / "cut.adptrace", HEADER + call(1))

    async def test(page):
        lines = await page.said(recording="bad.adptrace", problem="line 3 is no JSON object.")
        assert not any("text" in line for line in lines if line["recording"] == "bad.adptrace")
        while not any(line.get("text") for line in lines):
            lines = await page.lines(1)
        os.truncate(tmp_path / "cut.adptrace", 9)
        await page.said(problem="was truncated while it was followed.")

    looking(test, tmp_path)


def test_links_and_what_is_no_file_are_left_alone(tmp_path):
    folder = tmp_path / "run"
    folder.mkdir()
    write(tmp_path / "outside", HEADER + call(1))
    (folder / "link.adptrace").symlink_to(tmp_path / "outside")
    os.mkfifo(folder / "pipe.adptrace")
    (folder / "folder.adptrace").mkdir()
    write(folder / 'na"me\n\x1b[.adptrace', HEADER + call(1) + EXIT)

    async def test(page):
        lines = await page.said(state="ended")
        assert {line["recording"] for line in lines} == {'na"me\n\x1b[.adptrace'} and len(lines) == 3

    looking(test, folder)


def test_so_many_are_followed_at_a_time(tmp_path):
    for number in range(MOST_RECORDINGS + 2):
        path = tmp_path / f"{number}.adptrace"
        write(path, HEADER)
        os.utime(path, (number, number))

    async def test(page):
        lines = await page.lines(MOST_RECORDINGS)
        newest = {f"{number}.adptrace" for number in range(2, MOST_RECORDINGS + 2)}
        assert {line["recording"] for line in lines} == newest
        write(tmp_path / "0.adptrace", call(1))
        await page.said(recording="0.adptrace", text="adp_vlan_create(vid=1) = 0")
        assert len(programs()) == MOST_RECORDINGS

    looking(test, tmp_path)


def test_a_call_with_very_much_in_it_is_shortened(tmp_path):
    within = [begin(number, 1 if number < 4000 else 3999, "x" * 300) + end(number) for number in range(2, 5001)]
    write(tmp_path / "agent.adptrace", HEADER + begin(1) + "".join(within) + end(1) + EXIT)

    async def test(page):
        _, found, _ = await page.said(state="ended")
        assert len(found["within"]) == 200 and found["left_out"] == 4999 - 200
        assert len(json.dumps(found)) < panel_calls.PIECE

    looking(test, tmp_path)


def test_a_page_that_takes_nothing_misses_the_oldest(tmp_path, monkeypatch):
    monkeypatch.setattr(panel_calls, "MOST_WAITING", 20000)
    write(tmp_path / "agent.adptrace", HEADER + call(2000))

    async def test(page):
        await page.lines(2)
        write(tmp_path / "agent.adptrace", "".join(map(call, range(1, 1001))) + EXIT)
        async with asyncio.timeout(SECONDS):
            while programs():
                await asyncio.sleep(0.05)
        missed, *lines, _ = await page.said(state="ended")
        assert 20 < len(lines) < 500 and missed == {"missed": 1000 - len(lines)}
        assert lines[-1]["text"] == "adp_vlan_create(vid=1000) = 0"

    looking(test, tmp_path)


def test_a_program_that_cannot_be_started_is_told(tmp_path, monkeypatch):
    write(tmp_path / "agent.adptrace", HEADER)
    for command, told in ((["/none"], "/none"), (["setpriv", "--", "false"], "adptrace failed.")):
        monkeypatch.setattr(panel_program, "tied", lambda _, command=command: command)

        async def test(page, told=told):
            lines = await page.until(lambda lines: any("problem" in line for line in lines))
            assert told in lines[-1]["problem"]

        looking(test, tmp_path)


def test_only_so_many_pages_look(tmp_path):
    async def run():
        device = types.SimpleNamespace(folder=tmp_path, recordings=())
        async with contextlib.AsyncExitStack() as stack:
            for _ in range(MOST_STREAMS):
                pieces = await stack.enter_async_context(contextlib.aclosing(calls(device, {})))
                await anext(pieces)
            with pytest.raises(PanelError, match=f"on {MOST_STREAMS} pages already"):
                await anext(calls(device, {}))
        async with contextlib.aclosing(calls(device, {})) as pieces:
            await anext(pieces)

    asyncio.run(run())


def test_a_page_gets_them_from_the_server(loopback):
    async def run():
        async with false_device() as device, panel_of(sw1=device.folder) as opened, opened.page() as page:
            write(device.folder / "agent.adptrace", HEADER + call(1))
            await page.say(1, device="sw1", stream={"command": "calls"})
            lines = []
            while len(lines) < 2:
                lines += (await page.hear(1))["lines"]
            assert lines[1]["text"] == "adp_vlan_create(vid=1) = 0" and len(programs()) == 1
            await page.say(1, stop=True)
            async with asyncio.timeout(SECONDS):
                while programs():
                    await asyncio.sleep(0.01)

    asyncio.run(run())
