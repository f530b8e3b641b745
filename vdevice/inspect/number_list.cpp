// Takes a list apart at its commas and dashes.
#include "vdevice/inspect/number_list.h"

#include <charconv>

namespace vdevice::inspect {
namespace {

std::optional<int64_t> list_number_of(std::string_view text) {
    if (text == "cpu") {
        return 0;
    }
    uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size() ? std::optional<int64_t>{number} : std::nullopt;
}

std::optional<NumberRange> range_of(std::string_view text) {
    const size_t dash = text.find('-');
    const auto first = list_number_of(text.substr(0, dash));
    const auto last = dash == std::string_view::npos ? first : list_number_of(text.substr(dash + 1));
    return first && last && *first <= *last ? std::optional<NumberRange>{{*first, *last}} : std::nullopt;
}

}  // namespace

std::optional<std::vector<NumberRange>> number_list(std::string_view text) {
    std::vector<NumberRange> ranges;
    for (size_t comma = 0; comma != std::string_view::npos;) {
        comma = text.find(',');
        const auto range = range_of(text.substr(0, comma));
        if (!range) {
            return std::nullopt;
        }
        ranges.push_back(*range);
        text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
    }
    return ranges;
}

}  // namespace vdevice::inspect
