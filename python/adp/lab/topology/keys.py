"""Which keys a topology file may have, and what becomes of each: the only list.

A key is READ; or IGNORED, since it matters for containers or their management network alone and a lab is right without
it; or refused, with a sentence that says what to write in its place.
"""

from .conditions import FORMS

READ, IGNORED = "read", "ignored"

_NO_MANAGEMENT = "a lab has no management network"
_NO_CONTAINER = "the nodes here are no containers"
_AS_COMMAND = "give {} with a command of 'exec'"
_AS_PROGRAM = "name a program: config: {vars: {adp: {programs: {NAME: COMMAND}}}}"

TOP = {
    "name": READ,
    "topology": READ,
    "prefix": IGNORED,
    "mgmt": IGNORED,
    "settings": IGNORED,
    "debug": IGNORED,
}

TOPOLOGY = {"nodes": READ, "links": READ, "defaults": READ, "kinds": READ, "groups": READ}

NODE = {
    "kind": READ,
    "image": READ,
    "group": READ,
    "exec": READ,
    "env": READ,
    "binds": READ,
    "config": READ,
    "labels": IGNORED,
    "type": IGNORED,
    "aliases": IGNORED,
    "auto-remove": IGNORED,
    "cap-add": IGNORED,
    "certificate": IGNORED,
    "cpu": IGNORED,
    "cpu-set": IGNORED,
    "dns": IGNORED,
    "healthcheck": IGNORED,
    "image-pull-policy": IGNORED,
    "memory": IGNORED,
    "mgmt-ipv4": IGNORED,
    "mgmt-ipv6": IGNORED,
    "position": IGNORED,
    "restart-policy": IGNORED,
    "runtime": IGNORED,
    "shm-size": IGNORED,
    "cmd": _AS_PROGRAM,
    "entrypoint": _AS_PROGRAM,
    "startup-config": "bind a file with lines for adpsh to /etc/adp/startup.adpsh",
    "enforce-startup-config": "there is no saved configuration",
    "suppress-startup-config": "there is no saved configuration",
    "startup-delay": "all nodes start together",
    "stages": "all nodes start together",
    "wait-for": "all nodes start together",
    "components": "a device has no components",
    "devices": _NO_CONTAINER,
    "env-files": "write the variables under 'env'",
    "extras": _NO_CONTAINER,
    "license": "a device needs none",
    "network-mode": _NO_CONTAINER,
    "ports": _NO_MANAGEMENT,
    "publish": _NO_MANAGEMENT,
    "sysctls": _AS_COMMAND.format("it"),
    "user": "everything runs as who started the lab",
}

CONFIG = {"vars": READ}

# The key `adp` among a node's vars, and among a link's; the others are the user's own.
OURS = "adp"
NODE_VARS = {"programs": READ, "user-ports": READ, "configuration": READ}
LINK_VARS = dict.fromkeys(FORMS, READ)

LINK = {
    "endpoints": READ,
    "vars": READ,
    "type": READ,
    "labels": IGNORED,
    "mtu": _AS_COMMAND.format("it") + ": ip link set dev eth1 mtu 1400",
    "ipv4": _AS_COMMAND.format("the address"),
    "ipv6": _AS_COMMAND.format("the address"),
    "endpoint": "a cable has two ends: write 'endpoints'",
    "host-interface": "a cable ends at nodes alone, not at the machine",
    "mode": "a cable ends at nodes alone, not at the machine",
    "remote": "a cable ends at nodes alone, not at another machine",
    "vni": "a cable ends at nodes alone, not at another machine",
    "udp-port": "a cable ends at nodes alone, not at another machine",
}

ENDPOINT = {
    "node": READ,
    "interface": READ,
    "mac": _AS_COMMAND.format("it"),
    "ipv4": _AS_COMMAND.format("the address"),
    "ipv6": _AS_COMMAND.format("the address"),
    "vars": "the conditions of a cable stand under the link's 'vars'",
}
