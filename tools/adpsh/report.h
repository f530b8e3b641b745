/**
 * @file report.h
 * Reports on each line, as text for people or as JSON for programs.
 */
#pragma once

#include "tools/adpsh/execute.h"
#include "tools/adpsh/show.h"

#include <stddef.h>
#include <memory>
#include <string>

namespace adpsh {

/** The answer of one of the shell's own commands: text for people, an object for programs. */
struct Answer {
    std::string text;
    Json object = Json::object();
    bool is_failure = false;  ///< the program ends with status 1, after all of its lines
};

class Report {
  public:
    Report() = default;
    virtual ~Report() = default;
    Report(const Report &) = delete;
    Report &operator=(const Report &) = delete;

    virtual void call(size_t line, const Outcome &outcome) = 0;
    virtual void answer(size_t line, const Answer &answer) = 0;
    virtual void error(size_t line, const std::string &message) = 0;
};

/** Text on standard output; errors on standard error, with the line's number when `numbered`. */
std::unique_ptr<Report> text_report(bool numbered);
/** One JSON object a line on standard output. */
std::unique_ptr<Report> json_report();

}  // namespace adpsh
