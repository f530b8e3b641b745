// Reads values from JSON, which is mistrusted.
#include "calls/json_read.h"

#include <charconv>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>

#include "calls/exported.h"
#include "calls/json_memory.h"

namespace calls {
namespace {

using Json = nlohmann::json;

constexpr size_t kWordBits = 32;
constexpr int kHexadecimal = 16;

template <typename T>
int64_t read_signed(const Json &value) {
    using Limits = std::numeric_limits<T>;
    const bool fits = value.is_number_integer() && (!value.is_number_unsigned() || value.get<uint64_t>() <= INT64_MAX);
    if (!fits || value.get<int64_t>() < Limits::min() || value.get<int64_t>() > Limits::max()) {
        throw BadValue("is not a number from " + std::to_string(Limits::min()) + " to " +
                       std::to_string(Limits::max()));
    }
    return value.get<int64_t>();
}

/** A word of a machine with longer ones is cut, as it is on its way to the driver. */
uint64_t most_of(Kind kind) {
    switch (kind) {
        case Kind::kU64:
        case Kind::kWord:
            return UINT64_MAX;
        case Kind::kU32:
            return UINT32_MAX;
        case Kind::kU16:
            return UINT16_MAX;
        default:
            return UINT8_MAX;
    }
}

void read_number(const Json &value, Kind kind, uint8_t *to) {
    if (kind == Kind::kI16) {
        store(kind, to, read_signed<int16_t>(value));
    } else if (kind == Kind::kI32) {
        store(kind, to, read_signed<int32_t>(value));
    } else {
        store(kind, to, static_cast<int64_t>(read_unsigned(value, most_of(kind))));
    }
}

void read_callback(const Json &value, const Element &element, uint8_t *to) {
    const bool is_set = value.is_string() && value.get_ref<const std::string &>() == "set";
    if (!is_set && !value.is_null()) {
        throw BadValue("is neither \"set\" nor null");
    }
    void (*const function)() = is_set ? element.callback->report : nullptr;
    std::memcpy(to, &function, sizeof function);
}

void read_element(const Json &value, const Element &element, uint8_t *to) {
    if (element.kind == Kind::kStruct) {
        read_struct(value, *element.layout, to);
    } else if (element.kind == Kind::kCallback) {
        read_callback(value, element, to);
    } else {
        read_number(value, element.kind, to);
    }
}

void read_ports(const Json &value, uint8_t *to, size_t words) {
    const size_t ports = words * kWordBits;
    for (const Json &port : array_of(value, ports)) {
        const auto number = static_cast<size_t>(read_unsigned(port, ports - 1));
        uint8_t *word = to + number / kWordBits * sizeof(uint32_t);
        store(Kind::kU32, word, load(Kind::kU32, word) | int64_t{1} << (number % kWordBits));
    }
}

void read_chars(const Json &value, uint8_t *to, size_t count) {
    const std::string text = read_text(value);
    if (text.size() > count) {
        throw BadValue("is longer than " + std::to_string(count) + " characters");
    }
    text.copy(reinterpret_cast<char *>(to), text.size());
}

/** Does something with a member; a BadValue names it. */
template <typename Action>
void naming(const Field &field, Action action) {
    try {
        action();
    } catch (const BadValue &bad) {
        throw BadValue(std::string("has a bad member '") + field.name + "': it " + bad.what());
    }
}

}  // namespace

void check_arguments(const Json &arguments) {
    if (!arguments.is_object()) {
        throw BadValue("The arguments are not an object.");
    }
}

uint64_t read_unsigned(const Json &value, uint64_t most) {
    const bool fits = value.is_number_integer() && (value.is_number_unsigned() || value.get<int64_t>() >= 0);
    if (!fits || value.get<uint64_t>() > most) {
        throw BadValue("is not a number from 0 to " + std::to_string(most));
    }
    return value.get<uint64_t>();
}

std::string read_text(const Json &value) {
    if (!value.is_string()) {
        throw BadValue("is not a text");
    }
    const auto &utf8 = value.get_ref<const std::string &>();
    std::string octets;
    for (size_t index = 0; index < utf8.size(); ++index) {
        // Two octets of UTF-8 have what one octet of the text can be.
        constexpr uint8_t kLeads = 0xC2;
        constexpr uint8_t kHigh = 0x80;
        auto octet = static_cast<uint8_t>(utf8[index]);
        if (octet >= kHigh) {
            const bool is_pair = (octet | 1) == (kLeads | 1) && index + 1 < utf8.size();
            if (!is_pair) {
                throw BadValue("has a character above U+00FF");
            }
            octet = static_cast<uint8_t>((octet & 1) << 6 | (static_cast<uint8_t>(utf8[++index]) & 0x3F) | kHigh);
        }
        if (octet == 0) {
            throw BadValue("has a character U+0000");
        }
        octets += static_cast<char>(octet);
    }
    return octets;
}

void read_octets(const Json &value, uint8_t *to, size_t count) {
    if (!value.is_string()) {
        throw BadValue("is not hexadecimal text");
    }
    const auto &digits = value.get_ref<const std::string &>();
    if (digits.size() > 2 * count) {
        throw BadValue("has " + std::to_string(digits.size()) + " digits, and there is room for " +
                       std::to_string(2 * count));
    }
    for (const char *at = digits.data(), *end = at + digits.size(); at != end; at += 2) {
        const auto [after, error] = std::from_chars(at, at + std::min<ptrdiff_t>(2, end - at), *to++, kHexadecimal);
        if (error != std::errc() || after != at + 2) {
            throw BadValue("is not hexadecimal text, two digits for an octet");
        }
    }
}

void read_array(const Json &value, const Element &element, uint8_t *to, size_t count) {
    for (const Json &each : array_of(value, count)) {
        read_element(each, element, to);
        to += element.size;
    }
}

void read_block(const Json &value, const Form &form, uint8_t *to) {
    switch (form.kind) {
        case Form::Kind::kOne:
            return read_element(value, *form.element, to);
        case Form::Kind::kArray:
            return read_array(value, *form.element, to, form.count);
        case Form::Kind::kOctets:
            return read_octets(value, to, form.count);
        case Form::Kind::kText:
            return read_chars(value, to, form.count);
        case Form::Kind::kPorts:
            return read_ports(value, to, form.count);
    }
}

void read_struct(const Json &value, const Struct &layout, uint8_t *to) {
    for (const Field &field : layout.fields) {
        // What decides on the form of a member stands before it.
        const Json *member = field.is_pointer ? nullptr : find_member(value, field.name);
        if (member != nullptr) {
            naming(field, [&] { read_block(*member, form_of(layout, field, to), to + field.offset); });
        }
    }
}

void read_offsets(const Json &value, const Struct &layout, uint8_t *to, uint8_t *frame) {
    for (const Field &field : layout.fields) {
        const Json *member = field.is_pointer && !is_frame(field) ? find_member(value, field.name) : nullptr;
        uint8_t *address = is_frame(field) ? frame : nullptr;
        if (member != nullptr) {
            naming(field, [&] { address = read_offset(*member, frame, kMostFrameOffset); });
        }
        if (field.is_pointer) {
            std::memcpy(to + field.offset, &address, sizeof address);
        }
    }
}

uint8_t *read_offset(const Json &value, const void *octets, size_t count) {
    if (value.is_null()) {
        return nullptr;
    }
    if (octets == nullptr) {
        throw BadValue("is an offset into a null address");
    }
    const auto offset = static_cast<uintptr_t>(read_unsigned(value, count));
    return reinterpret_cast<uint8_t *>(reinterpret_cast<uintptr_t>(octets) + offset);
}

const Json &array_of(const Json &value, size_t most) {
    if (!value.is_array()) {
        throw BadValue("is not an array");
    }
    if (value.size() > most) {
        throw BadValue("has " + std::to_string(value.size()) + " elements, and there is room for " +
                       std::to_string(most));
    }
    return value;
}

const Json *find_member(const Json &value, const char *name) {
    if (!value.is_object()) {
        throw BadValue("is not an object");
    }
    const auto found = value.find(name);
    return found == value.end() ? nullptr : &*found;
}

}  // namespace calls
