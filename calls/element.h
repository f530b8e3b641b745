/**
 * @file element.h
 * Parameters and struct members as data: the rows of the tables of imported and exported calls.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <span>

namespace exported {
struct Callback;
}

namespace calls {

/** A word is a number or an address; only the driver knows what opaque bytes are. */
enum class Kind : uint8_t { kU8, kU16, kU32, kU64, kI16, kI32, kChar, kWord, kStruct, kCallback, kOpaque };

struct Struct;

/** What octets mean where their type does not say it. */
enum class Octets : uint8_t {
    kPlain,
    kWords,     /**< words of 32 bits */
    kCondition, /**< what a rule's condition of the type beside it matches */
    kRemark     /**< what a remark rule's field beside it matches */
};

/** One element of an argument or of a struct member. */
struct Element {
    Kind kind;
    size_t size;               /**< in this process's memory */
    bool is_ports = false;     /**< the elements together are a port set: bit n of word n / 32 is port n */
    bool is_interface = false; /**< a logical interface number */
    const Struct *layout = nullptr;
    const exported::Callback *callback = nullptr;
    Octets octets = Octets::kPlain;
    uint8_t beside = 0; /**< index of the parameter or member that says what octets mean */
};

inline constexpr Element kWord32 = {Kind::kU32, sizeof(uint32_t)};

struct Field {
    const char *name;
    Element element;
    uint32_t count;
    size_t offset;
    bool is_pointer; /**< the member is the address of elements */
};

struct Struct {
    const char *name;
    size_t size;
    std::span<const Field> fields;
};

enum class Direction : uint8_t { kValue, kIn, kOut, kInOut };

/** The layout of a parameter in memory, where it does not follow from its elements. */
enum class Shape : uint8_t {
    kPlain,       /**< a value, or the address of elements */
    kText,        /**< the address of text that ends with a NUL */
    kFrameRecord, /**< the address of a struct that holds a frame's address and length */
    kList,        /**< the head of a linked list of interface numbers */
    kOutPointer,  /**< the address of a pointer that the call sets */
    kPortsWord,   /**< a word that is the address of a set of ports, or null */
    kMessage      /**< the address of words, the last of which is the address of an event's record, or null */
};

inline constexpr size_t kPortsWords = 8; /**< words of the set of ports whose address is in a word */

inline constexpr int32_t kNotCounted = -1;
inline constexpr uint32_t kNoLimit = UINT32_MAX;

struct Param {
    const char *name;
    Element element;
    Direction direction;
    Shape shape;
    uint32_t extent;             /**< elements that a pointer addresses, unless another parameter counts them */
    int32_t counted_by;          /**< index of the parameter that counts them, or kNotCounted */
    bool counts_16_bits = false; /**< its low 16 bits are the count */
    uint32_t most = kNoLimit;    /**< with a greater count the call reads none */

    [[nodiscard]] bool is_pointer() const { return direction != Direction::kValue; }
    [[nodiscard]] bool is_read() const { return direction != Direction::kOut; }
    [[nodiscard]] bool is_written() const { return direction == Direction::kOut || direction == Direction::kInOut; }
    [[nodiscard]] bool is_text() const { return shape == Shape::kText; }
};

/** The kind of a result. Texts and structs are returned by their address. */
enum class Result : uint8_t { kNothing, kStatus, kI32, kU32, kInterface, kText, kStruct };

/** The address in a result of kind kText or kStruct. */
inline const void *address_of(int64_t result) {
    return reinterpret_cast<const void *>(static_cast<intptr_t>(result));
}

/**
 * The address that a pointer argument holds, or that of a value argument itself; @p argument is the argument's own
 * address, as stubs collect it.
 */
const void *target(const Param &param, const void *argument);

/** The number in an integer element: sign-extended where its type has a sign, a word as wide as this machine's. */
int64_t load(Kind kind, const void *from);

/** Stores a number, cut to the element's width. */
void store(Kind kind, void *to, int64_t value);

}  // namespace calls
