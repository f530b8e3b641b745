/**
 * @file capture.h
 * Captures what the library prints during a call, at the file descriptors.
 */
#pragma once

#include <string>

namespace adpsh {

/** Redirects a descriptor into memory until take() or destruction. */
class Capture {
  public:
    explicit Capture(int descriptor);
    ~Capture();
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;

    /** Restores the descriptor. @return what was written to it */
    std::string take();

  private:
    void restore();

    int descriptor_;
    int saved_ = -1;
    int memory_ = -1;
};

}  // namespace adpsh
