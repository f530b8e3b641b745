"""libadp from Python: its calls, structs, tables and constants with their types. The lab is adp.lab.

    import adp

    adp.map_ports()                                             # user port i is physical port i + 3
    adp.vlan_create(100)
    adp.vlan_port_set(100, adp.PortSet({1, 2}), adp.PortSet())
    members, untagged = adp.vlan_port_get(100)
    try:
        adp.vlan_create(100)
    except adp.Error as error:
        print(error.name)                                       # vlan_exists

The library is loaded at the first call: ADP_LIBRARY names it, see adp.library. Each process has its own tables.

Names. A call and a table are called as in the headers without a leading `adp_`: `adp_vlan_createEx` is
`adp.vlan_createEx`, `SET_AGG_MANAGE_INTF` is `adp.SET_AGG_MANAGE_INTF`. The prefix stays where the rest is the name of
another call or table: `adp.adp_agg_event_handle()` beside the table `adp.agg_event_handle`. The two calls
`__adp_transmit_frame` and `__adp_receive_frame`, which take a record, are `adp.transmit_frame_record` and
`adp.receive_frame_record`. A constant is without `ADP_` (`adp.NO_VLAN`). A struct and an enumeration are classes
without `adp_` and `_t` (`adp_l2_entry_t` is `adp.L2Entry`, `enum adp_stg_state` is `adp.StgState`, `enum
adp_fp_action` is `adp.FpActionType` beside the struct); an enumeration's members lose what all of them begin with
(`adp.StgState.BLOCKING`).

Arguments. What a call only writes is not given but returned: one value as it is, several as a named tuple. What it reads
and writes is given and returned; what was given stays as it was. If it comes last it can be left out, and is then 0. The
count of a sequence is not given. A result that is not a status is returned too, in a tuple as `result`.
"""

from __future__ import annotations

from typing import TYPE_CHECKING

_SUBPACKAGES = ("bindings", "calls", "lab", "panel", "testing")  # and no names of the bindings

if TYPE_CHECKING:
    from .bindings import *  # noqa: F403
else:

    def __getattr__(name):
        """The bindings are imported when one of their names is used: adp.lab does not need them."""
        if name not in _SUBPACKAGES and not name.startswith("__"):
            from . import bindings

            if hasattr(bindings, name):
                return globals().setdefault(name, getattr(bindings, name))
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")


def __dir__() -> list[str]:
    from . import bindings

    return sorted({*globals(), *(name for name in vars(bindings) if not name.startswith("_"))})
