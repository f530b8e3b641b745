// The 64-byte record that get_vlan_info() fills: sixteen 32-bit words in host byte order.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vdevice::driver {

class VlanRecord {
  public:
    static constexpr std::size_t kBytes = 64;
    static constexpr std::size_t kVidWord = 0;
    static constexpr std::size_t kMembersWord = 2;  /**< 64-bit bitmap, the more significant word first */
    static constexpr std::size_t kUntaggedWord = 4; /**< likewise */
    static constexpr int kFirstGroupBit = 26;       /**< bit i is user port i, bit 26 + g aggregation group g */

    void set_vid(std::uint32_t vid) { words_[kVidWord] = vid; }
    void set_members(std::uint64_t bits) { set_wide(kMembersWord, bits); }
    void set_untagged(std::uint64_t bits) { set_wide(kUntaggedWord, bits); }

    void copy_to(std::uint8_t *record) const { std::memcpy(record, words_.data(), kBytes); }

  private:
    void set_wide(std::size_t word, std::uint64_t bits) {
        words_[word] = static_cast<std::uint32_t>(bits >> 32);
        words_[word + 1] = static_cast<std::uint32_t>(bits & 0xFFFFFFFFU);
    }

    std::array<std::uint32_t, kBytes / sizeof(std::uint32_t)> words_{};
};

}  // namespace vdevice::driver
