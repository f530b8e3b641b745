// What the recording does between a program and its calls leaves errno alone.
#pragma once

#include <cerrno>

namespace adptrace::record {

class ErrnoGuard {
  public:
    ErrnoGuard() : value_{errno} {}
    ~ErrnoGuard() { errno = value_; }
    ErrnoGuard(const ErrnoGuard &) = delete;
    ErrnoGuard &operator=(const ErrnoGuard &) = delete;

  private:
    int value_;
};

}  // namespace adptrace::record
