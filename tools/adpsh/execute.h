/**
 * @file execute.h
 * Executes one call of the library with a line's arguments.
 */
#pragma once

#include "calls/call_trace.h"
#include "calls/exported.h"
#include "tools/adpsh/arguments.h"
#include "tools/adpsh/line_error.h"
#include "tools/adpsh/parser.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace adpsh {

struct Outcome {
    const exported::Call *call = nullptr;
    std::unique_ptr<Arguments> arguments;
    int64_t result = 0;                          ///< an address as a number
    std::optional<call_trace::Failure> failure;  ///< of a driver call, if the call's result says that something failed
    std::vector<std::string> warnings;           ///< what the library does not say about the line
    std::vector<std::string> trace;              ///< the driver calls that the call made
    std::vector<std::string> events;             ///< callbacks that the library called
    std::string printed_stdout;                  ///< what the library printed, where it is captured
    std::string printed_stderr;
};

struct ExecuteOptions {
    bool capture = false;
    bool trace = false;
};

/** A call accessed an invalid address and was ended. The state of the library is unknown. */
class CrashedCall : public LineError {
  public:
    using LineError::LineError;
};

/** Makes the call. Throws a LineError if it cannot be made, a CrashedCall if it crashed. */
Outcome execute(const exported::Call &call, const Command &command, const Variables &variables, ExecuteOptions options);

}  // namespace adpsh
