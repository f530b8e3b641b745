/**
 * @file fuzz.h
 * What fuzz targets share. A target defines LLVMFuzzerTestOneInput(); it is linked with the fuzzer in the build `asan`
 * and with replay_main.cpp everywhere else, where it runs the stored inputs.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <span>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace fuzz {

using Bytes = std::vector<uint8_t>;

/** Reads an input. Numbers are big-endian, so that it is the same on every machine; after its end are zeros. */
class Input {
  public:
    Input(const uint8_t *data, size_t size) : data_(data, size) {}

    uint8_t u8();
    uint16_t u16();
    uint32_t u32();
    /** A number below the limit. */
    uint32_t below(uint32_t limit) { return u32() % limit; }
    bool flag() { return (u8() & 1) != 0; }
    /** That many bytes, or those that are left. */
    Bytes bytes(size_t count);
    Bytes rest() { return bytes(data_.size()); }
    [[nodiscard]] bool is_empty() const { return data_.empty(); }

  private:
    std::span<const uint8_t> data_;
};

/** Aborts the program if a condition does not hold; the fuzzer then stores the input. */
void expect(bool holds, const char *what);

/** Discards what the code under test prints, but not the messages of expect() and the sanitizers. */
void be_quiet();

}  // namespace fuzz
