// Words of any JSON value.
#include "switchd/daemon/table_text.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "text/printable.h"

namespace switchd::table_text {

using nlohmann::json;

namespace {

constexpr const char *kNothing = "-";

/** Of a value that is no list and no object, or of what is within one. */
std::string plain_word(const json &value) {
    if (value.is_null()) {
        return kNothing;
    }
    if (value.is_boolean()) {
        return value.get<bool>() ? "yes" : "no";
    }
    if (value.is_string()) {
        const std::string text = text::on_one_line(value.get<std::string>());
        return text.empty() ? kNothing : text;
    }
    return text::on_one_line(value.dump());
}

}  // namespace

std::string word_of(const json &value) {
    if (!value.is_structured()) {
        return plain_word(value);
    }
    std::string words;
    for (const auto &[key, entry] : value.items()) {
        const std::string name = value.is_object() ? text::on_one_line(key) + " " : "";
        words += (words.empty() ? "" : value.is_object() ? ", " : " ") + name + plain_word(entry);
    }
    return words.empty() ? kNothing : words;
}

std::string word_in(const json &object, const char *key) {
    const auto found = object.find(key);
    return found == object.end() ? kNothing : word_of(*found);
}

std::vector<json> rows_in(const json &object, const char *key) {
    std::vector<json> rows;
    const auto found = object.find(key);
    if (found != object.end() && found->is_array()) {
        std::copy_if(found->begin(), found->end(), std::back_inserter(rows),
                     [](const json &row) { return row.is_object(); });
    }
    return rows;
}

std::string table(const Row &heads, const std::vector<Row> &rows) {
    if (rows.empty()) {
        return {};
    }
    std::string text;
    std::vector<Row> all{heads};
    all.insert(all.end(), rows.begin(), rows.end());
    for (const Row &row : all) {
        std::string line;
        for (size_t column = 0; column < heads.size(); ++column) {
            size_t width = 0;
            for (const Row &other : all) {
                width = std::max(width, other[column].size());
            }
            line += row[column] + std::string(width - row[column].size() + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

}  // namespace switchd::table_text
