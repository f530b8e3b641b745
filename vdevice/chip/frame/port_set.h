// A set of chip ports, 256 wide like the port bitmaps of the driver calls: bit n of word n / 32 is port n.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <bit>

namespace vdevice::chip {

class PortSet {
  public:
    static constexpr size_t kWords = 8; /**< of the driver calls' bitmaps */
    static constexpr int kWordBits = 32;
    static constexpr int kSize = static_cast<int>(kWords) * kWordBits;

    constexpr PortSet() = default;

    static constexpr PortSet of(int port) {
        PortSet set;
        set.add(port);
        return set;
    }

    /** Ports first, first + 1, ... last. */
    static constexpr PortSet range(int first, int last) {
        PortSet set;
        for (int port = first; port <= last; ++port) {
            set.add(port);
        }
        return set;
    }

    /** Every port that a set can hold. */
    static constexpr PortSet all() { return range(0, kSize - 1); }

    static constexpr PortSet from_words(const uint32_t *words) {
        PortSet set;
        for (size_t i = 0; i < kBlocks; ++i) {
            set.blocks_[i] = uint64_t{words[2 * i + 1]} << kWordBits | words[2 * i];
        }
        return set;
    }

    constexpr void to_words(uint32_t *words) const {
        for (size_t i = 0; i < kBlocks; ++i) {
            words[2 * i] = static_cast<uint32_t>(blocks_[i]);
            words[2 * i + 1] = static_cast<uint32_t>(blocks_[i] >> kWordBits);
        }
    }

    /** False for every number outside the set's width, so that no caller need check first. */
    constexpr bool has(int port) const { return fits(port) && (blocks_[block_of(port)] & bit_of(port)) != 0; }

    constexpr PortSet &add(int port) {
        if (fits(port)) {
            blocks_[block_of(port)] |= bit_of(port);
        }
        return *this;
    }

    constexpr PortSet &remove(int port) {
        if (fits(port)) {
            blocks_[block_of(port)] &= ~bit_of(port);
        }
        return *this;
    }

    constexpr PortSet &put(int port, bool is_member) { return is_member ? add(port) : remove(port); }

    constexpr bool empty() const {
        uint64_t any = 0;
        for (const uint64_t block : blocks_) {
            any |= block;
        }
        return any == 0;
    }

    constexpr int size() const {
        int count = 0;
        for (const uint64_t block : blocks_) {
            count += std::popcount(block);
        }
        return count;
    }

    constexpr bool is_within(const PortSet &other) const { return (*this - other).empty(); }

    /** Calls visit(port) for each port of the set, lowest first. */
    template <typename Visit>
    constexpr void for_each(Visit visit) const {
        for (size_t i = 0; i < kBlocks; ++i) {
            for (uint64_t rest = blocks_[i]; rest != 0; rest &= rest - 1) {
                visit(static_cast<int>(i) * kBlockBits + std::countr_zero(rest));
            }
        }
    }

    constexpr PortSet &operator|=(const PortSet &other) {
        return combine(other, [](auto a, auto b) { return a | b; });
    }
    constexpr PortSet &operator&=(const PortSet &other) {
        return combine(other, [](auto a, auto b) { return a & b; });
    }
    constexpr PortSet &operator-=(const PortSet &other) {
        return combine(other, [](auto a, auto b) { return a & ~b; });
    }
    friend constexpr PortSet operator|(PortSet a, const PortSet &b) { return a |= b; }
    friend constexpr PortSet operator&(PortSet a, const PortSet &b) { return a &= b; }
    friend constexpr PortSet operator-(PortSet a, const PortSet &b) { return a -= b; }
    friend constexpr bool operator==(const PortSet &a, const PortSet &b) { return a.blocks_ == b.blocks_; }

  private:
    static constexpr int kBlockBits = 64; /**< sets are put together in wider steps than the calls have them */
    static constexpr size_t kBlocks = kSize / kBlockBits;

    static constexpr bool fits(int port) { return port >= 0 && port < kSize; }
    static constexpr size_t block_of(int port) { return static_cast<size_t>(port / kBlockBits); }
    static constexpr uint64_t bit_of(int port) { return uint64_t{1} << (port % kBlockBits); }

    template <typename Operation>
    constexpr PortSet &combine(const PortSet &other, Operation operation) {
        for (size_t i = 0; i < kBlocks; ++i) {
            blocks_[i] = operation(blocks_[i], other.blocks_[i]);
        }
        return *this;
    }

    std::array<uint64_t, kBlocks> blocks_{};
};

}  // namespace vdevice::chip
