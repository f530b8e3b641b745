/**
 * @file random_call.h
 * Reproducible arguments and outputs for any call of the table. A seed gives the same on every machine.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <deque>
#include <span>
#include <string>
#include <vector>

#include "calls/call_table.h"

namespace random_call {

/** A source of numbers. */
class Source {
  public:
    virtual ~Source() = default;
    virtual uint32_t next() = 0;
    uint32_t below(uint32_t limit) { return next() % limit; }

  protected:
    Source() = default;
    Source(const Source &) = default;
    Source &operator=(const Source &) = default;
};

/** A small generator whose numbers depend on the seed alone. */
class Random final : public Source {
  public:
    explicit Random(uint64_t seed) : state_(seed * kMultiplier + kIncrement) {}
    uint32_t next() override;

  private:
    static constexpr uint64_t kMultiplier = 6364136223846793005;
    static constexpr uint64_t kIncrement = 1442695040888963407;
    uint64_t state_;
};

/** Fills an element or a block of them. */
void fill_random(Source &random, const calls::Element &element, void *at, size_t count);

/** Arguments of one call: every block has its own memory; some pointers are null. */
class RandomCall {
  public:
    RandomCall(std::span<const calls::Param> params, Source &random);
    RandomCall(calls::CallId id, uint64_t seed);
    RandomCall(calls::CallId id, Source &random);
    RandomCall(const RandomCall &) = delete;
    RandomCall &operator=(const RandomCall &) = delete;

    [[nodiscard]] const void *const *arguments() const { return arguments_.data(); }

  private:
    void fill(Source &random);
    void add_value(size_t index, Source &random);
    void add_pointer(size_t index, Source &random);
    void *pointed(size_t index, Source &random);
    void *text(Source &random);
    void *list(Source &random);
    void *frame_record(const calls::Struct &layout, Source &random);
    void *plain(size_t index, Source &random);
    void *allocate(size_t size);

    std::span<const calls::Param> params_;
    std::deque<std::vector<uint64_t>> memory_;
    std::vector<const void *> arguments_;
};

/** Fills everything that the call writes, as a driver would. An address that the call sets is null after it. */
void write_outputs(std::span<const calls::Param> params, const void *const *arguments, uint64_t seed);
void write_outputs(calls::CallId id, const void *const *arguments, uint64_t seed);

/** A result for the call: mostly 0, sometimes positive or negative. */
int32_t random_result(calls::CallId id, uint64_t seed);

}  // namespace random_call
