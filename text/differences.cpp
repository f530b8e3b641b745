// Walks both values together, down to what has no members on either side.
#include "text/differences.h"

#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>

#include "text/printable.h"

namespace text {
namespace {

using nlohmann::json;

bool is_digit(char letter) {
    return std::isdigit(static_cast<unsigned char>(letter)) != 0;
}

/** Takes the digits at the start, without zeros in front. */
std::string_view take_number(std::string_view &text) {
    const auto *const end = std::find_if_not(text.begin(), text.end(), is_digit);
    std::string_view digits = text.substr(0, static_cast<size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    return digits;
}

/** "vlan 9" is before "vlan 10". */
struct ByNumbers {
    bool operator()(std::string_view a, std::string_view b) const {
        const std::string_view whole_a = a;
        const std::string_view whole_b = b;
        while (!a.empty() && !b.empty()) {
            if (is_digit(a.front()) && is_digit(b.front())) {
                const std::string_view number_a = take_number(a);
                const std::string_view number_b = take_number(b);
                if (number_a != number_b) {
                    return number_a.size() != number_b.size() ? number_a.size() < number_b.size() : number_a < number_b;
                }
            } else if (a.front() != b.front()) {
                return a.front() < b.front();
            } else {
                a.remove_prefix(1);
                b.remove_prefix(1);
            }
        }
        return a.empty() && b.empty() ? whole_a < whole_b : a.empty();
    }
};

using Names = std::set<std::string, ByNumbers>;

void add_names(Names &names, const json *value) {
    if (value != nullptr && value->is_object()) {
        for (const auto &[name, member] : value->items()) {
            names.insert(name);
        }
    }
}

const json *member(const json *value, const std::string &name) {
    const auto found = value->find(name);
    return found == value->end() ? nullptr : &*found;
}

std::string value_text(const json *value);

/** How many elements from here on are numbers in a row. */
size_t run_length(const json &list, size_t first) {
    size_t length = 1;
    while (first + length < list.size() && list[first].is_number_integer() &&
           list[first + length] == static_cast<int64_t>(list[first].get<uint64_t>() + length)) {
        ++length;
    }
    return length;
}

std::string element_text(const json &value) {
    const bool has_members = value.is_object() && !value.empty();
    return has_members ? "(" + value_text(&value) + ")" : value_text(&value);
}

/** "{1,2,5-9,cpu}" */
std::string list_text(const json &list) {
    constexpr size_t kRun = 4;
    std::string text;
    for (size_t at = 0; at < list.size();) {
        const size_t length = run_length(list, at);
        const bool is_run = length >= kRun;
        text += (at == 0 ? "" : ",") + element_text(list[at]);
        text += is_run ? "-" + value_text(&list[at + length - 1]) : "";
        at += is_run ? length : 1;
    }
    return "{" + text + "}";
}

/** "members {1,2}, untagged {1}" */
std::string members_text(const json &object) {
    std::string text;
    for (const auto &[name, value] : object.items()) {
        text += (text.empty() ? "" : ", ") + on_one_line(name) + " " + element_text(value);
    }
    return text.empty() ? "empty" : text;
}

std::string value_text(const json *value) {
    if (value == nullptr) {
        return "-";
    }
    switch (value->type()) {
        case json::value_t::null:
            return "none";
        case json::value_t::boolean:
            return value->get<bool>() ? "yes" : "no";
        case json::value_t::string:
            return on_one_line(value->get_ref<const std::string &>());
        case json::value_t::array:
            return list_text(*value);
        case json::value_t::object:
            return members_text(*value);
        default:
            return value->dump();
    }
}

/** What is missing on one side is a line; of a table, whose members are rows, a line for each. */
bool is_table(const json *value) {
    return value != nullptr && value->is_object() && !value->empty() &&
           std::all_of(value->begin(), value->end(), [](const json &row) { return row.is_object(); });
}

void compare(std::vector<std::string> &lines, const std::string &place, const json *first, const json *second) {
    if (first != nullptr && second != nullptr && *first == *second) {
        return;
    }
    const bool are_objects = first != nullptr && second != nullptr && first->is_object() && second->is_object();
    if (!are_objects && !(first == nullptr && is_table(second)) && !(second == nullptr && is_table(first))) {
        lines.push_back(place + ": " + value_text(first) + " / " + value_text(second));
        return;
    }
    Names names;
    add_names(names, first);
    add_names(names, second);
    for (const std::string &name : names) {
        compare(lines, place + (place.empty() ? "" : " ") + on_one_line(name),
                first == nullptr ? nullptr : member(first, name), second == nullptr ? nullptr : member(second, name));
    }
}

}  // namespace

std::vector<std::string> differences(const json &first, const json &second) {
    std::vector<std::string> lines;
    compare(lines, "", &first, &second);
    return lines;
}

}  // namespace text
