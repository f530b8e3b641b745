/**
 * @file threads.h
 * A thread for each thread of a recording. They take turns: one works, whoever gave it the work waits.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <functional>
#include <map>
#include <memory>

namespace adptrace::replay {

class Threads {
  public:
    Threads();
    ~Threads();
    Threads(const Threads &) = delete;
    Threads &operator=(const Threads &) = delete;

    /** Does the work on a thread, and returns when it is done. Throws a Refusal where there are too many threads. */
    void run(uint32_t thread, const std::function<void()> &work);

  private:
    class Worker;
    std::map<uint32_t, std::unique_ptr<Worker>> workers_;
};

}  // namespace adptrace::replay
