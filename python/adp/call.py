"""A call of libadp: checks what it is given, calls, raises Error for a status other than ADP_OK, gives what was written."""

from __future__ import annotations

import ctypes
import functools
from collections.abc import Callable
from typing import Any, Generic, TypeVar

from .errors import Error, LibraryError
from .library import library
from .memory import loaded, record
from .parameters import Value

Returned = TypeVar("Returned")


class Status(ctypes.c_int32):
    """The result of a call that can fail."""


class Call(Generic[Returned]):
    """One exported function; it is looked up when it is first called."""

    def __init__(self, name: str, result: Any, *parameters: Value, several: Callable[..., Returned] | None = None) -> None:
        """several makes the result of a call that gives more than one value."""
        self.name = name
        self.result = result
        self.parameters = parameters
        self._given = [parameter.name for parameter in parameters if parameter.given]
        self._several = several

    def __call__(self, *given: object) -> Returned:
        values = dict(zip(self._given, given, strict=True))
        arguments = {parameter.name: parameter.argument(values) for parameter in self.parameters}
        result = self._function(*map(_passed, self.parameters, arguments.values()))
        outputs = [parameter.outcome(arguments) for parameter in self.parameters if parameter.returned]
        return self.outcome(self._result(result), outputs)

    def outcome(self, result: Any, outputs: list[Any]) -> Returned:
        """What the call returns, of its result and outputs; an Error for a status other than ADP_OK."""
        if self.result not in (None, Status):
            outputs = [result, *outputs]
        returned = self._several(*outputs) if self._several else outputs[0] if outputs else None
        if self.result is Status and result != 0:
            raise Error(self.name, result, returned)
        return returned  # type: ignore[no-any-return]  # the generated annotation says it

    @functools.cached_property
    def _function(self) -> Any:
        function = exported(lambda: library()[self.name], self.name)
        function.restype = self.result
        function.argtypes = [parameter.type for parameter in self.parameters]
        return function

    def _result(self, result: Any) -> Any:
        if hasattr(self.result, "contents"):
            return record(result.contents) if result else None
        return loaded(result)


def exported(find: Callable[[], Any], name: str) -> Any:
    """What the library exports by this name."""
    try:
        return find()
    except (AttributeError, ValueError):
        raise LibraryError(f"{library()._name} does not have {name}") from None


def _passed(parameter: Value, argument: Any) -> Any:
    return ctypes.byref(argument) if parameter.by_address and argument is not None else argument
