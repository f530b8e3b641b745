// Memory as text for people.
#include "tools/adpsh/show.h"

#include <adp/adp.h>

#include <fmt/format.h>

#include <cstring>
#include <limits>

namespace adpsh {

namespace {

constexpr size_t kBitsPerWord = 32;
constexpr size_t kMinTrailingZeros = 4;
// From here on a word reads better in hexadecimal: it is an address or a pattern.
constexpr int64_t kLargeWord = 0x10000;

std::string interface_text(int64_t number) {
    if (number >> ADP_INTF_TYPE_SHIFT == ADP_INTF_TYPE_AGG) {
        return fmt::format("{:#x} (agg{})", number, number & ADP_INTF_INDEX_MASK);
    }
    return std::to_string(number);
}

std::string number_text(const Type &type, const void *from) {
    const int64_t number = load_number(type, from);
    if (type.kind == Kind::kU64) {
        return std::to_string(static_cast<uint64_t>(number));
    }
    if (type.kind == Kind::kU32 && number == std::numeric_limits<uint32_t>::max()) {
        return fmt::format("{:#x} (all ones)", number);
    }
    if (type.kind == Kind::kWord && number >= kLargeWord) {
        return fmt::format("{:#x}", static_cast<uintptr_t>(number));
    }
    return type.is_interface ? interface_text(number) : std::to_string(number);
}

std::string callback_text(const Type &type, const void *from) {
    void (*function)();
    std::memcpy(&function, from, sizeof function);
    return function == nullptr ? "none" : function == type.callback->print ? "print" : "set";
}

std::string record_text(const Record &record, const uint8_t *from) {
    std::string text = "{";
    for (const Field &field : record.fields) {
        const void *address = nullptr;
        if (field.is_pointer) {
            std::memcpy(&address, from + field.offset, sizeof address);
        }
        text += std::string(text.size() == 1 ? "" : " ") + field.name + "=";
        text += field.is_pointer ? (address == nullptr ? "null" : "set")
                                 : text_of(field.type, from + field.offset, field.count);
    }
    return text + "}";
}

bool is_bitmap(const Type &type, size_t count) {
    return type.kind == Kind::kU32 && !type.is_interface && (count == 2 || count == 8);
}

std::string bitmap_text(const uint8_t *from, size_t words) {
    std::string bits;
    std::string plain;
    for (size_t i = 0; i < words; ++i) {
        uint32_t word;
        std::memcpy(&word, from + i * sizeof word, sizeof word);
        plain += fmt::format("{}{:#010x}", i == 0 ? "" : ", ", word);
        for (size_t bit = 0; bit < kBitsPerWord; ++bit) {
            if ((word >> bit & 1U) != 0) {
                bits += (bits.empty() ? "" : ",") + std::to_string(i * kBitsPerWord + bit);
            }
        }
    }
    return "{" + bits + "} = [" + plain + "]";
}

/** Elements in brackets; a long tail of zeros is only counted. */
std::string list_text(const Type &type, const uint8_t *from, size_t count) {
    size_t shown = count;
    while (shown > 0 && type.kind != Kind::kRecord && load_number(type, from + (shown - 1) * type.size) == 0) {
        --shown;
    }
    if (count - shown < kMinTrailingZeros) {
        shown = count;
    }
    std::string text = "[";
    for (size_t i = 0; i < shown; ++i) {
        text += (i == 0 ? "" : ", ") + text_of(type, from + i * type.size, 1);
    }
    if (shown < count) {
        text += fmt::format("{}0 x {}", shown == 0 ? "" : ", ", count - shown);
    }
    return text + "]";
}

/** A block that only the driver knows: as the 64-bit counter or the words that it most likely holds. */
std::string opaque_text(const uint8_t *from, size_t count) {
    if (count == kCounter.size) {
        return number_text(kCounter, from);
    }
    return count % kWord32.size == 0 ? list_text(kWord32, from, count / kWord32.size) : hex_of(from, count);
}

/** The address that a call handed out, told as the place in an argument's memory that it points at. */
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
    for (const Field &field : slot.parameter->type.record->fields) {
        const uint8_t *const at = slot.storage.data() + field.offset;
        text += std::string(text.size() == 1 ? "" : " ") + field.name + "=";
        if (!field.is_pointer) {
            text += text_of(field.type, at, field.count);
            continue;
        }
        const uint8_t *address = nullptr;
        std::memcpy(&address, at, sizeof address);
        if (address == nullptr || slot.pointed == nullptr) {
            text += address == nullptr ? "null" : "set";
        } else if (std::string_view(field.name) == "frame") {
            text += hex_of(slot.pointed->data(), slot.pointed->size());
        } else {
            text += fmt::format("frame+{}", address - slot.pointed->data());
        }
    }
    return text + "}";
}

}  // namespace

std::string hex_of(const uint8_t *bytes, size_t count) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    text.reserve(count * 2);
    for (size_t i = 0; i < count; ++i) {
        text += kDigits[bytes[i] >> 4U];
        text += kDigits[bytes[i] & 0xFU];
    }
    return text;
}

std::string text_of(const Type &type, const void *from, size_t count) {
    const auto *const bytes = static_cast<const uint8_t *>(from);
    if (type.kind == Kind::kText) {
        return '"' + std::string(static_cast<const char *>(from)) + '"';
    }
    if (type.kind == Kind::kOpaque) {
        return opaque_text(bytes, count);
    }
    if (type.kind == Kind::kU8 && count != 1) {
        return hex_of(bytes, count);
    }
    if (is_bitmap(type, count)) {
        return bitmap_text(bytes, count);
    }
    if (count != 1) {
        return list_text(type, bytes, count);
    }
    if (type.kind == Kind::kRecord) {
        return record_text(*type.record, bytes);
    }
    return type.kind == Kind::kCallback ? callback_text(type, from) : number_text(type, from);
}

bool is_shown(const Slot &slot) {
    return (is_output(*slot.parameter) && !slot.is_null) ||
           (!slot.before.empty() && slot.pointed != nullptr && *slot.pointed != slot.before);
}

std::string text_of(const Slot &slot, const Arguments &arguments) {
    const Parameter &parameter = *slot.parameter;
    if (!slot.before.empty()) {
        return text_of(kWord32, slot.pointed->data(), slot.pointed->size() / kWord32.size);
    }
    switch (parameter.shape) {
        case Shape::kOutPointer:
            return pointer_text(slot, arguments);
        case Shape::kFrameRecord:
            return frame_record_text(slot);
        default:
            break;
    }
    if (parameter.counter == kNoCounter || parameter.type.kind == Kind::kOpaque) {
        return text_of(parameter.type, slot.storage.data(), slot.elements);
    }
    // A counted array is a list even if it holds one element, or as many as a bitmap has.
    return parameter.type.kind == Kind::kU8 ? hex_of(slot.storage.data(), slot.elements)
                                            : list_text(parameter.type, slot.storage.data(), slot.elements);
}

std::string text_of(const Call &call, const Result &result) {
    switch (call.result) {
        case ResultKind::kNone:
            return "done";
        case ResultKind::kRecord:
            return result.address == nullptr ? "null"
                                             : record_text(*call.record, static_cast<const uint8_t *>(result.address));
        case ResultKind::kText:
            return result.address == nullptr ? "null" : text_of({Kind::kText, 1}, result.address, 1);
        case ResultKind::kInterface:
            return interface_text(result.number);
        default:
            break;
    }
    std::string number = std::to_string(result.number);
    if (call.result != ResultKind::kStatus) {
        return number;
    }
    const Constant *const status = find_status(result.number);
    if (status == nullptr) {
        return number;
    }
    const std::string_view remark = status->doc;
    return result.number == 0 ? number + " (" + std::string(remark) + ")"
                              : fmt::format("{} ({}: {})", number, status->name, remark);
}

}  // namespace adpsh
