/**
 * @file effects.h
 * Everything that the library, or the model, did in one step, apart from its tables and its arguments.
 */
#pragma once

#include <stdint.h>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "calls/exported.h"

namespace differential {

struct Effects {
    int64_t result = 0;             /**< an address as a number */
    std::string out;                /**< on standard output */
    std::string err;                /**< on standard error */
    std::vector<uint8_t> notes;     /**< the calls it made, to be compared */
    std::vector<std::string> lines; /**< the same as text, if it was asked for */
};

std::string result_text(const exported::Call &call, int64_t result);

/** Whether the results are equal. Records are compared by what they hold, list nodes by their rule. */
bool is_same_result(const exported::Call &call, int64_t library, int64_t model);

/** Whether the texts are equal. kAnyNumber in the model's text stands for any number. */
bool is_same_text(std::string_view library, std::string_view model);

/** Collects the text of a standard stream. */
class Capture {
  public:
    explicit Capture(std::FILE **stream);
    ~Capture();
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;

    /** The text since the last call. */
    std::string take();

  private:
    std::FILE **stream_;
    std::FILE *was_;
    char *text_ = nullptr;
    size_t size_ = 0;
};

}  // namespace differential
