// Values of filters, and the rows that they keep.
#include "vdevice/inspect/filter.h"

#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "vdevice/inspect/counts.h"
#include "vdevice/inspect/number_list.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

using NumberRanges = std::vector<NumberRange>;

Refusal wrong_value(const Filter &filter) {
    return Refusal{std::string{"The option '"} + filter.name + "' takes " + filter.help + "."};
}

/** Of 3, "1-4,7" or [1, 2, "7-9"]. */
NumberRanges ranges_of(const Filter &filter, const json &value) {
    NumberRanges ranges;
    for (const json &item : value.is_array() ? value : json::array({value})) {
        if (item.is_number_integer()) {
            ranges.push_back({item.get<int64_t>(), item.get<int64_t>()});
            continue;
        }
        const auto list = item.is_string() ? number_list(item.get<std::string>()) : std::nullopt;
        if (!list) {
            throw wrong_value(filter);
        }
        ranges.insert(ranges.end(), list->begin(), list->end());
    }
    return ranges;
}

/** A number, a list of numbers, or a list of pairs, each the first and last number of a run. */
bool has_one_of(const json &value, const NumberRanges &ranges) {
    const auto has_any = [&](int64_t first, int64_t last) {
        return std::any_of(ranges.begin(), ranges.end(),
                           [&](const NumberRange &range) { return first <= range.last && last >= range.first; });
    };
    if (value.is_number_integer()) {
        return has_any(value.get<int64_t>(), value.get<int64_t>());
    }
    return value.is_array() && std::any_of(value.begin(), value.end(), [&](const json &item) {
               return item.is_array() ? has_any(item.at(0).get<int64_t>(), item.at(1).get<int64_t>())
                                      : has_one_of(item, ranges);
           });
}

bool is_same_word(const json &value, const std::string &word) {
    const auto same = [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); };
    if (!value.is_string()) {
        return false;
    }
    const auto &text = value.get_ref<const std::string &>();
    return std::equal(text.begin(), text.end(), word.begin(), word.end(), same);
}

template <typename Matches>
bool any_column(const Filter &filter, const json &row, Matches matches) {
    return std::any_of(filter.columns.begin(), filter.columns.end(), [&](const char *column) {
        const auto found = column == nullptr ? row.end() : row.find(column);
        return found != row.end() && matches(*found);
    });
}

template <typename Keeps>
void keep_rows(json &table, Keeps keeps) {
    auto &rows = table.get_ref<json::array_t &>();
    rows.erase(std::remove_if(rows.begin(), rows.end(), [&](const json &row) { return !keeps(row); }), rows.end());
}

void keep_last(json &table, const Filter &filter, const json &value) {
    if (!value.is_number_integer() || value < 0) {
        throw wrong_value(filter);
    }
    auto &rows = table.get_ref<json::array_t &>();
    const size_t left = std::min(value.get<size_t>(), rows.size());
    rows.erase(rows.begin(), rows.end() - static_cast<ptrdiff_t>(left));
}

void apply(const Filter &filter, const json &value, json &table, const Subject &subject) {
    switch (filter.kind) {
        case FilterKind::kNumbers:
            keep_rows(table, [&, ranges = ranges_of(filter, value)](const json &row) {
                return any_column(filter, row, [&](const json &cell) { return has_one_of(cell, ranges); });
            });
            break;
        case FilterKind::kWord:
            if (!value.is_string()) {
                throw wrong_value(filter);
            }
            keep_rows(table, [&, word = value.get<std::string>()](const json &row) {
                return any_column(filter, row, [&](const json &cell) { return is_same_word(cell, word); });
            });
            break;
        case FilterKind::kNonzero:
            if (value != true) {
                throw wrong_value(filter);
            }
            keep_rows(table, [&](const json &row) { return has_nonzero_count(row, subject.counts); });
            break;
        case FilterKind::kLast:
            keep_last(table, filter, value);
            break;
        case FilterKind::kOwn:
            break;
    }
}

bool is_table(const json &member) {
    return member.is_array() && (member.empty() || member.front().is_object());
}

size_t count_rows(const json &answer) {
    size_t count = 0;
    for (const json &member : answer) {
        count += is_table(member) ? member.size() : 0;
    }
    return count;
}

}  // namespace

bool asks_for(const json &request, const Filter &filter, int number) {
    const auto value = request.find(filter.name);
    return value == request.end() || has_one_of(number, ranges_of(filter, *value));
}

bool is_filtered(const json &request, const Subject &subject) {
    return std::any_of(subject.filters.begin(), subject.filters.end(), [&](const Filter &filter) {
        return filter.kind != FilterKind::kOwn && request.contains(filter.name);
    });
}

json table_sizes(const json &answer) {
    json sizes = json::object();
    for (const auto &[name, member] : answer.items()) {
        if (is_table(member)) {
            sizes[name] = member.size();
        }
    }
    return sizes;
}

RowCount filter(json &answer, const json &request, const Subject &subject) {
    const size_t all = count_rows(answer);
    for (const Filter &filter : subject.filters) {
        if (const auto value = request.find(filter.name); value != request.end()) {
            for (json &member : answer) {
                if (is_table(member)) {
                    apply(filter, *value, member, subject);
                }
            }
        }
    }
    return {count_rows(answer), all};
}

}  // namespace vdevice::inspect
