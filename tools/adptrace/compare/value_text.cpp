// Cuts values to what fits on a line.
#include "tools/adptrace/compare/value_text.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "text/printable.h"
#include "tools/adptrace/compare/parameters.h"

namespace adptrace {
namespace {

using nlohmann::json;

constexpr size_t kMostCharacters = 72;
constexpr size_t kShownBefore = 16;  // the first character that differs

std::string whole_text(const json &value) {
    return value.dump(-1, ' ', true, json::error_handler_t::replace);
}

std::string cut(const std::string &text, size_t from = 0) {
    const std::string shown = (from > 0 ? "..." : "") + text.substr(from, kMostCharacters);
    return text.size() - from > kMostCharacters ? shown + "..." : shown;
}

/** A part of a value: its name behind that of the whole, and where it is. */
struct Part {
    std::string name;
    json::json_pointer place;
};

/** The only part of the first level that differs. */
std::optional<Part> only_difference(const json &a, const json &b) {
    if (a.type() != b.type() || !a.is_structured() || a.size() != b.size()) {
        return std::nullopt;
    }
    std::optional<Part> found;
    const auto part_of = [&a](const auto &item) {
        const json::json_pointer root;
        return a.is_array() ? Part{"[" + item.key() + "]", root / std::stoul(item.key())}
                            : Part{"." + text::on_one_line(item.key()), root / item.key()};
    };
    for (const auto &item : a.items()) {
        const Part part = part_of(item);
        if (!b.contains(part.place)) {
            return std::nullopt;
        }
        if (item.value() != b[part.place]) {
            if (found) {
                return std::nullopt;
            }
            found = part;
        }
    }
    return found;
}

std::string list_text(const json &values, const std::vector<std::string> &names) {
    std::string text;
    for (const std::string &name : names) {
        if (values.contains(name)) {
            text += (text.empty() ? "" : ", ") + text::on_one_line(name) + "=" + cut(whole_text(values[name]));
        }
    }
    return text;
}

/** In the order of the header; of an unknown call in alphabetical order. */
std::vector<std::string> names_of(const Call &call, const json &values, bool are_arguments) {
    std::vector<std::string> names;
    if (const auto params = params_of(call.name)) {
        for (const calls::Param &param : *params) {
            if (param.is_read() || !are_arguments) {
                names.emplace_back(param.name);
            }
        }
        return names;
    }
    for (const auto &item : values.items()) {
        names.push_back(item.key());
    }
    return names;
}

}  // namespace

Difference difference_of(std::string what, const json &a, const json &b) {
    const json *part_a = &a;
    const json *part_b = &b;
    while (const auto part = only_difference(*part_a, *part_b)) {
        what += part->name;
        part_a = &part_a->at(part->place);
        part_b = &part_b->at(part->place);
    }
    const std::string text_a = whole_text(*part_a);
    const std::string text_b = whole_text(*part_b);
    const auto end = std::mismatch(text_a.begin(), text_a.end(), text_b.begin(), text_b.end()).first;
    const auto equal = static_cast<size_t>(end - text_a.begin());
    const bool is_long = std::max(text_a.size(), text_b.size()) > kMostCharacters && equal > kShownBefore;
    const size_t from = is_long ? equal - kShownBefore : 0;
    return {std::move(what), cut(text_a, from), cut(text_b, from)};
}

std::string text_of(const Call &call) {
    const json arguments = arguments_of(call);
    const std::string text =
        text::on_one_line(call.name) + "(" + list_text(arguments, names_of(call, arguments, true)) + ") -> ";
    if (!call.has_returned) {
        return text + "no return";
    }
    const json outputs = outputs_of(call);
    const std::string written = list_text(outputs, names_of(call, outputs, false));
    return text + cut(whole_text(result_of(call))) + (written.empty() ? "" : " {" + written + "}");
}

}  // namespace adptrace
