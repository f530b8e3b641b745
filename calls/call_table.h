/**
 * @file call_table.h
 * The imported calls as data: whatever records, describes or carries a call walks this table.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <optional>
#include <span>
#include <string_view>

#include "generated/call_id.h"

namespace calls {

enum class Kind : uint8_t { U8, U16, U32, U64, I32, Char, Word, Struct };
enum class Direction : uint8_t { Value, In, Out, InOut };
enum class Result : uint8_t { I32, U32, Text, Nothing };

struct Struct;

/** What one element of an argument or of a struct member is. */
struct Element {
    Kind kind;
    bool is_ports;        /**< the elements together are a port set: bit n of word n / 32 is port n */
    const Struct *layout; /**< of a struct, else null */
};

struct Field {
    const char *name;
    Element element;
    uint32_t count;
    size_t offset;
};

struct Struct {
    const char *name;
    size_t size;
    std::span<const Field> fields;
};

inline constexpr int32_t kNotCounted = -1;

struct Param {
    const char *name;
    Element element;
    Direction direction;
    bool is_text;       /**< the pointer addresses text that ends with a NUL */
    uint32_t extent;    /**< elements behind the pointer, unless another parameter counts them */
    int32_t counted_by; /**< index of the parameter that counts them, or kNotCounted */

    [[nodiscard]] bool is_pointer() const { return direction != Direction::Value; }
    [[nodiscard]] bool is_read() const { return direction != Direction::Out; }
    [[nodiscard]] bool is_written() const { return direction == Direction::Out || direction == Direction::InOut; }
};

struct Call {
    const char *name;
    Result result;
    std::span<const Param> params;
};

/** All imported calls; the position in the table is the CallId. */
std::span<const Call> calls();

inline const Call &call(CallId id) {
    return calls()[static_cast<size_t>(id)];
}

std::optional<CallId> find_call(std::string_view name);

/** Index of the parameter with this name. */
std::optional<size_t> find_param(const Call &call, std::string_view name);

/** Bytes that one element takes in this process's memory. */
size_t element_size(const Element &element);

/**
 * The address that a pointer argument holds, or that of a value argument itself; @p argument is the argument's own
 * address, as stubs collect it.
 */
const void *target(const Param &param, const void *argument);

/** Elements behind parameter @p index in a call with these arguments; a negative count is none. */
size_t extent(const Call &call, size_t index, const void *const *arguments);

/** Numbers in the record that an event-queue message addresses with its last word; each has 16 bits. */
inline constexpr size_t kEventRecordNumbers = 4;

/** True for the event-queue message: its last word is the address of a record that goes with it. */
bool is_event_message(const Call &call, const Param &param);

/** The number in an integer element: sign-extended where its type has a sign, a word as wide as this machine's. */
int64_t load(Kind kind, const void *from);

/** Stores a number, cut to the element's width. */
void store(Kind kind, void *to, int64_t value);

}  // namespace calls
