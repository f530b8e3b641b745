/**
 * @file random.h
 * Numbers that depend on a seed alone, so a sequence is the same on every machine.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <span>

namespace differential {

/** Scrambles a number: neighbours come out unrelated. */
constexpr uint64_t scramble(uint64_t z) {
    z += 0x9E3779B97F4A7C15;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
}

class Random {
  public:
    explicit Random(uint64_t seed) : state_(seed) {}

    uint32_t next() {
        state_ = scramble(state_);
        return static_cast<uint32_t>(state_ >> 32);
    }
    /** 0 .. limit - 1 */
    uint32_t below(uint32_t limit) { return next() % limit; }
    bool one_in(uint32_t n) { return below(n) == 0; }
    template <typename T, size_t n>
    T one_of(const T (&choices)[n]) {
        return choices[below(n)];
    }
    /** A word with few bits set. */
    uint32_t sparse() {
        const uint32_t a = next();
        const uint32_t b = next();
        return a & b & next();
    }

  private:
    uint64_t state_;
};

}  // namespace differential
