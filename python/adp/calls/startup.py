"""The calls of adp/startup.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations


from ..call import Call, Status

__all__ = [
    "modules_init",
    "l2_user_entry_init",
    "l2_user_entry_del_all_bpdu",
    "l2_user_entry_add_all_bpdu",
    "trunk_init",
    "stg_init",
    "lldp_init",
    "mirror_init",
    "igmp_init",
    "ipv6_user_init",
    "dos_attack_init",
]

_modules_init: Call[None] = Call("adp_modules_init", Status)


def modules_init() -> None:
    """Initialises all features, once, before other calls.

    status: the failing step's result, otherwise that of adp_dos_attack_init()
    """
    _modules_init()


_l2_user_entry_init: Call[None] = Call("l2_user_entry_init", Status)


def l2_user_entry_init() -> None:
    """Rewrites the reserved addresses: l2_user_entry_del_all_bpdu(), then l2_user_entry_add_all_bpdu().

    status: 0; -1 when either failed, after "%s l2_user_entry_del_all_bpdu ERROR!\\n" or "%s l2_user_entry_add_all_bpdu
        ERROR!\\n"
    """
    _l2_user_entry_init()


_l2_user_entry_del_all_bpdu: Call[None] = Call("l2_user_entry_del_all_bpdu", Status)


def l2_user_entry_del_all_bpdu() -> None:
    """Clears every entry that holds 01:80:C2:00:00:00.

    status: 0; -1 at the first write that fails, after "%s %d ret = %d i = %d ERROR\\n"; later entries stay as they were
    """
    _l2_user_entry_del_all_bpdu()


_l2_user_entry_add_all_bpdu: Call[None] = Call("l2_user_entry_add_all_bpdu", Status)


def l2_user_entry_add_all_bpdu() -> None:
    """Writes the sixteen reserved addresses into free entries, both in ascending order.

    status: 0, also when there are fewer than sixteen free entries; -1 at the first write that fails, after "%s %d i =
        %d ERROR\\n"
    """
    _l2_user_entry_add_all_bpdu()


_trunk_init: Call[None] = Call("adp_trunk_init", Status)


def trunk_init() -> None:
    """Initialises trunks.

    status: the driver's result
    """
    _trunk_init()


_stg_init: Call[None] = Call("adp_stg_init", Status)


def stg_init() -> None:
    """Initialises spanning tree.

    status: the driver's result; a negative one prints "%s %d: MSTP set bcmSwitchCpuProtoBpduPriority failed!\\n" on
        standard error
    """
    _stg_init()


_lldp_init: Call[None] = Call("adp_lldp_init", Status)


def lldp_init() -> None:
    """Initialises the handling of LLDP (IEEE 802.1AB).

    status: the driver's result; a negative one prints "%s %d:LLDP set default handle failed!\\n" on standard error
    """
    _lldp_init()


_mirror_init: Call[None] = Call("adp_mirror_init", Status)


def mirror_init() -> None:
    """Initialises mirroring.

    status: user_mirror_init()'s result
    """
    _mirror_init()


_igmp_init: Call[None] = Call("adp_igmp_init", Status)


def igmp_init() -> None:
    """Initialises IGMP snooping and multicast, and sends IGMP packets (RFC 3376) to the CPU.

    status: the result of either of the first two calls when it is negative, and no further call is made; otherwise that
        of the last read alone, which prints " ret:%d enable:%d\\n" when it is not 0
    """
    _igmp_init()


_ipv6_user_init: Call[None] = Call("ipv6_user_init", Status)


def ipv6_user_init() -> None:
    """Turns the chip's IPv6 handling on.

    status: 0
    """
    _ipv6_user_init()


_dos_attack_init: Call[None] = Call("adp_dos_attack_init", Status)


def dos_attack_init() -> None:
    """Initialises the protection against denial-of-service attacks.

    status: the driver's result
    """
    _dos_attack_init()
