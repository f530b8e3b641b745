// A set of chip ports, 256 wide like the port bitmaps of the driver calls: bit n of word n / 32 is port n.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace vdevice::chip {

class PortSet {
  public:
    static constexpr std::size_t kWords = 8;
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

    static constexpr PortSet from_words(const std::uint32_t *words) {
        PortSet set;
        for (std::size_t i = 0; i < kWords; ++i) {
            set.words_[i] = words[i];
        }
        return set;
    }

    constexpr void to_words(std::uint32_t *words) const {
        for (std::size_t i = 0; i < kWords; ++i) {
            words[i] = words_[i];
        }
    }

    /** False for every number outside the set's width, so that no caller need check first. */
    constexpr bool has(int port) const { return fits(port) && (words_[word_of(port)] & bit_of(port)) != 0; }

    constexpr PortSet &add(int port) {
        if (fits(port)) {
            words_[word_of(port)] |= bit_of(port);
        }
        return *this;
    }

    constexpr PortSet &remove(int port) {
        if (fits(port)) {
            words_[word_of(port)] &= ~bit_of(port);
        }
        return *this;
    }

    constexpr PortSet &put(int port, bool is_member) { return is_member ? add(port) : remove(port); }

    constexpr bool empty() const {
        std::uint32_t any = 0;
        for (const std::uint32_t word : words_) {
            any |= word;
        }
        return any == 0;
    }

    constexpr int size() const {
        int count = 0;
        for (const std::uint32_t word : words_) {
            count += std::popcount(word);
        }
        return count;
    }

    constexpr bool is_within(const PortSet &other) const { return (*this - other).empty(); }

    /** Calls visit(port) for each port of the set, lowest first. */
    template <typename Visit>
    constexpr void for_each(Visit visit) const {
        for (std::size_t i = 0; i < kWords; ++i) {
            for (std::uint32_t rest = words_[i]; rest != 0; rest &= rest - 1) {
                visit(static_cast<int>(i) * kWordBits + std::countr_zero(rest));
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
    friend constexpr bool operator==(const PortSet &a, const PortSet &b) { return a.words_ == b.words_; }

  private:
    static constexpr bool fits(int port) { return port >= 0 && port < kSize; }
    static constexpr std::size_t word_of(int port) { return static_cast<std::size_t>(port / kWordBits); }
    static constexpr std::uint32_t bit_of(int port) { return std::uint32_t{1} << (port % kWordBits); }

    template <typename Operation>
    constexpr PortSet &combine(const PortSet &other, Operation operation) {
        for (std::size_t i = 0; i < kWords; ++i) {
            words_[i] = operation(words_[i], other.words_[i]);
        }
        return *this;
    }

    std::array<std::uint32_t, kWords> words_{};
};

}  // namespace vdevice::chip
