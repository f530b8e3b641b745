/**
 * @file execute.h
 * One call of the library, made with a line's arguments, and everything that came of it.
 */
#pragma once

#include "calls/exported.h"
#include "tools/adpsh/arguments.h"
#include "tools/adpsh/parser.h"
#include "tools/adpsh/refusal.h"

#include <memory>
#include <string>
#include <vector>

namespace adpsh {

struct Outcome {
    const exported::Call *call = nullptr;
    std::unique_ptr<Arguments> arguments;
    int64_t result = 0;               ///< an address as a number
    std::vector<std::string> trace;   ///< the driver calls that the call made
    std::vector<std::string> events;  ///< callbacks that the library called
    std::string printed_stdout;       ///< what the library printed, where it is captured
    std::string printed_stderr;
};

struct ExecuteOptions {
    bool capture = false;
    bool trace = false;
};

/** A call used an address that is not valid and was ended in the middle: what the library holds is unknown now. */
class BrokenCall : public Refusal {
  public:
    using Refusal::Refusal;
};

/** Makes the call; a Refusal says why it could not be made, a BrokenCall how it went wrong. */
Outcome execute(const exported::Call &call, const Command &command, const Variables &variables, ExecuteOptions options);

}  // namespace adpsh
