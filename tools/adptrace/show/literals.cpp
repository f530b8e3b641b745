// As calls/describe.h writes them; what a terminal would obey is escaped.
#include "tools/adptrace/show/literals.h"

#include <fmt/format.h>

#include <cctype>

#include "text/printable.h"

namespace adptrace {
namespace {

constexpr size_t kShortestRange = 3;  // 4,5 is as short as 4-5

}  // namespace

std::string ports_text(const std::vector<uint64_t> &ports) {
    std::string text;
    for (size_t i = 0; i < ports.size();) {
        size_t length = 1;
        while (i + length < ports.size() && ports[i + length] == ports[i] + length) {
            ++length;
        }
        length = length < kShortestRange ? 1 : length;
        text += (text.empty() ? "" : ",") + std::to_string(ports[i]);
        text += length > 1 ? "-" + std::to_string(ports[i] + length - 1) : "";
        i += length;
    }
    return "{" + text + "}";
}

std::string octets_text(std::string_view digits, size_t count) {
    std::string text;
    for (size_t i = 0; i < 2 * count; ++i) {
        text += i > 0 && i % 2 == 0 ? ":" : "";
        text += i < digits.size() ? static_cast<char>(std::tolower(static_cast<unsigned char>(digits[i]))) : '0';
    }
    return text;
}

std::string quoted_text(std::string_view text, size_t count) {
    std::string result = "\"";
    for (const char c : text::on_one_line(text.substr(0, count))) {
        result += c == '"' ? "\\\"" : std::string(1, c);
    }
    return result + (count < text.size() ? fmt::format("\"..({} octets)", text.size()) : "\"");
}

}  // namespace adptrace
