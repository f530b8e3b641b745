"""Emits functions: stubs that collect their arguments, and forwarders that call a function with collected arguments."""
from emit_table import BANNER


def declare(param, named=True):
    """The parameter as its header declares it."""
    const = "const " if param.const else ""
    if not param.pointer:
        return f"{param.type} {param.name}" if named else param.type
    if isinstance(param.extent, int) and param.extent > 1 and param.kind != "void":
        return f"{const}{param.type} {param.name}[{param.extent}]" if named else f"{const}{param.type} *"
    stars = "*" * param.pointer_depth
    return f"{const}{param.type} {stars}{param.name}" if named else f"{const}{param.type} {stars}"


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


def exported_stubs(library):
    bodies = "".join(stub(function, index) for index, function in enumerate(library.functions))
    return f"""{BANNER}// Each stub passes the addresses of its arguments to the program's own exported::forward_call().
#include <adp/adp.h>

#include "calls/stub.h"

using exported::forward;

extern "C" {{

{bodies}}}  // extern "C"
"""


def stub(function, number=None):
    """number: the call's place in the table of exported calls, or None for an imported one."""
    number = f"CallId::{function.name}" if number is None else number
    names = [f"&{param.name}" for param in function.params]
    head = f"{spaced(function.returns)}{function.name}({parameters(function)}) {{\n"
    if not names:
        return f"{head}    return forward<{function.returns}>({number}, nullptr);\n}}\n\n"
    return (f"{head}    const void *const arguments[] = {{{', '.join(names)}}};\n"
            f"    return forward<{function.returns}>({number}, arguments);\n}}\n\n")


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
