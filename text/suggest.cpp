// Finds close names by their edit distance.
#include "text/suggest.h"

#include <stddef.h>
#include <algorithm>
#include <cctype>
#include <numeric>
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

/** The edit distance of two names, ignoring case; neighbours that changed places are one error. */
size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::vector<size_t>> rows(a.size() + 1, std::vector<size_t>(b.size() + 1));
    std::iota(rows[0].begin(), rows[0].end(), size_t{0});
    for (size_t i = 1; i <= a.size(); ++i) {
        rows[i][0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t replaced = rows[i - 1][j - 1] + (same(a[i - 1], b[j - 1]) ? 0U : 1U);
            rows[i][j] = std::min({replaced, rows[i - 1][j] + 1, rows[i][j - 1] + 1});
            if (i > 1 && j > 1 && same(a[i - 1], b[j - 2]) && same(a[i - 2], b[j - 1])) {
                rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
            }
        }
    }
    return rows[a.size()][b.size()];
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

bool has_one_error(std::string_view a, std::string_view b) {
    const size_t difference = a.size() > b.size() ? a.size() - b.size() : b.size() - a.size();
    return difference <= 1 && a.size() <= kMaxName && distance(a, b) == 1;
}

}  // namespace text
