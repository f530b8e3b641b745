// The 64-byte record that get_vlan_info() fills: sixteen 32-bit words in host byte order.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <cstring>

namespace vdevice::driver {

class VlanRecord {
  public:
    static constexpr size_t kBytes = 64;
    static constexpr size_t kVidWord = 0;
    static constexpr size_t kMembersWord = 2;  /**< 64-bit bitmap, the more significant word first */
    static constexpr size_t kUntaggedWord = 4; /**< likewise */
    static constexpr int kFirstGroupBit = 26;  /**< bit i is user port i, bit 26 + g aggregation group g */

    void set_vid(uint32_t vid) { words_[kVidWord] = vid; }
    void set_members(uint64_t bits) { set_wide(kMembersWord, bits); }
    void set_untagged(uint64_t bits) { set_wide(kUntaggedWord, bits); }

    void copy_to(uint8_t *record) const { std::memcpy(record, words_.data(), kBytes); }

  private:
    void set_wide(size_t word, uint64_t bits) {
        words_[word] = static_cast<uint32_t>(bits >> 32);
        words_[word + 1] = static_cast<uint32_t>(bits & 0xFFFFFFFFU);
    }

    std::array<uint32_t, kBytes / sizeof(uint32_t)> words_{};
};

}  // namespace vdevice::driver
