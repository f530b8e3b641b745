/**
 * @file refusal.h
 * A line that cannot be executed, and the sentence that says why.
 */
#pragma once

#include <stdexcept>

namespace adpsh {

class Refusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace adpsh
