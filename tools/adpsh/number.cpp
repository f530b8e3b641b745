// Numbers, constants and names of interfaces.
#include "calls/exported.h"
#include "text/suggest.h"
#include "tools/adpsh/convert.h"
#include "tools/adpsh/line_error.h"

#include <adp/adp.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

namespace adpsh {

using calls::Kind;

namespace {

constexpr int kDecimal = 10;
constexpr int kHexadecimal = 16;
constexpr std::string_view kAggPrefix = "agg";
constexpr std::string_view kAggMacro = "ADP_AGG_INTF(";

/** A number as written: sign and magnitude, so that all 64-bit numbers fit. */
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

std::optional<Written> read_one(std::string_view text) {
    if (const exported::Constant *constant = exported::find_constant(text)) {
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

/** Flags joined by |, or a single number. */
std::optional<Written> read(std::string_view text) {
    const size_t bar = text.find('|');
    std::optional<Written> number = read_one(text.substr(0, bar));
    if (bar == std::string_view::npos || !number) {
        return number;
    }
    for (text.remove_prefix(bar); number && !text.empty();
         text.remove_prefix(std::min(text.find('|', 1), text.size()))) {
        const auto flags = read_one(text.substr(1, text.find('|', 1) - 1));
        const bool are_flags = flags && !flags->negative && !number->negative;
        number = are_flags ? std::optional(Written{false, number->size | flags->size}) : std::nullopt;
    }
    return number;
}

/** The largest number of a kind. Signed kinds take the unsigned range too, so that 0xFFFFFFFF is -1. */
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

}  // namespace

int64_t number_of(const Value &value, Kind kind) {
    if (value.form != Value::Form::kWord) {
        throw LineError("expected a number, not " + written(value));
    }
    const auto number = read(value.text);
    if (!number) {
        std::vector<std::string_view> names;
        for (const exported::Constant &constant : exported::constants()) {
            names.emplace_back(constant.name);
        }
        throw LineError("'" + written(value) + "' is neither a number nor a constant" +
                        text::did_you_mean(value.text, names));
    }
    const uint64_t limit = limit_of(kind);
    if (number->size > limit || (number->negative && number->size > limit / 2 + 1)) {
        throw LineError("'" + written(value) + "' is out of range");
    }
    return static_cast<int64_t>(number->negative ? uint64_t{0} - number->size : number->size);
}

}  // namespace adpsh
