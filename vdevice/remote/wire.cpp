// Words as four bytes, the most significant first.
#include "vdevice/remote/wire.h"

#include <cstring>

namespace vdevice::remote {
namespace {

constexpr unsigned kByteBits = 8;
constexpr unsigned kTopShift = 24;

void put(uint8_t *to, uint32_t value) {
    for (size_t index = 0; index < kWordBytes; ++index) {
        to[index] = static_cast<uint8_t>(value >> (kTopShift - kByteBits * index));
    }
}

}  // namespace

void Writer::word(uint32_t value) {
    buffer_.resize(buffer_.size() + kWordBytes);
    put(&buffer_[buffer_.size() - kWordBytes], value);
}

void Writer::bytes(const void *data, size_t size) {
    const auto *from = static_cast<const uint8_t *>(data);
    buffer_.insert(buffer_.end(), from, from + size);
    buffer_.resize(buffer_.size() + padded(size) - size);
}

void Writer::patch(size_t offset, uint32_t value) {
    put(&buffer_[offset], value);
}

bool Reader::has(size_t size) {
    good_ = good_ && data_.size() >= size;
    return good_;
}

uint32_t Reader::word() {
    if (!has(kWordBytes)) {
        return 0;
    }
    uint32_t value = 0;
    for (size_t index = 0; index < kWordBytes; ++index) {
        value = value << kByteBits | data_[index];
    }
    data_ = data_.subspan(kWordBytes);
    return value;
}

void Reader::bytes(void *to, size_t size) {
    if (!has(padded(size))) {
        return;
    }
    if (size != 0) {
        std::memcpy(to, data_.data(), size);
    }
    data_ = data_.subspan(padded(size));
}

}  // namespace vdevice::remote
