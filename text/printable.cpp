// Goes through a text character by character and escapes what is no visible one.
#include "text/printable.h"

#include <stddef.h>
#include <stdint.h>
#include <algorithm>
#include <iterator>

namespace text {
namespace {

struct Character {
    size_t length; /**< in octets; 0 if they are not UTF-8 */
    char32_t code;
};

struct Range {
    char32_t first;
    char32_t last;
};

/** What moves the cursor, changes the direction of text, or cannot be seen. */
constexpr Range kInvisible[] = {{0x00, 0x1F},     {0x7F, 0x9F},     {0xAD, 0xAD},      {0x061C, 0x061C},
                                {0x180E, 0x180E}, {0x200B, 0x200F}, {0x2028, 0x202E},  {0x2060, 0x206F},
                                {0xFEFF, 0xFEFF}, {0xFFF0, 0xFFFB}, {0xE0000, 0xE0FFF}};

constexpr char32_t kNotUtf8 = 0x110000;

constexpr bool is_character(char32_t code, size_t length) {
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool is_surrogate = code >= 0xD800 && code <= 0xDFFF;
    return code >= kLeast[length] && code < kNotUtf8 && !is_surrogate;
}

size_t length_of(uint8_t first) {
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xC0 || first > 0xF7) {
        return 0;
    }
    return first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
}

/** The first character of a text that is not empty. */
Character first_of(std::string_view text) {
    constexpr unsigned kPartBits = 6;
    const auto first = static_cast<uint8_t>(text[0]);
    const size_t length = length_of(first);
    if (length <= 1 || length > text.size()) {
        return {length == 1 ? 1U : 0U, first};
    }
    char32_t code = first & (0x7FU >> length);
    for (size_t i = 1; i < length; ++i) {
        const auto part = static_cast<uint8_t>(text[i]);
        if ((part & 0xC0U) != 0x80U) {
            return {0, kNotUtf8};
        }
        code = code << kPartBits | (part & 0x3FU);
    }
    return {is_character(code, length) ? length : 0, code};
}

bool is_visible(const Character &character) {
    return character.length != 0 && std::none_of(std::begin(kInvisible), std::end(kInvisible), [&](const Range &range) {
               return character.code >= range.first && character.code <= range.last;
           });
}

std::string escape(char octet) {
    constexpr char kDigits[] = "0123456789abcdef";
    switch (octet) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        case '\\':
            return "\\\\";
        default:
            const auto value = static_cast<uint8_t>(octet);
            return {'\\', 'x', kDigits[value >> 4U], kDigits[value & 0xFU]};
    }
}

/** The octets in @p kept stay, those in @p escaped do not; of the others it depends on whether they are visible. */
std::string escape_all(std::string_view text, char kept, char escaped) {
    std::string result;
    while (!text.empty()) {
        const Character character = first_of(text);
        const size_t length = std::max<size_t>(character.length, 1);
        if (text[0] == kept || (text[0] != escaped && is_visible(character))) {
            result += text.substr(0, length);
        } else {
            for (const char octet : text.substr(0, length)) {
                result += escape(octet);
            }
        }
        text.remove_prefix(length);
    }
    return result;
}

}  // namespace

std::string on_one_line(std::string_view text) {
    constexpr char kNone = ' ';
    return escape_all(text, kNone, '\\');
}

std::string printable_lines(std::string_view text) {
    constexpr char kNone = '\n';
    return escape_all(text, '\n', kNone);
}

}  // namespace text
