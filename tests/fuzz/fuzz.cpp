// Reads the inputs of fuzz targets, and reports what does not hold.
#include "tests/fuzz/fuzz.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace fuzz {
namespace {

constexpr unsigned kByteBits = 8;
constexpr unsigned kHalfBits = 16;

}  // namespace

uint8_t Input::u8() {
    const uint8_t value = data_.empty() ? uint8_t{0} : data_.front();
    data_ = data_.subspan(data_.empty() ? 0 : 1);
    return value;
}

uint16_t Input::u16() {
    const unsigned high = u8();
    return static_cast<uint16_t>(high << kByteBits | u8());
}

uint32_t Input::u32() {
    const uint32_t high = u16();
    return high << kHalfBits | u16();
}

Bytes Input::bytes(size_t count) {
    const auto taken = data_.first(std::min(count, data_.size()));
    data_ = data_.subspan(taken.size());
    return {taken.begin(), taken.end()};
}

void expect(bool holds, const char *what) {
    if (!holds) {
        dprintf(STDERR_FILENO, "does not hold: %s\n", what);
        std::abort();
    }
}

void be_quiet() {
    // The streams, not the descriptors, to which the fuzzer and the sanitizers write.
    static FILE *const nowhere = std::fopen("/dev/null", "w");
    if (nowhere != nullptr) {
        stdout = nowhere;
        stderr = nowhere;
    }
}

}  // namespace fuzz
