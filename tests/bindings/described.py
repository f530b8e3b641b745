"""The library's interface as the compiler saw it: platform/symbols/*.abi, which check.abi compares with the library."""
import pathlib
import platform
import xml.etree.ElementTree as xml
from dataclasses import dataclass, field

ROOT = pathlib.Path(__file__).resolve().parents[2]
SYMBOLS = ROOT / "platform" / "symbols"
THROUGH = ("typedef-decl", "qualified-type-def")


def exports(kind):
    """Names that the library exports: functions or data."""
    lines = (SYMBOLS / f"exported-{kind}.txt").read_text(encoding="utf-8").splitlines()
    return [line for line in lines if line and not line.startswith("#")]


@dataclass(frozen=True)
class Type:
    """kind: number, pointer, struct, array, function, void."""
    kind: str
    size: int = 0  # octets
    signed: bool = False
    const: bool = False
    of: "Type" = None  # pointed to, or element
    fields: tuple = field(default=())  # (name, offset, Type)


class Description:
    """Functions and tables by name, their types resolved."""

    def __init__(self):
        tree = xml.parse(SYMBOLS / f"elf-amd-{platform.machine()}.abi")
        self._types = {each.get("id"): each for each in tree.iter() if each.get("id")}
        self.functions = {each.get("name"): each for each in tree.iter("function-decl") if each.get("elf-symbol-id")}
        self.tables = {each.get("name"): each for each in tree.iter("var-decl") if each.get("elf-symbol-id")}

    def result(self, name):
        return self.type(self.functions[name].find("return").get("type-id"))

    def parameters(self, name):
        return [(each.get("name"), self.type(each.get("type-id"))) for each in self.functions[name].findall("parameter")]

    def table(self, name):
        return self.type(self.tables[name].get("type-id"))

    def type(self, identity, const=False, is_deep=True):
        """Pointers within structs are not followed: lists point to themselves."""
        node = self._types[identity]
        if node.tag in THROUGH:
            return self.type(node.get("type-id"), const or node.get("const") == "yes", is_deep)
        size = int(node.get("size-in-bits") or 0) // 8
        if node.tag == "type-decl":
            name = node.get("name")
            is_signed = not any(word in name for word in ("unsigned", "uint", "bool"))
            return Type("void", const=const) if name == "void" else Type("number", size, is_signed, const)
        if node.tag == "pointer-type-def":
            return Type("pointer", size, of=self.type(node.get("type-id")) if is_deep else None)
        if node.tag == "array-type-def":
            return Type("array", size, const=const, of=self.type(node.get("type-id"), is_deep=is_deep))
        if node.tag == "class-decl":
            return Type("struct", size, const=const, fields=tuple(
                (member.find("var-decl").get("name"), int(member.get("layout-offset-in-bits")) // 8,
                 self.type(member.find("var-decl").get("type-id"), is_deep=False)) for member in node.findall("data-member")))
        assert node.tag == "function-type", node.tag
        return Type("function")
