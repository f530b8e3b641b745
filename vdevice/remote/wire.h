// Big-endian words in a byte buffer, written and read byte by byte, so that either byte order gives the same message.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <span>
#include <vector>

#include "vdevice/remote/protocol.h"

namespace vdevice::remote {

/** Bytes rounded up to whole words. */
constexpr size_t padded(size_t bytes) {
    return (bytes + kWordBytes - 1) / kWordBytes * kWordBytes;
}

class Writer {
  public:
    void word(uint32_t value);
    /** Bytes in their order, filled up with zeros to a whole word. */
    void bytes(const void *data, size_t size);
    /** Overwrites an earlier word. */
    void patch(size_t offset, uint32_t value);

    [[nodiscard]] const std::vector<uint8_t> &buffer() const { return buffer_; }
    [[nodiscard]] std::vector<uint8_t> take() { return std::move(buffer_); }

  private:
    std::vector<uint8_t> buffer_;
};

/** Reads beyond the end give zeros, and is_good() stays false from then on. */
class Reader {
  public:
    explicit Reader(std::span<const uint8_t> data) : data_(data) {}

    uint32_t word();
    void bytes(void *to, size_t size);

    [[nodiscard]] bool is_good() const { return good_; }
    [[nodiscard]] size_t left() const { return data_.size(); }
    /** Everything was read, and nothing beyond it. */
    [[nodiscard]] bool is_finished() const { return good_ && data_.empty(); }

  private:
    bool has(size_t size);

    std::span<const uint8_t> data_;
    bool good_ = true;
};

}  // namespace vdevice::remote
