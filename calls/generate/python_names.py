"""Names and types of the exported calls in Python. The rule of names is told in python/adp/__init__.py."""
import keyword
import os
import re

from interface import HeaderError

RECORD_CALLS = {"__adp_transmit_frame": "transmit_frame_record", "__adp_receive_frame": "receive_frame_record"}
TYPES = {"u8": "c_uint8", "u16": "c_uint16", "u32": "c_uint32", "u64": "c_uint64", "i16": "c_int16", "i32": "c_int32",
         "char": "c_char", "word": "c_size_t"}
# What the hand-written modules of the package have.
TAKEN = {"PortSet", "agg", "Error", "LibraryError", "RxFrame", "TxFrame", "Status", "map_ports", "scan_links", "lab",
         "testing", "calls"}
FEW_WORDS = 2
# Frames are octets, and what addresses them is an offset: python/adp/frames.py has these records.
FRAME_RECORDS = ("adp_tx_frame_t", "adp_rx_frame_t")
# C's alone: a list is a sequence in Python, a set of ports a PortSet.
LIST_PARTS = ("adp_list_link_t", "adp_tx_dest_t")
WITHOUT_RECORD = (*FRAME_RECORDS, *LIST_PARTS, "adp_port_set_t")


def checked(name):
    if keyword.iskeyword(name) or not name.isidentifier():
        raise HeaderError(f"'{name}' is no name in Python")
    return name


def name_of(library, exported):
    """The name of a call or a table."""
    headers = library.headers
    if exported.startswith("__"):
        if exported not in RECORD_CALLS:
            raise HeaderError(f"{exported}: python_names.py has to say its name in Python")
        return RECORD_CALLS[exported]
    short = exported.removeprefix("adp_")
    is_taken = any(short == each.name for each in [*headers.functions, *headers.data])
    return exported if is_taken else checked(short)


def camel(name):
    return checked("".join(word[0].upper() + word[1:] for word in name.split("_") if word))


def class_of(tag):
    """The class of a struct, an enumeration or a callback."""
    return camel(re.sub(r"_t$", "", tag.removeprefix("adp_")))


def enumeration_of(library, tag):
    """The class of an enumeration."""
    name = class_of(tag)
    return f"{name}Type" if any(name == class_of(struct) for struct in library.headers.structs) else name


def module_of(header):
    """The module that has the calls of a header."""
    return os.path.splitext(os.path.basename(header))[0]


def enumerators(library, tag):
    """Python's name of each enumerator, which has lost what all of them begin with, and its C name."""
    names = [name for name, of in library.headers.enums.items() if of == tag]
    common = os.path.commonprefix(names)
    common = common[:common.rindex("_") + 1]
    return {checked(name[len(common):]): name for name in names}


def ctype(headers, type_name):
    """The C type of one element."""
    kind = headers.kind_of(type_name)
    if kind == "struct":
        return f"layouts.{class_of(headers.unaliased(type_name))}"
    return TYPES[kind]


def array(element, count, is_ports=False):
    """The C type of an array."""
    if is_ports:
        return "Ports"
    if element == "c_uint32" and count == FEW_WORDS:
        return "FewPorts"
    return f"{element} * {count}"


def annotation(ctype_text, is_output):
    """Python's type of a value of this C type."""
    if ctype_text in ("Ports", "FewPorts"):
        return "PortSet"
    element, star, _ = ctype_text.partition(" * ")
    if star and element == "c_uint8":
        return "bytes"
    single = f"records.{element.removeprefix('layouts.')}" if element.startswith("layouts.") else "int"
    return (f"list[{single}]" if is_output else f"Sequence[{single}]") if star else single
