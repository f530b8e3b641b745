"""Emits the driver calls as a device carries them out: an interface for each section, and the dispatch before it.

The dispatch has what is the same in every call. It refuses constant words that are not 0, and null addresses but for
port sets that are read, where null is the empty set. A section gets the rest: a single value or structure by reference,
a word as the number of 32 bits that it is on every machine.
"""
import model
from emit_calls import declare, parameters
from emit_table import BANNER

CONSTANTS = ("unit", "zero", "handle")  # parameters that are always 0
LOG_METHOD = "log_line"  # what the variadic logger becomes once its text has been formatted


def is_constant(param):
    return param.name in CONSTANTS and not param.pointer


def is_reference(param):
    return param.pointer and param.extent == 1 and not param.is_text


def may_be_null(param):
    return param.is_text or (param.is_ports and param.const)


def method_name(function):
    return LOG_METHOD if function.variadic else function.name


def method_parameters(function, named=True):
    """As the call is made; the logger gets its text in the place of the format."""
    if function.variadic:
        text = "const char *text" if named else "const char *"
        return ", ".join([*(declare(param, named) for param in function.params[:-1]), text])
    return parameters(function, named) if function.params else ""


def section_parameter(param, named):
    name = param.name if named else ""
    if is_reference(param) or (param.kind == "struct" and not param.pointer):
        const = "const " if param.const or not param.pointer else ""
        return f"{const}{param.type} &{name}"
    if param.kind == "word" and not param.pointer:
        return f"uint32_t {name}".strip()
    return declare(param, named)


def section_parameters(section, function, named=True):
    if section.is_service:
        return method_parameters(function, named)
    return ", ".join(section_parameter(param, named) for param in function.params if not is_constant(param))


def argument(param):
    if is_reference(param):
        return f"*{param.name}"
    if param.kind == "word" and not param.pointer:
        return f"static_cast<uint32_t>({param.name})"
    return param.name


def result_type(section):
    return "int32_t" if section.is_service else "chip::Status"


def interface(section):
    methods = "".join(f"    virtual {result_type(section)} {method_name(function)}"
                      f"({section_parameters(section, function)});\n" for function in section.functions)
    return f"""
/** {section.title}. A call that is not overridden answers kNotSupported. */
class {section.class_name} {{
  public:
    virtual ~{section.class_name}() = default;

{methods}}};
"""


def header(calls, sections):
    includes = "".join(f'#include "platform/{name}"\n' for name in calls.libraries.values())
    members = "".join(f"    std::unique_ptr<{section.class_name}> {section.name} = "
                      f"std::make_unique<{section.class_name}>();\n" for section in sections)
    methods = "".join(f"    int32_t {method_name(function)}({method_parameters(function)});\n"
                      for section in sections for function in section.functions)
    return f"""{BANNER}#pragma once

#include <stdint.h>
#include <memory>

#include "generated/call_id.h"
{includes}#include "vdevice/chip/frame/status.h"

namespace vdevice {{
{"".join(interface(section) for section in sections)}
/** Who carries out the calls of each section. */
struct DriverSections {{
{members}}};

/** The driver calls as they are made: refuses another unit and null addresses, and hands over to the call's section. */
class DriverCalls {{
  public:
    DriverCalls() = default;
    DriverCalls(const DriverCalls &) = delete;
    DriverCalls &operator=(const DriverCalls &) = delete;

{methods}
  protected:
    DriverSections sections_;
}};

/** True if a device answers the call; the others are answered within the calling process. */
bool is_answered(calls::CallId id);

/** Calls the method of @p id; @p arguments holds the address of each argument. */
int64_t dispatch(DriverCalls &calls, calls::CallId id, const void *const *arguments);

}}  // namespace vdevice
"""


def default(section, function):
    refusal = "chip::Status::kNotSupported"
    return (f"{result_type(section)} {section.class_name}::{method_name(function)}"
            f"({section_parameters(section, function, named=False)}) {{"
            f" return {f'chip::code({refusal})' if section.is_service else refusal}; }}\n")


def method(section, function):
    call = f"sections_.{section.name}->{method_name(function)}"
    head = f"int32_t DriverCalls::{method_name(function)}({method_parameters(function)}) {{\n"
    if section.is_service:
        names = [*(param.name for param in function.params[:-1]), "text"] if function.variadic \
            else [param.name for param in function.params]
        return f"{head}    return {call}({', '.join(names)});\n}}\n\n"
    constants = [f"{argument(param)} != 0" for param in function.params if is_constant(param)]
    addresses = [f"{param.name} == nullptr" for param in function.params if param.pointer and not may_be_null(param)]
    arguments = [argument(param) for param in function.params if not is_constant(param)]
    return (head + refuse(constants, "kBadUnit") + refuse(addresses, "kBadArgument") +
            f"    return chip::code({call}({', '.join(arguments)}));\n}}\n\n")


def refuse(conditions, status):
    if not conditions:
        return ""
    return f"    if ({' || '.join(conditions)}) {{\n        return chip::code(chip::Status::{status});\n    }}\n"


def source(calls, sections):
    every = [(section, function) for section in sections for function in section.functions]
    defaults = "".join(default(section, function) for section, function in every)
    methods = "".join(method(section, function) for section, function in every)
    rows = "".join(f"    nullptr,  // {function.name}\n" if function.name in model.LOCAL_CALLS
                   else f"    &invoke<&DriverCalls::{method_name(function)}>,\n" for function in calls.functions)
    return f"""{BANNER}#include "generated/driver_calls.h"

#include "calls/invoke.h"

namespace vdevice {{

{defaults}
{methods}namespace {{

using calls::invoke;

using Invoker = int64_t (*)(DriverCalls &, const void *const *);

constexpr Invoker kInvokers[calls::kCallCount] = {{
{rows}}};

}}  // namespace

bool is_answered(calls::CallId id) {{
    return static_cast<size_t>(id) < calls::kCallCount && kInvokers[static_cast<size_t>(id)] != nullptr;
}}

int64_t dispatch(DriverCalls &calls, calls::CallId id, const void *const *arguments) {{
    return kInvokers[static_cast<size_t>(id)](calls, arguments);
}}

}}  // namespace vdevice
"""
