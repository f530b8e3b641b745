"""Rules of the field processor: records for adpsh, and their entries in the chip."""

from typing import NamedTuple

WORD_BYTES = 4
WORD_BITS = 32
ALL_ONES = 0xFFFFFFFF
BITMAP_BYTES = 32

# Where the entries of a group begin; a rule takes two in the wide ones.
GROUP_BASES = {1: 1280, 2: 896, 3: 768, 4: 640, 5: 1024, 6: 512, 7: 384, 8: 256, 9: 0}
WIDE_GROUPS = (1, 5)


class Place(NamedTuple):
    """A rule's key and the first of its entries in the device."""

    submodule: int
    entity: int
    entry: int
    is_pair: bool

    @property
    def entries(self):
        """All entries of the rule."""
        return {self.entry, self.entry + 1} if self.is_pair else {self.entry}


def places_of(row):
    """The rules of a submodule. If its base in the group is negative, the first ones have no entry and are left out."""
    width = 2 if row["group"] in WIDE_GROUPS else 1
    first = max(0, -row["prio_base"])
    for entity in range(first, first + row["entries"]):
        entry = GROUP_BASES[row["group"]] + width * (row["prio_base"] + entity)
        yield Place(row["submodule_type"], entity, entry, width == 2)


def distinct_places(table, count):
    """`count` rules with distinct entries, of all submodules of the library's table; fewer if it has no more."""
    chosen, taken = [], set()
    for row in table:
        for place in places_of(row):
            if not taken & place.entries:
                chosen.append(place)
                taken |= place.entries
    return chosen[:count]


def listed(items):
    """A list as adpsh writes it."""
    return "[" + ",".join(items) + "]"


class RuleText:
    """Records with their numbers in the byte order of the library's build, "little" or "big"."""

    def __init__(self, byte_order):
        self._order = byte_order

    def block(self, value):
        """A number as its word, a set of ports as its bitmap, bytes as they are."""
        if isinstance(value, int):
            return value.to_bytes(WORD_BYTES, self._order)
        if isinstance(value, set | frozenset):
            bits = sum(1 << port for port in value)
            words = [bits >> at & ALL_ONES for at in range(0, BITMAP_BYTES * 8, WORD_BITS)]
            return b"".join(word.to_bytes(WORD_BYTES, self._order) for word in words)
        return value

    def qualifier(self, kind, data, mask=None):
        """A condition; without a mask every bit counts."""
        shown = self.block(data)
        hidden = b"\xff" * len(shown) if mask is None else self.block(mask)
        return f"{{type={kind} data={shown.hex()} mask={hidden.hex()}}}"

    def action(self, kind, parameter=0, second=0):
        """One action of a record."""
        return f"{{type={kind} param={self.block(parameter).hex()} param2={self.block(second).hex()}}}"

    def record(self, submodule, entity, qualifiers=(), actions=(), priority=0):
        """A rule of (type, data[, mask]) and (type[, parameter[, second parameter]]) tuples."""
        conditions = [self.qualifier(*each) for each in qualifiers]
        effects = [self.action(*each) for each in actions]
        return (
            f"{{submodule_type={submodule} entity_id={entity} priority={priority}"
            f" qualify_num={len(conditions)} action_num={len(effects)}"
            f" qualifies={listed(conditions)} actions={listed(effects)}}}"
        )
