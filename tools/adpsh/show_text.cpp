// Memory as text for people.
#include "tools/adpsh/show.h"

#include "calls/describe.h"

#include <adp/adp.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace adpsh {

using calls::Element;
using calls::Kind;

namespace {

constexpr size_t kMinTrailingZeros = 4;
// Larger words are shown in hexadecimal: they are addresses or patterns.
constexpr int64_t kLargeWord = 0x10000;

std::string interface_text(int64_t number) {
    if (number >> ADP_INTF_TYPE_SHIFT == ADP_INTF_TYPE_AGG) {
        return fmt::format("{:#x} (agg{})", number, number & ADP_INTF_INDEX_MASK);
    }
    return std::to_string(number);
}

std::string number_text(const Element &element, const void *from) {
    const int64_t number = calls::load(element.kind, from);
    if (element.kind == Kind::kU64) {
        return std::to_string(static_cast<uint64_t>(number));
    }
    if (element.kind == Kind::kU32 && number == std::numeric_limits<uint32_t>::max()) {
        return fmt::format("{:#x} (all ones)", number);
    }
    if (element.kind == Kind::kWord && number >= kLargeWord) {
        return fmt::format("{:#x}", static_cast<uintptr_t>(number));
    }
    return element.is_interface ? interface_text(number) : std::to_string(number);
}

std::string callback_text(const Element &element, const void *from) {
    void (*function)();
    std::memcpy(&function, from, sizeof function);
    return function == nullptr ? "none" : function == element.callback->report ? "print" : "set";
}

std::string record_text(const calls::Struct &record, const uint8_t *from) {
    std::string text = "{";
    for (const calls::Field &field : record.fields) {
        const void *address = nullptr;
        if (field.is_pointer) {
            std::memcpy(&address, from + field.offset, sizeof address);
        }
        text += std::string(text.size() == 1 ? "" : " ") + field.name + "=";
        text += field.is_pointer ? (address == nullptr ? "null" : "set")
                                 : text_of(field.element, from + field.offset, field.count);
    }
    return text + "}";
}

bool is_bitmap(const Element &element, size_t count) {
    return element.kind == Kind::kU32 && !element.is_interface && (count == 2 || count == 8);
}

std::string bitmap_text(const uint8_t *from, size_t words) {
    std::string plain;
    for (size_t i = 0; i < words; ++i) {
        plain += fmt::format("{}{:#010x}", i == 0 ? "" : ", ", calls::load(Kind::kU32, from + i * sizeof(uint32_t)));
    }
    return calls::ports_text(from, words) + " = [" + plain + "]";
}

/** Elements in brackets; of many trailing zeros only the number. */
std::string list_text(const Element &element, const uint8_t *from, size_t count) {
    size_t shown = count;
    while (shown > 0 && element.kind != Kind::kStruct &&
           calls::load(element.kind, from + (shown - 1) * element.size) == 0) {
        --shown;
    }
    if (count - shown < kMinTrailingZeros) {
        shown = count;
    }
    std::string text = "[";
    for (size_t i = 0; i < shown; ++i) {
        text += (i == 0 ? "" : ", ") + text_of(element, from + i * element.size, 1);
    }
    if (shown < count) {
        text += fmt::format("{}0 x {}", shown == 0 ? "" : ", ", count - shown);
    }
    return text + "]";
}

/** An address that a call returned, as an offset into the memory of another argument. */
std::string pointer_text(const Slot &slot, const Arguments &arguments) {
    const uint8_t *address = nullptr;
    std::memcpy(&address, slot.storage.data(), sizeof address);
    for (const Slot &other : arguments.slots()) {
        const uint8_t *const begin = other.storage.data();
        if (&other != &slot && address >= begin && address < begin + other.storage.size()) {
            return fmt::format("{}+{}", other.parameter->name, address - begin);
        }
    }
    return address == nullptr ? "null" : "elsewhere";
}

std::string frame_record_text(const Slot &slot) {
    std::string text = "{";
    for (const calls::Field &field : slot.parameter->element.layout->fields) {
        const uint8_t *const at = slot.storage.data() + field.offset;
        text += std::string(text.size() == 1 ? "" : " ") + field.name + "=";
        if (!field.is_pointer) {
            text += text_of(field.element, at, field.count);
            continue;
        }
        const uint8_t *address = nullptr;
        std::memcpy(&address, at, sizeof address);
        if (address == nullptr || slot.pointed == nullptr) {
            text += address == nullptr ? "null" : "set";
        } else if (std::string_view(field.name) == "frame") {
            text += calls::hex_text(slot.pointed->data(), slot.pointed->size());
        } else {
            text += fmt::format("frame+{}", address - slot.pointed->data());
        }
    }
    return text + "}";
}

}  // namespace

std::string text_of(const Element &element, const void *from, size_t count) {
    const auto *const bytes = static_cast<const uint8_t *>(from);
    if (element.kind == Kind::kChar) {
        return '"' + std::string(static_cast<const char *>(from)) + '"';
    }
    if (element.kind == Kind::kU8 && count != 1) {
        return calls::hex_text(bytes, count);
    }
    if (is_bitmap(element, count)) {
        return bitmap_text(bytes, count);
    }
    if (count != 1) {
        return list_text(element, bytes, count);
    }
    if (element.kind == Kind::kStruct) {
        return record_text(*element.layout, bytes);
    }
    return element.kind == Kind::kCallback ? callback_text(element, from) : number_text(element, from);
}

bool is_shown(const Slot &slot) {
    return (slot.parameter->is_written() && !slot.is_null) ||
           (!slot.before.empty() && slot.pointed != nullptr && *slot.pointed != slot.before);
}

std::string text_of(const Slot &slot, const Arguments &arguments) {
    const calls::Param &parameter = *slot.parameter;
    if (!slot.before.empty()) {
        return text_of(calls::kWord32, slot.pointed->data(), slot.pointed->size() / calls::kWord32.size);
    }
    switch (parameter.shape) {
        case calls::Shape::kOutPointer:
            return pointer_text(slot, arguments);
        case calls::Shape::kFrameRecord:
            return frame_record_text(slot);
        default:
            break;
    }
    if (parameter.counted_by == calls::kNotCounted) {
        return text_of(parameter.element, slot.storage.data(), slot.elements);
    }
    // A counted array is a list even if it holds one element, or as many as a bitmap has.
    return parameter.element.kind == Kind::kU8 ? calls::hex_text(slot.storage.data(), slot.elements)
                                               : list_text(parameter.element, slot.storage.data(), slot.elements);
}

std::string text_of(const exported::Call &call, int64_t result) {
    switch (call.result) {
        case calls::Result::kNothing:
            return "done";
        case calls::Result::kStruct:
            return result == 0 ? "null"
                               : record_text(*call.layout, static_cast<const uint8_t *>(calls::address_of(result)));
        case calls::Result::kText:
            return result == 0 ? "null" : text_of({Kind::kChar, 1}, calls::address_of(result), 1);
        case calls::Result::kInterface:
            return interface_text(result);
        default:
            break;
    }
    return std::to_string(result);
}

}  // namespace adpsh
