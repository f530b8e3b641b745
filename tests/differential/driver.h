/**
 * @file driver.h
 * The driver and the services behind a sequence: every imported call is answered from the step's seed and noted, so the
 * library and the model get the same answers as long as they make the same calls.
 */
#pragma once

#include <stdint.h>
#include <string>
#include <string_view>
#include <vector>

#include "calls/call_table.h"
#include "tests/differential/random.h"

namespace differential {

class Driver {
  public:
    /** Begins a step: its answers depend on this seed, and the notes are empty. */
    void start(uint64_t seed);
    /** Whether calls are also described in text, which is slow. */
    void describe(bool on) { describes_ = on; }

    int64_t answer(calls::CallId id, const void *const *arguments);
    /** The logger, with its text already formatted. */
    int32_t answer_log(int32_t level, int32_t module, const char *word, const char *format, const char *text);
    /** A callback that was registered with the library is called. */
    int32_t answer_event(const std::string &text);
    /** Notes a system call, which the fake system answers. */
    void note(std::string_view line);

    /** Calls in this step. */
    [[nodiscard]] uint32_t count() const { return count_; }
    /** The calls with their inputs, as bytes to compare. */
    [[nodiscard]] const std::vector<uint8_t> &notes() const { return notes_; }
    /** The calls as text, if describe() has asked for it. */
    [[nodiscard]] const std::vector<std::string> &lines() const { return lines_; }

  private:
    /** How the calls of a step end. */
    enum class Answers { kSucceed, kFailOnce, kFailOften, kFailAlways, kWriteNothing };

    [[nodiscard]] int32_t failure(Random &random);
    void add(const void *data, size_t size);
    void note_arguments(calls::CallId id, const void *const *arguments);
    int64_t result_of(calls::CallId id, Random &random, const void *const *arguments);
    void write_outputs(calls::CallId id, Random &random, const void *const *arguments);

    uint64_t seed_ = 0;
    uint32_t count_ = 0;
    Answers answers_ = Answers::kSucceed;
    uint32_t failing_ = 0;
    bool describes_ = false;
    std::vector<uint8_t> notes_;
    std::vector<std::string> lines_;
};

/** The driver behind the imported calls of this program. */
Driver &driver();

}  // namespace differential
