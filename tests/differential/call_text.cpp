// Calls as lines.
#include "tests/differential/call_text.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "calls/describe.h"
#include "tests/support/trace_text.h"

namespace differential {
namespace {

using calls::Element;
using calls::Field;
using calls::Kind;
using calls::Shape;

/** For the trace what a call leaves in a record's blocks is shown without an order of bytes. */
enum class Style { kScript, kTrace, kTraceAfter };

constexpr size_t kMacBytes = 6;

template <typename T>
T load(const void *from) {
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

std::string record_text(const calls::Struct &record, const uint8_t *at, Style style);

std::string element_text(const Element &type, const uint8_t *at, Style style) {
    return type.kind == Kind::kStruct ? record_text(*type.layout, at, style) : calls::number_text(type.kind, at);
}

std::string array_text(const Element &type, const uint8_t *at, size_t count, Style style) {
    if (type.kind == Kind::kU8) {
        return count == 0 ? "[]" : calls::hex_text(at, count);
    }
    std::string text = "[";
    for (size_t n = 0; n < count; ++n) {
        text += (n == 0 ? "" : ", ") + element_text(type, at + n * type.size, style);
    }
    return text + "]";
}

bool is_zero(const uint8_t *at, size_t size) {
    for (size_t n = 0; n < size; ++n) {
        if (at[n] != 0) {
            return false;
        }
    }
    return true;
}

/** Fields of bytes that hold words of the machine, unless the element's type says that they are an address. */
bool holds_words(const calls::Struct &record, const Field &field, const uint8_t *at) {
    const std::string_view name = record.name;
    const bool is_byte_qualifier = name == "FpQualify" && load<uint32_t>(at) < 9;
    return (name == "FpQualify" || name == "FpAction") && field.element.kind == Kind::kU8 && !is_byte_qualifier;
}

/** The bytes of each word by size: a block may hold words, bytes and parts of words. */
std::string sorted_words(const uint8_t *at, size_t size) {
    std::vector<uint8_t> bytes(at, at + size);
    for (auto word = bytes.begin(); word != bytes.end(); word += sizeof(uint32_t)) {
        std::sort(word, word + sizeof(uint32_t));
    }
    return calls::hex_text(bytes.data(), bytes.size());
}

/** Only what is not zero: the rest is zero by itself. */
std::string record_text(const calls::Struct &record, const uint8_t *at, Style style) {
    std::string text = "{";
    for (const Field &field : record.fields) {
        size_t count = field.count;
        const uint8_t *from = at + field.offset;
        if (field.is_pointer || is_zero(from, count * field.element.size)) {
            continue;
        }
        // An array may be cut short, unless it is one of bytes.
        while (field.element.kind == Kind::kStruct &&
               is_zero(from + (count - 1) * field.element.size, field.element.size)) {
            --count;
        }
        text += (text == "{" ? "" : " ") + std::string(field.name) + "=";
        if (style == Style::kTraceAfter && field.element.kind == Kind::kU8 && field.count > kMacBytes) {
            text += sorted_words(from, count);
        } else if (style == Style::kTrace && holds_words(record, field, at)) {
            text += trace_text::words(from, count);
        } else {
            text += field.count == 1 ? element_text(field.element, from, style)
                                     : array_text(field.element, from, count, style);
        }
    }
    return text + "}";
}

/** Addresses in a frame record, written as offsets. */
std::string frame_record_text(const Slot &slot) {
    std::string text = "{";
    for (const Field &field : slot.parameter->element.layout->fields) {
        const uint8_t *from = slot.data() + field.offset;
        text += (text == "{" ? "" : " ") + std::string(field.name) + "=";
        if (!field.is_pointer) {
            text += calls::number_text(field.element.kind, from);
        } else if (const auto *address = load<const uint8_t *>(from); address == nullptr) {
            text += "null";
        } else if (std::string_view(field.name) == "frame") {
            text += slot.pointed.empty() ? "[]" : calls::hex_text(slot.pointed.data(), slot.pointed.size());
        } else {
            text += std::to_string(address - slot.pointed.data());
        }
    }
    return text + "}";
}

std::string list_text(const Slot &slot) {
    std::string text = "[";
    for (const adp_tx_dest_t &node : slot.nodes) {
        text += (text == "[" ? "" : ", ") + std::to_string(node.intf);
    }
    return text + "]";
}

std::string value_text(const Slot &slot, Style style) {
    const Element &type = slot.parameter->element;
    if (type.kind == Kind::kCallback) {
        return load<void (*)()>(slot.data()) == nullptr ? "none" : "print";
    }
    if (!slot.pointed.empty()) {
        return load<uintptr_t>(slot.data()) == 0
                   ? "null"
                   : calls::ports_text(slot.pointed.data(), slot.pointed.size() / sizeof(uint32_t));
    }
    return element_text(type, slot.data(), style);
}

std::string memory_text(const Slot &slot, Style style) {
    const Element &type = slot.parameter->element;
    if (slot.is_null) {
        return "null";
    }
    if (slot.parameter->shape == Shape::kList) {
        return list_text(slot);
    }
    if (slot.parameter->shape == Shape::kFrameRecord) {
        return frame_record_text(slot);
    }
    if (slot.parameter->is_text()) {
        return '"' + std::string(reinterpret_cast<const char *>(slot.data())) + '"';
    }
    if (type.kind == Kind::kOpaque) {
        return slot.elements == 0 ? "[]" : calls::hex_text(slot.data(), slot.elements);
    }
    const bool is_one = slot.parameter->counted_by == calls::kNotCounted && slot.elements == 1;
    return is_one && type.size > 1 ? element_text(type, slot.data(), style)
                                   : array_text(type, slot.data(), slot.elements, style);
}

std::string line(const Arguments &arguments, Style style) {
    std::string text = arguments.call().name;
    for (const Slot &slot : arguments.slots()) {
        const bool is_value = slot.parameter->direction == calls::Direction::kValue;
        if (slot.parameter->is_read()) {
            text += " " + (is_value ? value_text(slot, style) : memory_text(slot, style));
        }
    }
    return text;
}

}  // namespace

std::string script_line(const Arguments &arguments) {
    return line(arguments, Style::kScript);
}

std::string trace_line(const Arguments &arguments) {
    return line(arguments, Style::kTrace);
}

std::string outputs_text(const Arguments &arguments) {
    std::string text;
    for (const Slot &slot : arguments.slots()) {
        if (!slot.parameter->is_written() || slot.is_null) {
            continue;
        }
        text += " " + std::string(slot.parameter->name) + "=";
        if (slot.parameter->shape == Shape::kOutPointer) {
            const auto *address = load<const uint8_t *>(slot.data());
            text += address == nullptr ? "null" : std::to_string(address - arguments.slots()[0].data());
        } else {
            text += memory_text(slot, Style::kTraceAfter);
        }
    }
    return text;
}

}  // namespace differential
