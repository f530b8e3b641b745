"""Rules of three kinds that no frame of the stream meets, as many of each. What they meet is dropped, so that a frame
that met one by mistake would be missed.
"""

from typing import NamedTuple

SENDER_PORT = 1
KINDS = ("destination address", "destination port", "source address and destination port")
# Networks and ports that the stream does not use.
DESTINATIONS, SOURCES = 0x0A630000, 0x0A620000
FIRST_UDP_PORT = 20000


class Rule(NamedTuple):
    """What a frame that comes in on the sender's port would have to be like; None is anything."""

    destination: int | None
    source: int | None
    udp_port: int | None


def rules(count):
    made = []
    for number in range(count):
        kind = KINDS[number % len(KINDS)]
        made.append(
            Rule(
                DESTINATIONS + number if kind == KINDS[0] else None,
                SOURCES + number if kind == KINDS[2] else None,
                FIRST_UDP_PORT + number if kind != KINDS[0] else None,
            )
        )
    return made
