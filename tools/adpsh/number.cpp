// Numbers and the names that stand for them.
#include "tools/adpsh/convert.h"
#include "tools/adpsh/refusal.h"
#include "tools/adpsh/suggest.h"

#include <adp/adp.h>

#include <charconv>
#include <cstring>
#include <limits>
#include <optional>

namespace adpsh {

namespace {

constexpr int kDecimal = 10;
constexpr int kHexadecimal = 16;
constexpr std::string_view kAggPrefix = "agg";
constexpr std::string_view kAggMacro = "ADP_AGG_INTF(";

/** A number as written: its sign apart from its size, so that all of 64 bits can be said. */
struct Written {
    bool negative;
    uint64_t size;
};

std::optional<uint64_t> digits(std::string_view text) {
    int base = kDecimal;
    if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X") {
        base = kHexadecimal;
        text.remove_prefix(2);
    }
    uint64_t result = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return result;
}

/** agg3 or ADP_AGG_INTF(3). */
std::optional<uint64_t> aggregation_interface(std::string_view text) {
    if (text.substr(0, kAggMacro.size()) == kAggMacro && text.back() == ')') {
        text.remove_prefix(kAggMacro.size());
        text.remove_suffix(1);
    } else if (text.substr(0, kAggPrefix.size()) == kAggPrefix) {
        text.remove_prefix(kAggPrefix.size());
    } else {
        return std::nullopt;
    }
    const auto group = digits(text);
    if (!group || *group > ADP_INTF_INDEX_MASK) {
        return std::nullopt;
    }
    return (ADP_INTF_TYPE_AGG << ADP_INTF_TYPE_SHIFT) | *group;
}

std::optional<Written> read(std::string_view text) {
    if (const Constant *constant = find_constant(text)) {
        const bool negative = constant->value < 0;
        return Written{negative, static_cast<uint64_t>(negative ? -constant->value : constant->value)};
    }
    if (const auto interface = aggregation_interface(text)) {
        return Written{false, *interface};
    }
    const bool negative = text.substr(0, 1) == "-";
    const auto size = digits(text.substr(negative ? 1 : 0));
    return size ? std::optional(Written{negative, *size}) : std::nullopt;
}

/** The widest positive number of a kind: signed kinds take all ones too, so that 0xFFFFFFFF is -1. */
uint64_t limit_of(Kind kind) {
    switch (kind) {
        case Kind::kU8:
            return std::numeric_limits<uint8_t>::max();
        case Kind::kU16:
        case Kind::kI16:
            return std::numeric_limits<uint16_t>::max();
        case Kind::kU64:
            return std::numeric_limits<uint64_t>::max();
        case Kind::kWord:
            return std::numeric_limits<uintptr_t>::max();
        default:
            return std::numeric_limits<uint32_t>::max();
    }
}

template <typename T>
void put(int64_t number, void *to) {
    const auto narrow = static_cast<T>(number);
    std::memcpy(to, &narrow, sizeof narrow);
}

template <typename T>
int64_t take(const void *from) {
    T number;
    std::memcpy(&number, from, sizeof number);
    return static_cast<int64_t>(number);
}

}  // namespace

int64_t number_of(const Value &value, Kind kind) {
    if (value.form != Value::Form::kWord) {
        throw Refusal("a number is wanted, not " + written(value));
    }
    const auto number = read(value.text);
    if (!number) {
        std::vector<std::string_view> names;
        for (const Constant &constant : constants()) {
            names.emplace_back(constant.name);
        }
        throw Refusal("'" + written(value) + "' is neither a number nor the name of one" +
                      did_you_mean(value.text, names));
    }
    const uint64_t limit = limit_of(kind);
    if (number->size > limit || (number->negative && number->size > limit / 2 + 1)) {
        throw Refusal("'" + written(value) + "' is out of range");
    }
    return static_cast<int64_t>(number->negative ? uint64_t{0} - number->size : number->size);
}

void store_number(const Type &type, int64_t number, void *to) {
    switch (type.kind) {
        case Kind::kU8:
            return put<uint8_t>(number, to);
        case Kind::kU16:
        case Kind::kI16:
            return put<uint16_t>(number, to);
        case Kind::kU64:
            return put<int64_t>(number, to);
        case Kind::kWord:
            return put<uintptr_t>(number, to);
        default:
            return put<uint32_t>(number, to);
    }
}

int64_t load_number(const Type &type, const void *from) {
    switch (type.kind) {
        case Kind::kU8:
            return take<uint8_t>(from);
        case Kind::kU16:
            return take<uint16_t>(from);
        case Kind::kI16:
            return take<int16_t>(from);
        case Kind::kU64:
            return take<int64_t>(from);
        case Kind::kWord:
            return take<uintptr_t>(from);
        case Kind::kI32:
            return take<int32_t>(from);
        default:
            return take<uint32_t>(from);
    }
}

}  // namespace adpsh
