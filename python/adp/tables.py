"""The tables that libadp exports. They are read in the library's memory, when they are asked; calls change them."""

from __future__ import annotations

import ctypes
from collections.abc import Iterator, Sequence
from typing import Any, Generic, TypeVar, overload

from .call import exported
from .library import library
from .memory import loaded

Row = TypeVar("Row")
# More rules than the chip has room for: a list that does not end is damaged.
MOST_RULES = 1 << 16


def _in_library(kind: Any, name: str) -> Any:
    return exported(lambda: kind.in_dll(library(), name), name)


class Variable(Generic[Row]):
    """A single value."""

    def __init__(self, name: str, kind: Any) -> None:
        self.name = name
        self.kind = kind

    @property
    def value(self) -> Row:
        """What it is now."""
        return loaded(_in_library(self.kind, self.name))  # type: ignore[no-any-return]  # the annotation says it


class Handler(Variable[bool]):
    """A registered receiver."""

    @property
    def value(self) -> bool:
        """Whether there is one."""
        return bool(_in_library(self.kind, self.name))


class Table(Sequence[Row]):
    """Rows of a fixed number."""

    def __init__(self, name: str, kind: Any, rows: int) -> None:
        self.name = name
        self.kind = kind * rows

    def _rows(self) -> Any:
        return _in_library(self.kind, self.name)

    def __len__(self) -> int:
        return len(self._rows())

    @overload
    def __getitem__(self, place: int) -> Row: ...

    @overload
    def __getitem__(self, place: slice) -> list[Row]: ...

    def __getitem__(self, place: int | slice) -> Row | list[Row]:
        found = self._rows()[place]
        return [loaded(row) for row in found] if isinstance(place, slice) else loaded(found)


class PortTable(Table[Row]):
    """A row for each port of the map: none before the map exists."""

    def __init__(self, name: str, kind: Any, last: Variable[int]) -> None:
        super().__init__(name, kind, 0)
        self.kind = ctypes.POINTER(kind)
        self.element, self.last = kind, last

    def _rows(self) -> Any:
        address = _in_library(self.kind, self.name)
        return (self.element * (self.last.value + 1)).from_address(ctypes.addressof(address.contents)) if address else []


class LinkedList(Sequence[Row]):
    """The records of a list, in its order."""

    def __init__(self, name: str, head: Any, node: Any, member: str) -> None:
        self.name, self.kind, self.node, self.member = name, head, node, member

    def _nodes(self) -> Iterator[Any]:
        head = _in_library(self.kind, self.name)
        link = head.next
        for _ in range(MOST_RULES):
            if link in (None, ctypes.addressof(head)):
                return
            node = self.node.from_address(link)
            yield getattr(node, self.member)
            link = node.link.next

    def __len__(self) -> int:
        return sum(1 for _ in self._nodes())

    @overload
    def __getitem__(self, place: int) -> Row: ...

    @overload
    def __getitem__(self, place: slice) -> list[Row]: ...

    def __getitem__(self, place: int | slice) -> Row | list[Row]:
        return [loaded(each) for each in self._nodes()][place]
