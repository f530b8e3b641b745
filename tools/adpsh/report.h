/**
 * @file report.h
 * What the shell says about each line, to people or to programs.
 */
#pragma once

#include "tools/adpsh/execute.h"
#include "tools/adpsh/show.h"

#include <stddef.h>
#include <memory>
#include <string>

namespace adpsh {

/** What one of the shell's own commands answers: a text for people, an object for programs. */
struct Answer {
    std::string text;
    Json object = Json::object();
};

class Report {
  public:
    Report() = default;
    virtual ~Report() = default;
    Report(const Report &) = delete;
    Report &operator=(const Report &) = delete;

    virtual void call(size_t line, const Outcome &outcome) = 0;
    virtual void answer(size_t line, const Answer &answer) = 0;
    virtual void refusal(size_t line, const std::string &sentence) = 0;
};

/** Text on standard output; refusals on standard error, with the line's number when `numbered`. */
std::unique_ptr<Report> text_report(bool numbered);
/** One JSON object a line on standard output. */
std::unique_ptr<Report> json_report();

}  // namespace adpsh
