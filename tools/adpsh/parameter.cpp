// Reads a call's description.
#include "tools/adpsh/parameter.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace adpsh {

namespace {

constexpr std::string_view kMark = "@param";
constexpr std::string_view kEnumeration = "enum ";
constexpr std::string_view kPrefix = "ADP_";

std::string_view word_at(std::string_view text, size_t at) {
    size_t end = at;
    while (end < text.size() && (std::isalnum(static_cast<unsigned char>(text[end])) != 0 || text[end] == '_')) {
        ++end;
    }
    return text.substr(at, end - at);
}

std::string_view without_blanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \n"), text.size()));
    return text;
}

std::string on_one_line(std::string_view text) {
    std::string line;
    for (const char c : text) {
        const bool is_blank = c == '\n' || c == ' ';
        if (!is_blank || (!line.empty() && line.back() != ' ')) {
            line += is_blank ? ' ' : c;
        }
    }
    while (!line.empty() && line.back() == ' ') {
        line.pop_back();
    }
    return line;
}

/** Whether a description names the constant's enumeration, or a beginning of its name followed by `...`. */
bool names(std::string_view description, const exported::Constant &constant) {
    const std::string_view name = constant.name;
    if (*constant.enumeration != '\0') {
        const size_t at = description.find(kEnumeration);
        return at != std::string_view::npos && word_at(description, at + kEnumeration.size()) == constant.enumeration;
    }
    const size_t at = description.find(kPrefix);
    const std::string_view prefix = at == std::string_view::npos ? std::string_view() : word_at(description, at);
    return !prefix.empty() && description.substr(at + prefix.size(), 3) == "..." &&
           name.substr(0, prefix.size()) == prefix;
}

}  // namespace

std::string description_of(const exported::Call &call, const calls::Param &parameter) {
    std::string_view doc = call.doc;
    for (size_t at = doc.find(kMark); at != std::string_view::npos; at = doc.find(kMark)) {
        doc.remove_prefix(at + kMark.size());
        if (doc.substr(0, 1) == "[") {
            doc.remove_prefix(std::min(doc.find(']') + 1, doc.size()));
        }
        doc = without_blanks(doc);
        const std::string_view name = word_at(doc, 0);
        if (name == parameter.name) {
            return on_one_line(without_blanks(doc.substr(name.size(), doc.find("\n@") - name.size())));
        }
    }
    return {};
}

std::vector<const exported::Constant *> constants_of(const exported::Call &call, const calls::Param &parameter) {
    const std::string description = description_of(call, parameter);
    std::vector<const exported::Constant *> found;
    for (const exported::Constant &constant : exported::constants()) {
        if (names(description, constant)) {
            found.push_back(&constant);
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const auto *a, const auto *b) { return a->value < b->value; });
    return found;
}

bool takes_one(const exported::Call &call, const std::vector<const exported::Constant *> &constants) {
    return std::any_of(call.params.begin(), call.params.end(), [&](const calls::Param &parameter) {
        const std::string description = description_of(call, parameter);
        return std::any_of(constants.begin(), constants.end(), [&description](const exported::Constant *constant) {
            return names(description, *constant);
        });
    });
}

}  // namespace adpsh
