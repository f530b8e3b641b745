"""Emits functions: stubs that collect their arguments, virtual methods that answer them, and forwarders."""
import model
from emit_table import BANNER

LOG_METHOD = "log_line"  # what the variadic logger becomes once its text has been formatted


def declare(param, named=True):
    """The parameter as its header declares it."""
    const = "const " if param.const else ""
    if not param.pointer:
        return f"{param.type} {param.name}" if named else param.type
    if isinstance(param.extent, int) and param.extent > 1 and param.kind != "void":
        return f"{const}{param.type} {param.name}[{param.extent}]" if named else f"{const}{param.type} *"
    return f"{const}{param.type} *{param.name}" if named else f"{const}{param.type} *"


def parameters(function, named=True):
    return ", ".join(declare(param, named) for param in function.params) or "void"


def spaced(type_name):
    return type_name if type_name.endswith("*") else type_name + " "


def stubs(calls, library):
    bodies = "".join(stub(function) for function in calls.functions
                     if calls.library_of[function.name] == library and not function.variadic)
    return f"""{BANNER}// Each stub passes the addresses of its arguments to the program's own calls::forward_call().
#include "platform/{calls.libraries[library]}"
#include "calls/stub.h"

using calls::CallId;
using calls::forward;

extern "C" {{

{bodies}}}  // extern "C"
"""


def stub(function):
    names = [f"&{param.name}" for param in function.params]
    head = f"{spaced(function.returns)}{function.name}({parameters(function)}) {{\n"
    if not names:
        return f"{head}    return forward<{function.returns}>(CallId::{function.name}, nullptr);\n}}\n\n"
    return (f"{head}    const void *const arguments[] = {{{', '.join(names)}}};\n"
            f"    return forward<{function.returns}>(CallId::{function.name}, arguments);\n}}\n\n")


def method_name(function):
    return LOG_METHOD if function.variadic else function.name


def method_parameters(function, named):
    if not function.variadic:
        return parameters(function, named) if function.params else ""
    fixed = function.params[:-1]
    return ", ".join([declare(param, named) for param in fixed] + ["const char *text" if named else "const char *"])


def driver_calls_header(calls):
    includes = "".join(f'#include "platform/{header}"\n' for header in calls.libraries.values())
    methods = "".join(f"    virtual {spaced(function.returns)}{method_name(function)}"
                      f"({method_parameters(function, True)});\n" for function in calls.remote)
    return f"""{BANNER}#ifndef GENERATED_DRIVER_CALLS_H
#define GENERATED_DRIVER_CALLS_H

#include <stdint.h>

#include "generated/call_id.h"
{includes}
namespace vdevice {{

/** What a device answers: one method per imported call. A call that is not overridden answers kNotSupported. */
class DriverCalls {{
  public:
    DriverCalls() = default;
    DriverCalls(const DriverCalls &) = delete;
    DriverCalls &operator=(const DriverCalls &) = delete;
    virtual ~DriverCalls() = default;

{methods}}};

/** True if a device answers the call; the others are answered within the calling process. */
bool is_answered(calls::CallId id);

/** Calls the method of @p id; @p arguments holds the address of each argument. */
int64_t dispatch(DriverCalls &calls, calls::CallId id, const void *const *arguments);

}}  // namespace vdevice

#endif
"""


def default_result(function):
    return {"void": "", "const char *": " return nullptr; "}.get(
        function.returns, f" return static_cast<{function.returns}>(driver::kNotSupported); "
        if function.returns != "int32_t" else " return driver::kNotSupported; ")


def driver_calls_source(calls):
    methods = "".join(f"{spaced(function.returns)}DriverCalls::{method_name(function)}"
                      f"({method_parameters(function, False)}) {{{default_result(function)}}}\n"
                      for function in calls.remote)
    rows = "".join(f"    nullptr,  // {function.name}\n" if function.name in model.LOCAL_CALLS
                   else f"    &invoke<&DriverCalls::{method_name(function)}>,\n" for function in calls.functions)
    return f"""{BANNER}#include "generated/driver_calls.h"

#include "calls/invoke.h"
#include "vdevice/driver/codes.h"

namespace vdevice {{

{methods}
namespace {{

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


def forward_source(calls):
    includes = "".join(f'#include "platform/{header}"\n' for header in calls.libraries.values())
    rows = "".join(f"    nullptr,  // {function.name}: takes a format\n" if function.variadic
                   else f"    &invoke_function<decltype(&{function.name})>,\n" for function in calls.functions)
    return f"""{BANNER}#include "calls/call_table.h"
#include "calls/invoke.h"
{includes}
namespace calls {{
namespace {{

constexpr Invoker kInvokers[kCallCount] = {{
{rows}}};

}}  // namespace

int64_t call_function(void *function, CallId id, const void *const *arguments) {{
    return kInvokers[static_cast<size_t>(id)](function, arguments);
}}

}}  // namespace calls
"""


def version_script(calls, library):
    names = [function.name for function in calls.functions if calls.library_of[function.name] == library]
    lines = "".join(f"        {name};\n" for name in sorted(names + calls.data[library]))
    return f"/* Generated: what the library exports. */\n{{\n    global:\n{lines}    local:\n        *;\n}};\n"
