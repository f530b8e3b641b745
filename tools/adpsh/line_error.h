/**
 * @file line_error.h
 * The error of a line that cannot be executed.
 */
#pragma once

#include <stdexcept>

namespace adpsh {

class LineError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace adpsh
