/**
 * @file thread.h
 * What the library keeps of each thread: its number, the calls that it is in, memory for a line.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <string>
#include <vector>

#include "calls/json_text.h"

namespace adptrace::record {

struct Process;

inline constexpr size_t kMostDepth = 64; /**< of calls within calls that are recorded */

/** A call under way, on the stack of the thread that makes it. */
struct Span {
    uint64_t number;
    uint32_t generation; /**< of the process */
    size_t depth;        /**< the calls that it is within */
    calls::Blocks blocks;
    calls::Blocks before;
};

/** Memory that a thread uses again and again. */
struct Buffers {
    std::string line;
    std::array<std::vector<uint8_t>, kMostDepth> copies; /**< of arguments, by the depth of the call */
};

/** A call as its thread knows it. The call's own memory may be gone without its having returned. */
struct Open {
    const Span *at;
    uint64_t number;
};

struct Thread {
    uint32_t generation; /**< of the process that the rest is for */
    uint32_t number;     /**< 0: it has not made a call */
    size_t depth;        /**< calls that are open */
    std::array<Open, kMostDepth> open;
    const Span *writing; /**< of the call whose line is made, or null */
    Buffers *buffers;
};

/** Appends `"within":NUMBER,"thread":NUMBER,"at":NUMBER`, the first only within a call. */
void append_place(const Process &process, const Thread &thread, std::string &line);

/** Of the thread that asks. */
Thread &thread();

/** Makes it the thread of the process that this is, with a number and memory, for a call. */
void enter(Thread &thread, const Span &span);

/**
 * While it lives a line is made. A signal handler that interrupts this, and makes calls, finds that the thread is busy:
 * its calls are not recorded.
 */
class Writing {
  public:
    explicit Writing(const Span &span);
    ~Writing();
    Writing(const Writing &) = delete;
    Writing &operator=(const Writing &) = delete;

    explicit operator bool() const { return is_free_; }
    [[nodiscard]] Thread &thread() const { return thread_; }

  private:
    Thread &thread_;
    bool is_free_;
};

}  // namespace adptrace::record
