/**
 * @file fuzz.h
 * What fuzz targets share. A target defines LLVMFuzzerTestOneInput(); it is linked with the fuzzer in the build `fuzz`
 * and with replay_main.cpp everywhere else, where it runs the inputs that are kept.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <span>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace fuzz {

using Bytes = std::vector<uint8_t>;

/** Takes an input apart, numbers big-endian so that it means the same on any machine. Behind its end are zeros. */
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

/** Ends the program if what must hold does not: the fuzzer keeps the input. */
void expect(bool holds, const char *what);

/** From now on what the code under test prints goes nowhere; what expect() and the sanitizers say does not. */
void be_quiet();

}  // namespace fuzz
