/**
 * @file writer.h
 * Recorded calls and their floors as tables of a C program, and their description as JSON.
 */
#pragma once

#include <stddef.h>
#include <set>
#include <string>

#include "bench/calls/record/cases.h"
#include "bench/calls/record/recording.h"

namespace record {

class Writer {
  public:
    /** Records the case, unless the call is refused. */
    void add(const Case &one);
    /** Throws std::runtime_error when a function has no case. */
    void require_all() const;
    void write(const std::string &code, const std::string &json) const;

  private:
    void add_functions(const Recording &recording, const Blocks &blocks);

    size_t count_ = 0;
    std::set<std::string> functions_recorded_;
    std::string functions_;
    std::string table_;
    std::string json_;
};

}  // namespace record
