// Writes values as JSON. Numbers are loaded element by element, so that the text does not depend on byte order.
#include "calls/json_value.h"

#include <charconv>
#include <cstring>

namespace calls {
namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";
constexpr unsigned kNibbleBits = 4;
constexpr unsigned kNibbleMask = 0xF;
constexpr size_t kWordBits = 32;

template <typename T>
void append_digits(std::string &text, T number) {
    constexpr size_t kMostDigits = 20;
    char digits[kMostDigits];
    const auto [end, error] = std::to_chars(digits, digits + kMostDigits, number);
    text.append(digits, end);
}

void append_number(std::string &text, Kind kind, const void *at) {
    const int64_t number = load(kind, at);
    if (kind == Kind::kI16 || kind == Kind::kI32) {
        append_signed(text, number);
    } else {
        append_unsigned(text, kind == Kind::kWord ? static_cast<uintptr_t>(number) : static_cast<uint64_t>(number));
    }
}

void append_hex(std::string &text, uint8_t octet) {
    text += kHexDigits[octet >> kNibbleBits];
    text += kHexDigits[octet & kNibbleMask];
}

void append_char(std::string &text, char character) {
    const auto octet = static_cast<uint8_t>(character);
    if (octet < ' ' || octet > '~') {
        text += "\\u00";
        append_hex(text, octet);
        return;
    }
    if (character == '"' || character == '\\') {
        text += '\\';
    }
    text += character;
}

void append_ports(std::string &text, const void *at, size_t words) {
    char separator = '[';
    for (size_t word = 0; word < words; ++word) {
        uint32_t bits = 0;
        std::memcpy(&bits, byte_at(at, word * sizeof bits), sizeof bits);
        for (size_t bit = 0; bits != 0; ++bit, bits >>= 1) {
            if ((bits & 1) != 0) {
                text += separator;
                separator = ',';
                append_unsigned(text, word * kWordBits + bit);
            }
        }
    }
    text += separator == '[' ? "[]" : "]";
}

void append_address(std::string &text, const void *address) {
    text += address == nullptr ? "null" : "\"set\"";
}

void append_element(std::string &text, const Element &element, const void *at) {
    if (element.kind == Kind::kStruct) {
        append_struct(text, *element.layout, at);
    } else if (element.kind == Kind::kCallback) {
        const void *address = nullptr;
        std::memcpy(&address, at, sizeof address);
        append_address(text, address);
    } else {
        append_number(text, element.kind, at);
    }
}

}  // namespace

size_t used_octets(const void *at, size_t size) {
    // Most of a rule's record is zeros.
    constexpr size_t kStep = 64;
    static constexpr uint8_t kZeros[kStep] = {};
    while (size >= kStep && std::memcmp(byte_at(at, size - kStep), kZeros, kStep) == 0) {
        size -= kStep;
    }
    while (size > 0 && *byte_at(at, size - 1) == 0) {
        --size;
    }
    return size;
}

void append_unsigned(std::string &text, uint64_t number) {
    append_digits(text, number);
}

void append_signed(std::string &text, int64_t number) {
    append_digits(text, number);
}

void append_chars(std::string &text, const char *chars, size_t most) {
    text += '"';
    for (size_t index = 0; index < most && chars[index] != '\0'; ++index) {
        append_char(text, chars[index]);
    }
    text += '"';
}

void append_octets(std::string &text, const void *at, size_t count) {
    text += '"';
    const size_t used = used_octets(at, count);
    for (size_t index = 0; index < used; ++index) {
        append_hex(text, *byte_at(at, index));
    }
    text += '"';
}

void append_array(std::string &text, const Element &element, const void *at, size_t count) {
    const size_t used = (used_octets(at, count * element.size) + element.size - 1) / element.size;
    text += '[';
    for (size_t index = 0; index < used; ++index) {
        if (index > 0) {
            text += ',';
        }
        append_element(text, element, byte_at(at, index * element.size));
    }
    text += ']';
}

void append_block(std::string &text, const Form &form, const void *at) {
    switch (form.kind) {
        case Form::Kind::kOne:
            return append_element(text, *form.element, at);
        case Form::Kind::kArray:
            return append_array(text, *form.element, at, form.count);
        case Form::Kind::kOctets:
            return append_octets(text, at, form.count);
        case Form::Kind::kText:
            return append_chars(text, static_cast<const char *>(at), form.count);
        case Form::Kind::kPorts:
            return append_ports(text, at, form.count);
    }
}

void append_struct(std::string &text, const Struct &layout, const void *record) {
    text += '{';
    for (const Field &field : layout.fields) {
        append_name(text, &field == layout.fields.data(), field.name);
        if (field.is_pointer) {
            append_address(text, address_in(field, record));
        } else {
            append_block(text, form_of(layout, field, record), byte_at(record, field.offset));
        }
    }
    text += '}';
}

void append_name(std::string &text, bool is_first, const char *name) {
    text += is_first ? "\"" : ",\"";
    text += name;
    text += "\":";
}

}  // namespace calls
