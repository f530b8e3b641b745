// Makes a call under guard, with trace and capture.
#include "tools/adpsh/execute.h"

#include "calls/call_trace.h"
#include "tools/adpsh/capture.h"
#include "tools/adpsh/events.h"
#include "tools/adpsh/guard.h"
#include "tools/adpsh/result.h"
#include "tools/adpsh/warnings.h"

#include <fmt/format.h>

#include <unistd.h>
#include <optional>

namespace adpsh {

namespace {

Fault run(Outcome &outcome, ExecuteOptions options) {
    call_trace::enabled = options.trace;
    call_trace::name_of = device_name_of;
    call_trace::take_failure();
    const Fault fault = run_guarded([&outcome] { outcome.result = outcome.arguments->invoke(); });
    call_trace::enabled = false;
    outcome.trace = call_trace::take();
    if (const auto failure = call_trace::take_failure(); outcome.result != 0) {
        outcome.failure = failure;
    }
    outcome.events = take_events();
    return fault;
}

}  // namespace

Outcome execute(const exported::Call &call, const Command &command, const Variables &variables,
                ExecuteOptions options) {
    if (call.function == nullptr) {
        throw LineError(std::string("the loaded library has no ") + call.name);
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
    outcome.warnings = warnings_of(outcome);
    if (fault.signal != 0) {
        throw CrashedCall(
            fmt::format("{} crashed: it accessed the invalid address {:#x}; was a number given in place of an "
                        "address?",
                        call.name, fault.address));
    }
    return outcome;
}

}  // namespace adpsh
