// Search by words: in names, in the purposes of calls, in the constants that calls take, and in topics.
#include "tools/adpsh/search.h"

#include "text/suggest.h"
#include "tools/adpsh/parameter.h"
#include "tools/adpsh/topics.h"

#include <algorithm>
#include <cctype>

namespace adpsh {

namespace {

// In shorter words a typing error makes another word.
constexpr size_t kShortestMisspelt = 4;

char lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

bool contains(std::string_view text, std::string_view word) {
    const auto found = std::search(text.begin(), text.end(), word.begin(), word.end(),
                                   [](char a, char b) { return lower(a) == lower(b); });
    return found != text.end();
}

/** Whether the text has a word that begins so: `speed` is in "its speeds", `port` not in "export". */
bool has_word(std::string_view text, std::string_view word) {
    for (size_t at = 0; at + word.size() <= text.size(); ++at) {
        const bool begins = at == 0 || std::isalnum(static_cast<unsigned char>(text[at - 1])) == 0;
        if (begins && contains(text.substr(at, word.size()), word)) {
            return true;
        }
    }
    return false;
}

bool is_about(const exported::Constant &constant, std::string_view word) {
    return is_like(word, constant.name) || has_word(constant.doc, word);
}

bool has_field(const exported::Structure &structure, std::string_view word) {
    return std::any_of(structure.layout->fields.begin(), structure.layout->fields.end(),
                       [word](const calls::Field &field) { return is_like(word, field.name); });
}

bool is_of_topic(const exported::Call &call, std::string_view word) {
    return std::any_of(topics().begin(), topics().end(), [&](const Topic &topic) {
        const std::vector<std::string> names =
            contains(topic.name, word) ? calls_of(topic) : std::vector<std::string>();
        return std::find(names.begin(), names.end(), call.name) != names.end();
    });
}

template <typename Rows, typename Test>
auto matching(const Rows &rows, Test is_wanted) {
    std::vector<const typename Rows::element_type *> found;
    for (const auto &row : rows) {
        if (is_wanted(row)) {
            found.push_back(&row);
        }
    }
    return found;
}

}  // namespace

bool is_like(std::string_view word, std::string_view name) {
    if (word.empty() || contains(name, word)) {
        return true;
    }
    while (word.size() >= kShortestMisspelt && !name.empty()) {
        const size_t end = std::min(name.find('_'), name.size());
        const std::string_view part = name.substr(0, end);
        if (part.size() >= kShortestMisspelt && text::has_one_error(word, part)) {
            return true;
        }
        name.remove_prefix(std::min(end + 1, name.size()));
    }
    return false;
}

std::vector<const exported::Call *> calls_about(std::string_view word) {
    const auto constants = constants_about(word);
    auto named = matching(exported::calls(), [word](const exported::Call &call) { return is_like(word, call.name); });
    const auto described = matching(exported::calls(), [&](const exported::Call &call) {
        return !is_like(word, call.name) &&
               (has_word(purpose_of(call.doc), word) || is_of_topic(call, word) || takes_one(call, constants));
    });
    named.insert(named.end(), described.begin(), described.end());
    return named;
}

std::vector<const exported::Constant *> constants_about(std::string_view word) {
    return matching(exported::constants(),
                    [word](const exported::Constant &constant) { return is_about(constant, word); });
}

std::vector<const exported::Structure *> structures_about(std::string_view word) {
    return matching(exported::structures(), [word](const exported::Structure &structure) {
        return is_like(word, structure.layout->name) || has_field(structure, word);
    });
}

std::vector<const exported::Table *> tables_about(std::string_view word) {
    return matching(exported::tables(), [word](const exported::Table &table) { return is_like(word, table.name); });
}

std::string purpose_of(std::string_view doc) {
    std::string sentence;
    for (size_t i = 0; i < doc.size(); ++i) {
        const bool ends = doc[i] == '.' && (i + 1 == doc.size() || doc[i + 1] == ' ' || doc[i + 1] == '\n');
        sentence += doc[i] == '\n' ? ' ' : doc[i];
        if (ends) {
            break;
        }
    }
    return sentence;
}

}  // namespace adpsh
