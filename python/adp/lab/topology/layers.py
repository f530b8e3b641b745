"""What is said about a node in several places: for all nodes, for its kind, for its group, and by itself."""

from . import keys
from .document import or_similar, quoted


def check_keys(value, known, kind="key"):
    """The value's entries, all of them keys that a table says to read."""
    entries = value.entries(kind)
    for key, entry in entries.items():
        verdict = known.get(key)
        if verdict is None:
            near = or_similar(key, [name for name in known if known[name] == keys.READ] + list(known))
            entry.fail(f"{value.what} cannot have a key {quoted(key)}.{near}")
        if verdict not in (keys.READ, keys.IGNORED):
            entry.fail(f"{quoted(key)} has no meaning here: {verdict}.")
    return {key: entry for key, entry in entries.items() if known[key] == keys.READ}


def vars_of(entry, known):
    """Our own keys among the variables of a node or link."""
    variables = entry.entries("variable") if entry else {}
    return check_keys(variables[keys.OURS], known) if keys.OURS in variables else {}


class Layers:
    """The `defaults`, `kinds` and `groups` of a topology."""

    def __init__(self, topology):
        self._defaults = check_keys(topology["defaults"], keys.NODE) if "defaults" in topology else {}
        self._kinds, self._groups = (
            {
                name: check_keys(value, keys.NODE)
                for name, value in (topology[key].entries(key.removesuffix("s")) if key in topology else {}).items()
            }
            for key in ("kinds", "groups")
        )

    def of(self, value):
        """A node's layers."""
        own = check_keys(value, keys.NODE)
        group = self._group(_nearest((self._defaults, own), "group"))
        kind = _nearest((self._defaults, group, own), "kind")
        return NodeLayers((self._defaults, self._kinds.get(kind.text(), {}) if kind else {}, group, own))

    def _group(self, name):
        """In a file without groups the name of one is only a label."""
        if name is None or not self._groups:
            return {}
        if name.text() not in self._groups:
            name.fail(f"There is no group {quoted(name.text())}.{or_similar(name.text(), self._groups)}")
        return self._groups[name.text()]


def _nearest(layers, key):
    return next((layer[key] for layer in reversed(layers) if key in layer and not layer[key].is_null), None)


class NodeLayers:
    """One node's layers, the nearest last."""

    def __init__(self, layers):
        self._layers = layers

    def nearest(self, key):
        """What is said nearest to the node, if anything."""
        return _nearest(self._layers, key)

    def items(self, key):
        """The lists of all layers, one after the other."""
        return [item for layer in self._layers if key in layer for item in layer[key].items()]

    def merged(self, key, kind):
        """The mappings of all layers, the nearest value for each key."""
        return {
            name: value for layer in self._layers if key in layer for name, value in layer[key].entries(kind).items()
        }

    def ours(self):
        """Our own keys, which stand under config, vars, adp."""
        found = {}
        for layer in self._layers:
            config = check_keys(layer["config"], keys.CONFIG) if "config" in layer else {}
            found |= vars_of(config.get("vars"), keys.NODE_VARS)
        return found
