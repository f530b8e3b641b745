// Describes calls by the call table. Numbers are loaded element by element, so that the text does not depend on byte
// order and word width.
#include "calls/describe.h"

#include <algorithm>
#include <cstring>

namespace calls {
namespace {

constexpr size_t kLongBlock = 16;  // longer blocks do not show their trailing zeros
constexpr size_t kWordBits = 32;
constexpr size_t kShortestRange = 3;  // 4,5 is as short as 4-5
constexpr unsigned kNibbleBits = 4;
constexpr unsigned kNibbleMask = 0xF;
constexpr char kHexDigits[] = "0123456789abcdef";

void append_element(std::string &text, const Element &element, const void *at);

const uint8_t *byte_at(const void *base, size_t offset) {
    return static_cast<const uint8_t *>(base) + offset;
}

void append_hex(std::string &text, uint8_t byte) {
    text += kHexDigits[byte >> kNibbleBits];
    text += kHexDigits[byte & kNibbleMask];
}

bool is_zero(const void *at, size_t size) {
    return std::all_of(byte_at(at, 0), byte_at(at, size), [](uint8_t byte) { return byte == 0; });
}

/** Elements to show: all, or in a long block those up to the last nonzero one, but at least one. */
size_t shown(const void *at, size_t count, size_t size) {
    if (count > kLongBlock) {
        while (count > 1 && is_zero(byte_at(at, (count - 1) * size), size)) {
            --count;
        }
    }
    return count;
}

void append_bytes(std::string &text, const void *at, size_t count) {
    const size_t visible = shown(at, count, 1);
    for (size_t index = 0; index < visible; ++index) {
        text += index == 0 ? "" : ":";
        append_hex(text, *byte_at(at, index));
    }
    text += visible < count ? ".." : "";
}

void append_array(std::string &text, const Element &element, const void *at, size_t count) {
    const size_t size = element.size;
    const size_t visible = shown(at, count, size);
    text += '[';
    for (size_t index = 0; index < visible; ++index) {
        text += index == 0 ? "" : ", ";
        append_element(text, element, byte_at(at, index * size));
    }
    text += visible < count ? ", ..]" : "]";
}

void append_chars(std::string &text, const void *at, size_t count) {
    const auto *chars = static_cast<const char *>(at);
    text += quoted(std::string(chars, strnlen(chars, count)).c_str());
}

void append_block(std::string &text, const Element &element, const void *at, size_t count) {
    if (element.is_ports) {
        text += ports_text(at, count);
    } else if (element.kind == Kind::kChar) {
        append_chars(text, at, count);
    } else if (count == 1) {
        append_element(text, element, at);
    } else if (element.kind == Kind::kU8) {
        append_bytes(text, at, count);
    } else {
        append_array(text, element, at, count);
    }
}

void append_struct(std::string &text, const Struct &layout, const void *at) {
    // A struct that holds only a port set passes the set by value.
    if (layout.fields.size() == 1 && layout.fields[0].element.is_ports) {
        append_block(text, layout.fields[0].element, at, layout.fields[0].count);
        return;
    }
    text += '{';
    const char *separator = "";
    for (const Field &field : layout.fields) {
        text += separator + std::string(field.name) + "=";
        append_block(text, field.element, byte_at(at, field.offset), field.count);
        separator = ", ";
    }
    text += '}';
}

void append_element(std::string &text, const Element &element, const void *at) {
    if (element.kind == Kind::kStruct) {
        append_struct(text, *element.layout, at);
    } else {
        text += number_text(element.kind, at);
    }
}

/**
 * An event-queue message ends with the address of a record of four 16-bit numbers. The record is shown, since an
 * address says nothing and differs with each run.
 */
void append_message(std::string &text, const Element &word, const void *at, size_t words) {
    const auto *message = static_cast<const uintptr_t *>(at);
    append_array(text, word, message, words - 1);
    text += ", record=";
    if (message[words - 1] == 0) {
        text += "null";
    } else {
        const auto *record = reinterpret_cast<const void *>(message[words - 1]);
        append_array(text, kEventRecordNumber, record, kEventRecordNumbers);
    }
}

void append_argument(std::string &text, const Call &call, size_t index, const void *const *arguments) {
    const Param &param = call.params[index];
    const void *at = target(param, arguments[index]);
    text += std::string(param.name) + "=";
    if (at != nullptr && param.shape == Shape::kMessage) {
        append_message(text, param.element, at, param.extent);
    } else if (at == nullptr) {
        text += "null";
    } else if (param.is_text()) {
        text += quoted(static_cast<const char *>(at));
    } else {
        append_block(text, param.element, at, extent(call.params, index, arguments));
    }
}

/** Appends the chosen arguments, separated by commas. */
template <typename Choice>
std::string join_arguments(const Call &call, const void *const *arguments, Choice is_chosen) {
    std::string text;
    for (size_t index = 0; index < call.params.size(); ++index) {
        if (is_chosen(call.params[index])) {
            text += text.empty() ? "" : ", ";
            append_argument(text, call, index, arguments);
        }
    }
    return text;
}

std::string result_text(Result kind, int64_t result) {
    switch (kind) {
        case Result::kNothing:
            return "void";
        case Result::kText:
            return quoted(static_cast<const char *>(address_of(result)));
        case Result::kU32:
            return std::to_string(static_cast<uint32_t>(result));
        default:
            return std::to_string(static_cast<int32_t>(result));
    }
}

/** One past the last port of those from @p port on that are all in the set. */
size_t end_of_run(const void *at, size_t port, size_t ports) {
    const auto is_in = [at](size_t each) {
        const int64_t word = load(Kind::kU32, byte_at(at, each / kWordBits * sizeof(uint32_t)));
        return (word >> (each % kWordBits) & 1) != 0;
    };
    while (port < ports && is_in(port)) {
        ++port;
    }
    return port;
}

}  // namespace

std::string number_text(Kind kind, const void *at) {
    const int64_t value = load(kind, at);
    switch (kind) {
        case Kind::kI16:
        case Kind::kI32:
            return std::to_string(value);
        case Kind::kWord:
            return std::to_string(static_cast<uint32_t>(value));
        default:
            return std::to_string(static_cast<uint64_t>(value));
    }
}

std::string ports_text(const void *at, size_t words) {
    std::string text;
    const size_t ports = words * kWordBits;
    for (size_t port = 0; port < ports; ++port) {
        const size_t end = end_of_run(at, port, ports);
        if (end == port) {
            continue;
        }
        text += (text.empty() ? "" : ",") + std::to_string(port);
        if (end - port >= kShortestRange) {
            text += "-" + std::to_string(end - 1);
            port = end - 1;
        }
    }
    return "{" + text + "}";
}

std::string hex_text(const void *bytes, size_t count) {
    std::string text;
    text.reserve(2 * count);
    for (size_t index = 0; index < count; ++index) {
        append_hex(text, *byte_at(bytes, index));
    }
    return text;
}

std::string quoted(const char *text) {
    if (text == nullptr) {
        return "null";
    }
    std::string result = "\"";
    for (; *text != '\0'; ++text) {
        const auto byte = static_cast<uint8_t>(*text);
        if (*text == '"' || *text == '\\') {
            result += std::string("\\") + *text;
        } else if (*text == '\n') {
            result += "\\n";
        } else if (byte < ' ' || byte == 0x7F) {
            result += "\\x";
            append_hex(result, byte);
        } else {
            result += *text;
        }
    }
    return result + "\"";
}

std::string describe_call(CallId id, const void *const *arguments) {
    const Call &described = call(id);
    return described.name + ("(" + join_arguments(described, arguments, [](const Param &p) { return p.is_read(); })) +
           ")";
}

std::string describe_result(CallId id, const void *const *arguments, int64_t result, std::string_view name) {
    const Call &described = call(id);
    const std::string outputs = join_arguments(described, arguments, [](const Param &p) { return p.is_written(); });
    return result_text(described.result, result) + (name.empty() ? "" : " (" + std::string(name) + ")") +
           (outputs.empty() ? "" : " {" + outputs + "}");
}

std::string describe_log(int32_t level, int32_t module, const char *word, const char *format, const char *text) {
    return "Log_logging_func(level=" + std::to_string(level) + ", module=" + std::to_string(module) +
           ", word=" + quoted(word) + ", format=" + quoted(format) + ", text=" + quoted(text) + ")";
}

}  // namespace calls
