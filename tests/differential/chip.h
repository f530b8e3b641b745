/**
 * @file chip.h
 * The driver and the services of a life: every imported call is answered from the call's seed and noted, so that the
 * library and the model get the same answers as long as they ask the same.
 */
#pragma once

#include <stdint.h>
#include <string>
#include <string_view>
#include <vector>

#include "calls/call_table.h"
#include "tests/differential/random.h"

namespace lives {

class Chip {
  public:
    /** Answers from now on are those of this seed; the notes start anew. */
    void start(uint64_t seed);
    /** Whether calls are also written down as text, which is slow. */
    void describe(bool on) { describes_ = on; }

    int64_t answer(calls::CallId id, const void *const *arguments);
    /** The logger, whose arguments are already text. */
    int32_t answer_log(int32_t level, int32_t module, const char *word, const char *format, const char *text);
    /** A handler that was registered with the library is called. */
    int32_t answer_event(const std::string &text);
    /** A system call, which the fake system answers. */
    void note(std::string_view line);

    /** Calls since the start. */
    [[nodiscard]] uint32_t count() const { return count_; }
    /** What was asked, as bytes that only compare. */
    [[nodiscard]] const std::vector<uint8_t> &notes() const { return notes_; }
    /** The same as text, if it was wanted. */
    [[nodiscard]] const std::vector<std::string> &lines() const { return lines_; }

  private:
    enum class Mood { kWilling, kFailsOnce, kFailsOften, kFailsAlways, kSilent };

    [[nodiscard]] int32_t failure(Random &random);
    void add(const void *data, size_t size);
    void note_arguments(calls::CallId id, const void *const *arguments);
    int64_t result_of(calls::CallId id, Random &random, const void *const *arguments);
    void write_outputs(calls::CallId id, Random &random, const void *const *arguments);

    uint64_t seed_ = 0;
    uint32_t count_ = 0;
    Mood mood_ = Mood::kWilling;
    uint32_t failing_ = 0;
    bool describes_ = false;
    std::vector<uint8_t> notes_;
    std::vector<std::string> lines_;
};

/** The chip behind the imported calls of this program. */
Chip &chip();

}  // namespace lives
