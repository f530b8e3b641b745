"""A device with more addresses than a real one takes, and trunks that are none. It serves in a thread, next to a test that drives the browser."""

import asyncio
import contextlib
import itertools
import threading

from tests.panel.false_device import false_device, line

ROWS, CHANGING, PORTS = 10_000, 500, 26
SECONDS = 30


def mac_of(number):
    return ":".join(f"{octet:02x}" for octet in (0x02_00_00_00_00_00 + number).to_bytes(6, "big"))


def addresses(turn):
    """The answer to `macs`: each time another one, with 500 addresses that are new, and some that have moved."""
    rows = [
        {
            "age": (number * 7 + turn * 2.125) % 300,
            "drops_from": False,
            "drops_to": False,
            "index": number,
            "kind": "dynamic",
            "mac": mac_of(number if number < ROWS - CHANGING else number + turn * CHANGING),
            "port": 1 + (number + (turn if number % 100 == 0 else 0)) % PORTS,
            "static": False,
            "trunk": -1,
            "vid": 1 + number % 4,
        }
        for number in range(ROWS)
    ]
    counts = {"learned": ROWS + turn * CHANGING, "moved": 100 * turn, "aged": turn * CHANGING, "refused": 0}
    return {"macs": rows, "groups": 0, "capacity": 16384, "age_time": 300, **counts, "time": 1 + turn * 2.0}


def vlans():
    return [
        {"vid": vid, "default": vid == 1, "members": list(range(PORTS + 1)), "untagged": [1 + vid % PORTS]}
        for vid in range(1, 4095)
    ]


@contextlib.contextmanager
def large_device():
    """Its run folder, and a function that says how often it was asked for its addresses."""
    loop, served, asked = asyncio.new_event_loop(), threading.Event(), itertools.count()
    end, found = asyncio.Event(), []
    times = [0]

    async def answer(_, writer):
        times[0] = next(asked) + 1
        writer.write(line(addresses(times[0])))

    async def serve():
        async with false_device() as device:
            device.answers["macs"] = answer
            device.answers["vlans"] = line({"vlans": vlans()})
            device.answers["trunks"] = line({"trunks": 7})
            device.answers["ports"] = line({"ports": [{"port": port, "pvid": 1} for port in range(PORTS + 1)]})
            found.append(device.folder)
            served.set()
            await end.wait()

    thread = threading.Thread(target=loop.run_until_complete, args=(serve(),))
    thread.start()
    try:
        assert served.wait(SECONDS), "the device did not start"
        yield found[0], lambda: times[0]
    finally:
        loop.call_soon_threadsafe(end.set)
        thread.join(SECONDS)
        loop.close()
