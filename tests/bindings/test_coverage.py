"""Every exported call and table has a binding, whose C types are those of the library."""
import ctypes
import dataclasses
import importlib
import inspect
import pkgutil

import pytest
from described import Description, exports

import adp
import adp.calls
from adp import bindings, call, memory, parameters, tables

MODULES = [importlib.import_module(f"adp.calls.{module.name}") for module in pkgutil.iter_modules(adp.calls.__path__)]
CALLS = {each.name: (name, each) for module in MODULES for name, each in vars(module).items() if isinstance(each, call.Call)}
TABLES = {each.name: (name, each) for module in MODULES for name, each in vars(module).items()
          if isinstance(getattr(each, "name", None), str) and type(each).__module__ == tables.__name__}
LAYOUTS = {each.__doc__: each for module in MODULES for each in vars(module).values()
           if isinstance(each, type) and issubclass(each, ctypes.Structure) and each is not ctypes.Structure}
ABI = Description()


def difference(kind, described):
    """What a ctypes type has that the compiler's has not, or None."""
    if described.kind == "array":
        if not issubclass(kind, ctypes.Array) or ctypes.sizeof(kind) != described.size:
            return f"{kind} of {ctypes.sizeof(kind)}, of {described.size}"
        return difference(kind._type_, described.of)
    if described.kind == "struct":
        if not issubclass(kind, ctypes.Structure) or ctypes.sizeof(kind) != described.size:
            return f"{kind} of {ctypes.sizeof(kind)}, of {described.size}"
        fields = [(name, getattr(kind, name).offset, field) for name, field in kind._fields_]
        if [each[:2] for each in fields] != [each[:2] for each in described.fields]:
            return f"{fields} is not {described.fields}"
        return next(filter(None, (difference(ours[2], theirs[2]) for ours, theirs in zip(fields, described.fields))), None)
    if described.kind == "pointer":
        return None if kind in (ctypes.c_void_p, ctypes.c_char_p) or hasattr(kind, "contents") or \
            issubclass(kind, ctypes._CFuncPtr) else f"{kind} is no address"
    if not issubclass(kind, ctypes._SimpleCData):
        return f"{kind} is no number"
    is_signed = kind(-1).value < 0
    same = (ctypes.sizeof(kind), is_signed) == (described.size, described.signed)
    return None if same else f"{kind} is not {described}"


def pointed_difference(parameter, described):
    """Of what a parameter is the address of: direction, and type of the element."""
    pointed = described.of
    if pointed.kind == "pointer" or isinstance(parameter, parameters.Callback):
        return None
    if pointed.kind != "void" and pointed.const == parameter.returned:  # the description does not have const void
        return f"{parameter.name} is {'' if pointed.const else 'not '}written"
    kind = parameter.kind
    while isinstance(kind, type) and issubclass(kind, ctypes.Array):
        kind = kind._type_
    return None if kind is None or pointed.kind == "void" else difference(kind, pointed)


def test_every_call_and_table_is_there_once():
    assert sorted(CALLS) == sorted(exports("functions")) and sorted(TABLES) == sorted(exports("data"))
    names = [name for name, _ in TABLES.values()] + [name.removeprefix("_") for name, _ in CALLS.values()]
    assert len(set(names)) == len(names)
    assert [name for name in names if not hasattr(bindings, name) or name not in dir(adp)] == []


@pytest.mark.parametrize("name", sorted(CALLS))
def test_call_has_the_library_s_types(name):
    ours, described = CALLS[name][1].parameters, ABI.parameters(name)
    assert len(ours) == len(described)  # the compiler does not know the names of those that are not used
    assert all(theirs in (None, each.name) for each, (theirs, _) in zip(ours, described))
    for parameter, (_, kind) in zip(ours, described):
        assert (kind.kind == "pointer") == (parameter.by_address or not hasattr(parameter, "kind")
                                            or isinstance(parameter, (parameters.Callback, parameters.Text)))
        if kind.kind == "pointer":
            assert pointed_difference(parameter, kind) is None
        assert difference(parameter.type, kind) is None
    result, described = CALLS[name][1].result, ABI.result(name)
    if described.kind == "pointer":
        assert difference(result._type_, described.of) is None
    else:
        assert result is None if described.kind == "void" else difference(result, described) is None


@pytest.mark.parametrize("name", sorted(TABLES))
def test_table_has_the_library_s_type(name):
    table, described = TABLES[name][1], ABI.table(name)
    if isinstance(table, tables.PortTable):
        described, kind = described.of, table.element
    elif isinstance(table, tables.Handler):
        assert described.kind == "pointer" and described.of.kind == "function"
        return
    else:
        kind = table.kind
    assert difference(kind, described) is None or flat_difference(kind, described) is None


def flat_difference(kind, described):
    """The compiler's description has one array where C has rows and columns."""
    assert issubclass(kind, ctypes.Array) and issubclass(kind._type_, ctypes.Array)
    return difference(kind._type_._type_ * (kind._length_ * kind._type_._length_), described)


@pytest.mark.parametrize("name", sorted(CALLS))
def test_function_takes_what_the_call_does_not_only_write(name):
    own, made = CALLS[name]
    function = getattr(bindings, own.removeprefix("_"))
    taken = inspect.signature(function).parameters
    assert list(taken) == [each.name for each in made.parameters if each.given]
    assert function.__doc__ and all(f"{each}: " in function.__doc__ for each in taken)
    several = [each for each in made.parameters if each.returned]
    assert (made._several is not None) == (len(several) + (made.result not in (None, call.Status)) > 1)


def test_records_have_all_fields_that_are_not_c_s_alone():
    for layout, record in memory.RECORDS.items():
        fields = [name for name, *_ in layout._fields_]
        ours = [each.name for each in dataclasses.fields(record)]
        assert ours == [name for name in fields if name != "link"], layout
        assert memory.stored("", record(), layout) is not None and memory.record(layout()) == record()
    assert set(LAYOUTS.values()) - set(memory.RECORDS) == {
        LAYOUTS[name] for name in ("adp_tx_frame_t", "adp_rx_frame_t", "adp_list_link_t", "adp_tx_dest_t", "adp_port_set_t")}
