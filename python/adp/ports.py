"""Sets of ports, and numbers of interfaces."""

from __future__ import annotations

from collections.abc import Iterable

MOST_PORTS = 256
_WORD_BITS = 32
_AGG_TYPE = 1 << 28


class PortSet(frozenset[int]):
    """A set of ports or of interface numbers, 0 to 255: PortSet({1, 2}), PortSet(range(1, 27))."""

    __slots__ = ()

    def __new__(cls, ports: Iterable[int] = ()) -> PortSet:
        """Refuses what is no number of a port."""
        checked = tuple(ports)
        for port in checked:
            if not isinstance(port, int):
                raise TypeError(f"a port is a number, not {port!r}")
            if not 0 <= port < MOST_PORTS:
                raise ValueError(f"a port is a number of 0 to {MOST_PORTS - 1}, not {port}")
        return super().__new__(cls, checked)  # type: ignore[arg-type]  # frozenset[int], says mypy 1.0

    @classmethod
    def from_words(cls, words: Iterable[int]) -> PortSet:
        """The set of a bitmap: bit n of word n / 32 stands for port n."""
        return cls(
            place * _WORD_BITS + bit for place, word in enumerate(words) for bit in range(_WORD_BITS) if word >> bit & 1
        )

    def words(self, count: int = MOST_PORTS // _WORD_BITS) -> list[int]:
        """The bitmap of the set, in so many words."""
        found = [0] * count
        for port in self:
            if port >= count * _WORD_BITS:
                raise ValueError(f"port {port} is beyond the {count * _WORD_BITS} of this set")
            found[port // _WORD_BITS] |= 1 << port % _WORD_BITS
        return found

    def __repr__(self) -> str:
        return f"PortSet({{{', '.join(map(str, sorted(self)))}}})" if self else "PortSet()"


def agg(group: int) -> int:
    """The interface number of an aggregation group, 1 to 8."""
    if not 1 <= group <= 8:
        raise ValueError(f"an aggregation group is a number of 1 to 8, not {group}")
    return _AGG_TYPE | group
