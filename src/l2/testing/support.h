// Shared by the tests of the L2 tables: an address, the blocks of 88 bytes that go to the driver, and a fixture that
// keeps the bytes of such blocks.
#pragma once

#include <stdint.h>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/library_test.h"

namespace l2_test {

using Bytes = std::vector<uint8_t>;
using Trace = std::vector<std::string>;

inline constexpr uint8_t kMac[6] = {0x02, 0x1b, 0x21, 0xfe, 0x80, 0x07};
inline constexpr char kKey[] = "02:1b:21:fe:80:07:00:00";
inline constexpr size_t kEntrySize = 88;
inline constexpr uint32_t kNotWritten = 0xAAAAAAAA;
inline constexpr adp_word_t kWholeWord = UINTPTR_MAX - 1;
inline constexpr int32_t kFailures[] = {-1, 1, 77, INT32_MIN};
inline constexpr uint32_t kOtherTypes[] = {0x20000001, 0x70000002, 0xFFFFFFFF};
inline constexpr uint32_t kBadGroups[] = {0x10000000, 0x10000009, 0x1FFFFFFF};

/** A driver's record as bytes at their offsets, in the machine's byte order. */
class Block {
  public:
    template <typename T>
    Block &put(size_t offset, T value) {
        std::memcpy(&bytes_.at(offset), &value, sizeof value);
        return *this;
    }
    Block &put_mac(size_t offset) {
        std::memcpy(&bytes_.at(offset), kMac, sizeof kMac);
        return *this;
    }
    /** Every word differs. The bytes of a word are equal, so that it is the same number on every machine. */
    Block &fill() {
        for (size_t at = 0; at < bytes_.size(); ++at) {
            bytes_[at] = static_cast<uint8_t>(at / sizeof(uint32_t) + 0x11);
        }
        return *this;
    }
    [[nodiscard]] const Bytes &bytes() const { return bytes_; }

  private:
    Bytes bytes_ = Bytes(kEntrySize);
};

template <typename T>
Bytes bytes_of(const T &object) {
    const auto *first = reinterpret_cast<const uint8_t *>(&object);
    return {first, first + sizeof object};
}

class L2Test : public library_test::LibraryTest {
  protected:
    /** Keeps the bytes of @p argument of every such call, which returns @p result. */
    void keep(const char *call, const char *argument, int32_t result = 0) {
        driver().on(call).does([this, argument, result](recording::Arguments &arguments) {
            const auto bytes = arguments.bytes(argument);
            kept_.emplace_back(bytes.begin(), bytes.end());
            return result;
        });
    }
    /** Gives a row of the map another physical port. */
    static void set_row(uint32_t intf, int32_t port) { intf_to_phy_port[intf].phy = static_cast<uint32_t>(port); }

    /** The blocks kept since the last time. */
    std::vector<Bytes> kept() { return std::exchange(kept_, {}); }

    /** The driver gets these words whole in the named arguments; a trace shows only 32 bits of them. */
    static void expect_words(const char *call, const std::vector<std::pair<std::string, adp_word_t>> &words) {
        driver().on(call).does([words](recording::Arguments &arguments) {
            for (const auto &[name, value] : words) {
                EXPECT_EQ(arguments.word(name), value) << name;
            }
            return 0;
        });
    }

  private:
    std::vector<Bytes> kept_;
};

/** The call returns the driver's result, whatever it is. */
template <typename Run>
void expect_results_passed_on(const std::string &call, Run run) {
    for (const int32_t failure : kFailures) {
        recording::driver().fail_every(call, failure);
        EXPECT_EQ(run(), failure) << call;
    }
    recording::driver().fail_nothing();
}

}  // namespace l2_test
