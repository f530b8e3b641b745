// Finds close names by their edit distance.
#include "text/suggest.h"

#include <stddef.h>
#include <algorithm>
#include <cctype>
#include <utility>

namespace text {

namespace {

constexpr size_t kMaxSuggestions = 3;
constexpr size_t kMaxName = 64;
// One typing error is accepted for so many characters.
constexpr size_t kCharactersPerError = 4;

bool same(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

/** The edit distance of two names, ignoring case. */
size_t distance(std::string_view a, std::string_view b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = std::exchange(row[0], i);
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t replaced = diagonal + (same(a[i - 1], b[j - 1]) ? 0U : 1U);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row[b.size()];
}

}  // namespace

std::string did_you_mean(std::string_view name, const std::vector<std::string_view> &names,
                         std::string_view separator) {
    if (name.size() > kMaxName) {
        return {};
    }
    std::vector<std::pair<size_t, std::string_view>> close;
    for (const std::string_view candidate : names) {
        const size_t errors = distance(name, candidate);
        if (errors <= std::max<size_t>(2, name.size() / kCharactersPerError) && errors < name.size()) {
            close.emplace_back(errors, candidate);
        }
    }
    std::sort(close.begin(), close.end());
    std::string question;
    for (size_t i = 0; i < std::min(close.size(), kMaxSuggestions); ++i) {
        question += i == 0 ? std::string(separator) + "did you mean '" : " or '";
        question += std::string(close[i].second) + "'";
    }
    return question.empty() ? question : question + "?";
}

}  // namespace text
