"""A YAML file as values that know their line, so that whoever refuses one can say where it stands.

Read are mappings, lists and texts. A file may come from anybody: its size and depth are bounded, and it has neither
aliases, which make much of little, nor tags, which can ask for objects of any kind.
"""

import dataclasses
import difflib
import re

import yaml

from ..problem import LabError

LONGEST_FILE = 256 * 1024
MOST_LEVELS = 20
LONGEST_QUOTE = 60
YAML_TAG = "tag:yaml.org,2002:"
MOST_ENTRIES = 100  # of most lists and mappings: what is said for all nodes is read again for each


class TopologyError(LabError):
    """A topology file is not as it should be. The text is a sentence that begins with the file and the line."""


@dataclasses.dataclass(frozen=True)
class Value:
    """A value of the file. `what` says for sentences what it is, "the key 'exec' of the node 'h1'", and `owner` whose
    keys stand in it: "the node 'h1'".
    """

    file: str
    line: int  # of its key, if it has one: that is where one looks for it
    node: yaml.Node
    what: str
    owner: str = ""

    def fail(self, sentence):
        raise TopologyError(f"{self.file}:{self.line}: {sentence[0].upper()}{sentence[1:]}")

    @property
    def is_null(self):
        """Whether there is a key, but nothing behind it."""
        return isinstance(self.node, yaml.ScalarNode) and self.node.tag == f"{YAML_TAG}null"

    @property
    def is_mapping(self):
        return isinstance(self.node, yaml.MappingNode)

    def text(self):
        if not isinstance(self.node, yaml.ScalarNode) or self.is_null:
            self.fail(f"{self.what} should be a text.")
        return self.node.value

    def line_of_text(self):
        """A text that can be a word or a command: not empty, and of one line."""
        text = self.text()
        if not text.strip() or not text.isprintable():
            self.fail(f"{self.what} should be a text of one line.")
        return text

    def items(self, most=MOST_ENTRIES):
        """The values of a list."""
        if self.is_null:
            return []
        if not isinstance(self.node, yaml.SequenceNode):
            self.fail(f"{self.what} should be a list.")
        self._check_length(most)
        return [
            Value(self.file, _line_of(item), item, f"item {at} of {self.what}")
            for at, item in enumerate(self.node.value, 1)
        ]

    def entries(self, kind="key", most=MOST_ENTRIES):
        """The values of a mapping by their keys. `kind` is what a key is: a node, a kind of nodes ..."""
        if self.is_null:
            return {}
        if not self.is_mapping:
            self.fail(f"{self.what} should be a mapping: keys, each with a colon and a value.")
        self._check_length(most)
        return {key.value: self._entry(kind, key, value) for key, value in self.node.value}

    def _entry(self, kind, key, value):
        what = f"the {kind} {quoted(key.value)}"
        if kind != "key":
            return Value(self.file, _line_of(key), value, what, what)
        return Value(self.file, _line_of(key), value, f"{what} of {self.owner}" if self.owner else what, self.owner)

    def _check_length(self, most):
        if len(self.node.value) > most:
            self.fail(f"{self.what} has {len(self.node.value)} entries, and no more than {most} are read.")


def quoted(text):
    """A text of the file for a sentence: printable, and not too long."""
    shown = ascii(text)
    return shown if len(shown) <= LONGEST_QUOTE else f"{shown[:LONGEST_QUOTE]}...'"


def or_similar(word, known):
    """The end of a sentence about an unknown word: which one was meant."""
    near = difflib.get_close_matches(word[:LONGEST_QUOTE], known, 1)
    return f" Did you mean {quoted(near[0])}?" if near else ""


def _line_of(node):
    return node.start_mark.line + 1


class _Composer(yaml.SafeLoader):
    """Makes nodes of a text, within bounds."""

    def __init__(self, text, name):
        super().__init__(text)
        self.name = name
        self._levels = 0

    def compose_node(self, parent, index):
        event = self.peek_event()
        if isinstance(event, yaml.AliasEvent) or event.anchor is not None:
            _refuse(event, "Aliases and anchors (*name, &name) are not read here: write the value again.")
        if event.tag not in (None, "!"):
            _refuse(event, f"Tags are not read here: {quoted(event.tag.replace(YAML_TAG, '!!'))}.")
        if self._levels == MOST_LEVELS:
            _refuse(event, f"There are more than {MOST_LEVELS} levels.")
        self._levels += 1
        node = super().compose_node(parent, index)
        self._levels -= 1
        return node

    def compose_mapping_node(self, anchor):
        node = super().compose_mapping_node(anchor)
        lines = {}
        for key, _ in node.value:
            if not isinstance(key, yaml.ScalarNode):
                _refuse(key, "A key should be a text.")
            if key.value in lines:
                _refuse(key, f"The key {quoted(key.value)} is in line {lines[key.value]} already.")
            lines[key.value] = _line_of(key)
        return node


def _refuse(place, sentence):
    raise TopologyError(f"{place.start_mark.name}:{_line_of(place)}: {sentence}")


def _compose(text, name):
    try:
        composer = _Composer(text, name)
        node = composer.get_single_node()
    except yaml.MarkedYAMLError as error:
        line = (error.problem_mark or error.context_mark).line + 1
        problem = re.sub(r"\s+", " ", ", ".join(part for part in (error.problem, error.context) if part))
        raise TopologyError(f"{name}:{line}: This is no YAML: {problem}.") from None
    except yaml.reader.ReaderError as error:
        line = text.count("\n", 0, error.position) + 1
        raise TopologyError(f"{name}:{line}: The character {error.character:#x} is not allowed.") from None
    except (ValueError, OverflowError) as error:  # of numbers in escapes and directives
        raise TopologyError(f"{name}:{composer.line + 1}: This is no YAML: {error}.") from None
    if node is None:
        raise TopologyError(f"{name}:1: The file is empty.")
    return node


def _text_of(name):
    try:
        with open(name, "rb") as file:
            octets = file.read(LONGEST_FILE + 1)
    except (OSError, ValueError) as error:
        raise TopologyError(f"{name}: Cannot be read: {getattr(error, 'strerror', None) or error}.") from None
    if len(octets) > LONGEST_FILE:
        raise TopologyError(f"{name}: The file is larger than {LONGEST_FILE // 1024} KiB.")
    try:
        return octets.decode("utf-8")
    except UnicodeDecodeError as error:
        line = octets.count(b"\n", 0, error.start) + 1
        raise TopologyError(f"{name}:{line}: This is not UTF-8.") from None


def read_document(path):
    """The file's outermost value."""
    name = str(path)
    return Value(name, 1, _compose(_text_of(name), name), "the file")
