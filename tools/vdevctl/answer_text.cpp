// Texts and JSON of answers.
#include "tools/vdevctl/answer_text.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "text/printable.h"

namespace vdevctl {
namespace {

constexpr bool kOnlyAscii = true;

}  // namespace

std::string text_of(const nlohmann::json &answer) {
    const auto text = answer.find("text");
    if (text == answer.end() || !text->is_string()) {
        throw std::runtime_error{"the device gave an answer without a text. Is it of another version?"};
    }
    return text::printable_lines(text->get<std::string>());
}

std::string json_text(const nlohmann::json &answer) {
    constexpr int kIndent = 2;
    return answer.dump(kIndent, ' ', kOnlyAscii) + "\n";
}

std::string compact_json_text(const nlohmann::json &answer) {
    constexpr int kCompact = -1;
    return answer.dump(kCompact, ' ', kOnlyAscii) + "\n";
}

}  // namespace vdevctl
