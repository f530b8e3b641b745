// Converts words, lists, sets and records into bytes.
#include "tools/adpsh/convert.h"

#include "text/suggest.h"
#include "tools/adpsh/line_error.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstring>
#include <utility>

namespace adpsh {

using calls::Element;
using calls::Kind;

namespace {

constexpr int kHexadecimalBase = 16;
constexpr size_t kBitsPerWord = 32;

Bytes hexadecimal(std::string_view text, const Value &value) {
    if (text.substr(0, 2) == "0x") {
        text.remove_prefix(2);
    }
    Bytes result;
    while (!text.empty()) {
        if (text.front() == ':' && !result.empty()) {
            text.remove_prefix(1);
        }
        uint8_t byte = 0;
        const std::string_view pair = text.substr(0, 2);
        const auto [end, error] = std::from_chars(pair.data(), pair.data() + pair.size(), byte, kHexadecimalBase);
        if (pair.size() < 2 || error != std::errc() || end != pair.data() + pair.size()) {
            throw LineError("'" + written(value) + "' is not a byte string: expected pairs of hexadecimal digits");
        }
        result.push_back(byte);
        text.remove_prefix(pair.size());
    }
    return result;
}

size_t bit_of(const Value &value, size_t bits) {
    const int64_t bit = number_of(value, Kind::kU32);
    if (bit < 0 || static_cast<size_t>(bit) >= bits) {
        throw LineError("a set of " + std::to_string(bits) + " has no bit " + written(value));
    }
    return static_cast<size_t>(bit);
}

/** First and last bit of an item of a set: 5, or 5-8. */
std::pair<size_t, size_t> range_of(const Value &value, size_t bits) {
    // A minus at the start is a sign.
    const size_t dash = value.form == Value::Form::kWord ? value.text.find('-', 1) : std::string::npos;
    if (dash == std::string::npos) {
        const size_t bit = bit_of(value, bits);
        return {bit, bit};
    }
    const size_t first = bit_of({Value::Form::kWord, value.text.substr(0, dash), {}}, bits);
    const size_t last = bit_of({Value::Form::kWord, value.text.substr(dash + 1), {}}, bits);
    if (last < first) {
        throw LineError("the range " + written(value) + " ends before it begins");
    }
    return {first, last};
}

/** A bitmap, written as the numbers of its bits. */
Bytes bit_set(const Value &value, size_t words) {
    std::vector<uint32_t> bits(words);
    for (const Argument &item : value.items) {
        if (!item.name.empty()) {
            throw LineError("expected a set {1, 5-8} of numbers, not " + written(value));
        }
        const auto [first, last] = range_of(item.value, words * kBitsPerWord);
        for (size_t bit = first; bit <= last; ++bit) {
            bits[bit / kBitsPerWord] |= 1U << (bit % kBitsPerWord);
        }
    }
    Bytes result(words * sizeof(uint32_t));
    std::memcpy(result.data(), bits.data(), result.size());
    return result;
}

/** A number, null, or the address of a set or of words that live as long as the call. */
uintptr_t word_of(const Value &value, Context &context) {
    if (is_null(value)) {
        return 0;
    }
    if (value.form == Value::Form::kBraces) {
        context.blocks.push_back(bit_set(value, kPortSetWords));
    } else if (value.form == Value::Form::kList) {
        Bytes words = array_of(calls::kWord32, value, 0, context);
        check_count(words.size() / calls::kWord32.size, kWordListBytes / calls::kWord32.size);
        words.resize(kWordListBytes);
        context.blocks.push_back(std::move(words));
    } else {
        return static_cast<uintptr_t>(number_of(value, Kind::kWord));
    }
    return reinterpret_cast<uintptr_t>(context.blocks.back().data());
}

void store_field(const calls::Field &field, const Value &value, uint8_t *record, Context &context) {
    if (field.is_pointer) {
        throw LineError("an address cannot be set");
    }
    if (field.count == 1) {
        return store_element(field.element, value, record + field.offset, context);
    }
    const Bytes bytes = array_of(field.element, value, field.element.kind == Kind::kU32 ? field.count : 0, context);
    check_count(bytes.size() / field.element.size, field.count);
    std::copy(bytes.begin(), bytes.end(), record + field.offset);
}

void store_record(const calls::Struct &record, const Value &value, void *to, Context &context) {
    if (value.form != Value::Form::kBraces) {
        throw LineError("expected a record {field=value ...}, not " + written(value));
    }
    auto *bytes = static_cast<uint8_t *>(to);
    std::memset(to, 0, record.size);
    const bool plain =
        std::all_of(value.items.begin(), value.items.end(), [](const Argument &item) { return item.name.empty(); });
    if (plain && record.fields.size() == 1 && record.fields.front().count > 1) {
        return store_field(record.fields.front(), value, bytes, context);  // the record's only member, written as a set
    }
    for (const Argument &item : value.items) {
        const auto field = std::find_if(record.fields.begin(), record.fields.end(),
                                        [&item](const calls::Field &each) { return each.name == item.name; });
        if (field == record.fields.end()) {
            std::vector<std::string_view> names;
            for (const calls::Field &each : record.fields) {
                names.emplace_back(each.name);
            }
            throw LineError(item.name.empty() ? "'" + written(item.value) + "' has no field name"
                                              : std::string(record.name) + " has no field '" + item.name + "'" +
                                                    text::did_you_mean(item.name, names));
        }
        try {
            store_field(*field, item.value, bytes, context);
        } catch (const LineError &error) {
            throw LineError("field '" + item.name + "': " + error.what());
        }
    }
}

}  // namespace

void check_count(size_t elements, size_t limit) {
    if (elements > limit) {
        throw LineError("expected at most " + std::to_string(limit) + " elements, got " + std::to_string(elements));
    }
}

bool is_null(const Value &value) {
    return value.form == Value::Form::kWord && value.text == "null";
}

Bytes bytes_of(const Value &value, const Variables &variables) {
    if (value.form == Value::Form::kList) {
        Bytes result;
        for (const Argument &item : value.items) {
            result.push_back(static_cast<uint8_t>(number_of(item.value, Kind::kU8)));
        }
        check_count(result.size(), kMaxElements);
        return result;
    }
    if (value.form != Value::Form::kWord) {
        throw LineError("expected a byte string like 0180c2000000, not " + written(value));
    }
    if (value.text.substr(0, 1) == "$") {
        const auto variable = variables.find(std::string_view(value.text).substr(1));
        if (variable == variables.end()) {
            throw LineError("unknown variable " + written(value) + " (see set, wait_frame)");
        }
        return variable->second;
    }
    Bytes result = hexadecimal(value.text, value);
    check_count(result.size(), kMaxElements);
    return result;
}

void store_element(const Element &element, const Value &value, void *to, Context &context) {
    if (element.kind == Kind::kStruct) {
        return store_record(*element.layout, value, to, context);
    }
    if (element.kind == Kind::kWord) {
        const uintptr_t word = word_of(value, context);
        std::memcpy(to, &word, sizeof word);
        return;
    }
    calls::store(element.kind, to, number_of(value, element.kind));
}

Bytes array_of(const Element &element, const Value &value, size_t words, Context &context) {
    if (element.kind == Kind::kU8 || element.kind == Kind::kOpaque) {
        return bytes_of(value, context.variables);
    }
    if (words != 0 && value.form == Value::Form::kBraces) {
        return bit_set(value, words);
    }
    if (value.form != Value::Form::kList) {
        throw LineError("expected a list [a, b], not " + written(value));
    }
    check_count(value.items.size(), kMaxElements);
    Bytes result(value.items.size() * element.size);
    for (size_t i = 0; i < value.items.size(); ++i) {
        store_element(element, value.items[i].value, result.data() + i * element.size, context);
    }
    return result;
}

}  // namespace adpsh
