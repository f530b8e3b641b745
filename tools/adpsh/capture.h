/**
 * @file capture.h
 * What the library prints while a call runs, caught at the file descriptors.
 */
#pragma once

#include <string>

namespace adpsh {

/** Redirects one descriptor into memory from its construction to take(), or to its end. */
class Capture {
  public:
    explicit Capture(int descriptor);
    ~Capture();
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;

    /** Puts the descriptor back and gives what was written to it. */
    std::string take();

  private:
    void restore();

    int descriptor_;
    int saved_ = -1;
    int memory_ = -1;
};

}  // namespace adpsh
