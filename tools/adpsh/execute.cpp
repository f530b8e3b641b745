#include "tools/adpsh/execute.h"

#include "tools/adpsh/capture.h"
#include "tools/adpsh/events.h"
#include "tools/adpsh/guard.h"

#include <fmt/format.h>

#include <unistd.h>
#include <optional>

#ifdef ADPSH_CALL_TRACE
#include "calls/call_trace.h"
#endif

namespace adpsh {

namespace {

#ifdef ADPSH_CALL_TRACE
void enable_trace(bool on) {
    call_trace::enabled = on;
}
std::vector<std::string> take_trace() {
    return call_trace::take();
}
#else
void enable_trace(bool) {}
std::vector<std::string> take_trace() {
    return {};
}
#endif

Fault run(Outcome &outcome, ExecuteOptions options) {
    enable_trace(options.trace);
    const Fault fault = run_guarded([&outcome] { outcome.result = outcome.arguments->invoke(); });
    enable_trace(false);
    outcome.trace = take_trace();
    outcome.events = take_events();
    return fault;
}

}  // namespace

#ifdef ADPSH_CALL_TRACE
bool can_trace() {
    return true;
}
#else
bool can_trace() {
    return false;
}
#endif

Outcome execute(const Call &call, const Command &command, const Variables &variables, ExecuteOptions options) {
    if (!call.is_present) {
        throw Refusal(std::string("the library that is loaded does not have ") + call.name);
    }
    Outcome outcome;
    outcome.call = &call;
    outcome.arguments = std::make_unique<Arguments>(call, command, variables);
    Fault fault;
    if (options.capture) {
        Capture out(STDOUT_FILENO);
        Capture err(STDERR_FILENO);
        fault = run(outcome, options);
        outcome.printed_stderr = err.take();
        outcome.printed_stdout = out.take();
    } else {
        fault = run(outcome, options);
    }
    if (fault.signal != 0) {
        throw BrokenCall(
            fmt::format("{} was ended: it used an address that is not valid ({:#x}), as happens to a number "
                        "where an address is meant",
                        call.name, fault.address));
    }
    return outcome;
}

}  // namespace adpsh
