// Netlink messages and their attributes: read with every length checked, and written.
#pragma once

#include <linux/netlink.h>
#include <stddef.h>
#include <stdint.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace switchd::netlink {

using Octets = std::span<const uint8_t>;

/** Headers and attributes are padded to four octets. */
constexpr size_t aligned(size_t length) {
    constexpr size_t kAlignment = 4;
    return (length + kAlignment - 1) / kAlignment * kAlignment;
}

/** The octets after the first @p length, of which there are so many, and their padding. */
inline Octets behind(Octets octets, size_t length) {
    return octets.subspan(std::min(aligned(length), octets.size()));
}

/** Takes the structure off that the octets begin with. It is copied, so they need no alignment. */
template <typename Structure>
std::optional<Structure> take(Octets &octets) {
    static_assert(std::is_trivially_copyable_v<Structure>);
    if (octets.size() < sizeof(Structure)) {
        return std::nullopt;
    }
    Structure structure;
    std::memcpy(&structure, octets.data(), sizeof(structure));
    octets = behind(octets, sizeof(structure));
    return structure;
}

struct Message {
    nlmsghdr header{};
    Octets payload;
};

/** Takes a message off; nothing at the end, or if its length is wrong. */
std::optional<Message> take_message(Octets &octets);

struct Attribute {
    uint16_t type = 0; /**< without the flags for nesting and byte order */
    Octets payload;
};

/** Takes an attribute off; nothing at the end, or if its length is wrong. */
std::optional<Attribute> take_attribute(Octets &octets);

/** A sequence of attributes. One that is missing, or has not the size of what is asked for, gives nothing. */
class Attributes {
  public:
    explicit Attributes(Octets octets) : octets_{octets} {}

    Octets payload(uint16_t type) const;
    Attributes nested(uint16_t type) const { return Attributes{payload(type)}; }
    bool has(uint16_t type) const;
    /** A number of exactly its size. */
    template <typename Number>
    std::optional<Number> number(uint16_t type) const {
        Octets octets = payload(type);
        return octets.size() == sizeof(Number) ? take<Number>(octets) : std::nullopt;
    }
    /** True for any number but 0. */
    bool flag(uint16_t type) const { return number<uint8_t>(type).value_or(0) != 0; }
    /** Up to its first null. */
    std::string text(uint16_t type) const;

    template <typename Visit>
    void each(uint16_t type, const Visit &visit) const {
        Octets rest = octets_;
        while (const auto attribute = take_attribute(rest)) {
            if (attribute->type == type) {
                visit(attribute->payload);
            }
        }
    }

  private:
    Octets octets_;
};

/** Writes requests, one after the other. */
class MessageWriter {
  public:
    /** What is put while the object lives is inside the attribute. */
    class Nested {
      public:
        Nested(MessageWriter &writer, uint16_t type);
        ~Nested();
        Nested(const Nested &) = delete;
        Nested &operator=(const Nested &) = delete;

      private:
        MessageWriter &writer_;
        size_t place_;
    };

    /** Begins a message; those before it are complete. */
    void begin(uint16_t type, uint16_t flags, uint32_t sequence);
    /** The structure that the message, or an attribute, begins with. */
    template <typename Structure>
    void add(const Structure &structure) {
        static_assert(std::is_trivially_copyable_v<Structure>);
        append(&structure, sizeof(structure));
    }
    void put(uint16_t type, Octets payload);
    template <typename Number>
    void put_number(uint16_t type, Number number) {
        static_assert(std::is_integral_v<Number>);
        put_header(type, sizeof(number));
        append(&number, sizeof(number));
    }
    /** With a null at its end. */
    void put_text(uint16_t type, std::string_view text);

    Octets octets() const { return octets_; }
    void clear() { octets_.clear(); }

  private:
    void put_header(uint16_t type, size_t size);
    void append(const void *data, size_t size);

    std::vector<uint8_t> octets_;
    size_t message_ = 0; /**< where the last one begins */
};

}  // namespace switchd::netlink
