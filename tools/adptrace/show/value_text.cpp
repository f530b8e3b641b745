// Values that do not have the shape that the header gives them are shown as the JSON that they are: the recording may
// be of another version.
#include "tools/adptrace/show/value_text.h"

#include <adp/status.h>
#include <adp/types.h>
#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <vector>

#include "text/printable.h"
#include "tools/adptrace/show/literals.h"

namespace adptrace {
namespace {

using calls::Element;
using calls::Field;
using calls::Kind;
using calls::Param;
using nlohmann::json;

constexpr size_t kLongBlock = 16;     // longer blocks do not show their trailing zeros
constexpr size_t kMostElements = 32;  // of a short text
constexpr size_t kMostOctets = 32;
constexpr size_t kMostCharacters = 100;
constexpr uint64_t kLargeWord = 0x10000;  // larger words are addresses or patterns
constexpr uint64_t kAllOnes = 0xFFFFFFFF;

class ValueText {
  public:
    explicit ValueText(Length length) : is_short_(length == Length::kShort) {}

    void append_param(const Param &param, const json &value, size_t count);
    void append_struct(const calls::Struct &layout, const json &value);
    void append_interface(const json &value);
    void append_any(const json &value);
    std::string text;

  private:
    void append_block(const Element &element, const json &value, size_t count);
    void append_element(const Element &element, const json &value);
    void append_number(const Element &element, const json &value);
    void append_array(const Element &element, const json &value, size_t count);
    void append_interfaces(const json &value);
    void append_octets(const std::string &digits, size_t count);
    void append_field(const Field &field, const json &value);
    void append_address(const json &value);
    void append_members(const json &value, const char *separator);
    template <typename Append>
    void append_list(const json &value, size_t count, Append append);
    /** How many of so many are shown. */
    [[nodiscard]] size_t shown(size_t count, size_t most) const { return is_short_ ? std::min(count, most) : count; }

    bool is_short_;
};

bool are_numbers(const json &value) {
    return value.is_array() &&
           std::all_of(value.begin(), value.end(), [](const json &each) { return each.is_number_unsigned(); });
}

bool are_octets(const json &value) {
    constexpr const char *kDigits = "0123456789abcdefABCDEF";
    return value.is_string() && value.get_ref<const std::string &>().size() % 2 == 0 &&
           value.get_ref<const std::string &>().find_first_not_of(kDigits) == std::string::npos;
}

/** Elements that a block has which leaves out its trailing zeros: a long one is shown without them, too. */
size_t padded(size_t given, size_t count) {
    return count <= kLongBlock ? std::max(given, count) : given;
}

void ValueText::append_octets(const std::string &digits, size_t count) {
    const size_t given = digits.size() / 2;
    const size_t all = std::max<size_t>(padded(given, count), 1);
    const size_t visible = shown(all, kMostOctets);
    text += octets_text(digits, visible);
    text += visible < all ? fmt::format("..({} octets)", std::max(given, count)) : all < count ? ".." : "";
}

void ValueText::append_number(const Element &element, const json &value) {
    const bool is_natural = value.is_number_unsigned();
    const uint64_t number = is_natural ? value.get<uint64_t>() : 0;
    if (element.is_interface && is_natural && number <= kAllOnes &&
        number >> ADP_INTF_TYPE_SHIFT == ADP_INTF_TYPE_AGG) {
        text += fmt::format("agg{}", number & ADP_INTF_INDEX_MASK);
    } else if ((element.kind == Kind::kU32 && number == kAllOnes) ||
               (element.kind == Kind::kWord && number >= kLargeWord)) {
        text += fmt::format("{:#x}", number);
    } else {
        append_any(value);
    }
}

template <typename Append>
void ValueText::append_list(const json &value, size_t count, Append append) {
    const size_t visible = shown(value.size(), kMostElements);
    text += '[';
    for (size_t i = 0; i < visible; ++i) {
        text += i == 0 ? "" : ", ";
        append(value[i]);
    }
    for (size_t i = value.size(); i < padded(value.size(), count); ++i) {
        text += i == 0 ? "0" : ", 0";
    }
    text += visible < value.size() ? fmt::format(", ..({} elements)]", std::max(value.size(), count))
            : count > kLongBlock && value.size() < count ? (value.empty() ? "0, ..]" : ", ..]")
                                                         : "]";
}

void ValueText::append_array(const Element &element, const json &value, size_t count) {
    // An array in place of octets is one of words; they are not counted.
    const bool has_zeros = element.kind != Kind::kStruct && element.kind != Kind::kU8 && element.kind != Kind::kOpaque;
    append_list(value, has_zeros ? count : 0, [&](const json &each) { append_element(element, each); });
}

void ValueText::append_interface(const json &value) {
    append_number({Kind::kU32, sizeof(uint32_t), false, true}, value);
}

void ValueText::append_interfaces(const json &value) {
    append_list(value, 0, [&](const json &each) { append_interface(each); });
}

void ValueText::append_block(const Element &element, const json &value, size_t count) {
    // A word may be the address of a set.
    const bool may_be_ports = element.is_ports || (element.kind == Kind::kWord && count == 1);
    if (may_be_ports && are_numbers(value)) {
        text += ports_text(value.get<std::vector<uint64_t>>());
    } else if ((element.kind == Kind::kU8 || element.kind == Kind::kOpaque) && are_octets(value)) {
        append_octets(value.get_ref<const std::string &>(), count);
    } else if (value.is_array()) {
        append_array(element, value, count);
    } else {
        append_element(element, value);
    }
}

void ValueText::append_element(const Element &element, const json &value) {
    if (element.kind == Kind::kStruct && element.layout != nullptr && value.is_object()) {
        append_struct(*element.layout, value);
    } else if (element.kind == Kind::kCallback) {
        append_address(value);
    } else if (value.is_number()) {
        append_number(element, value);
    } else {
        append_any(value);
    }
}

void ValueText::append_field(const Field &field, const json &value) {
    if (!field.is_pointer) {
        append_block(field.element, value, field.count);
    } else if (are_octets(value)) {
        append_octets(value.get_ref<const std::string &>(), 0);
    } else if (value.is_number()) {
        text += "frame+" + value.dump();
    } else {
        append_address(value);
    }
}

void ValueText::append_address(const json &value) {
    if (value == "set") {
        text += "set";
    } else {
        append_any(value);
    }
}

void ValueText::append_struct(const calls::Struct &layout, const json &value) {
    // A struct that holds only a port set passes the set by value.
    if (layout.fields.size() == 1 && layout.fields[0].element.is_ports && value.contains(layout.fields[0].name)) {
        return append_field(layout.fields[0], value[layout.fields[0].name]);
    }
    json others = value;
    const char *separator = "{";
    for (const Field &field : layout.fields) {
        if (value.contains(field.name)) {
            text += fmt::format("{}{}=", separator, field.name);
            append_field(field, value[field.name]);
            others.erase(field.name);
            separator = ", ";
        }
    }
    append_members(others, separator);
    text += *separator == '{' && others.empty() ? "{}" : "}";
}

void ValueText::append_members(const json &value, const char *separator) {
    for (const auto &[name, each] : value.items()) {
        text += separator + text::on_one_line(name) + "=";
        append_any(each);
        separator = ", ";
    }
}

void ValueText::append_any(const json &value) {
    if (value.is_string()) {
        const auto &whole = value.get_ref<const std::string &>();
        text += quoted_text(whole, shown(whole.size(), kMostCharacters));
    } else if (value.is_array()) {
        append_list(value, 0, [&](const json &each) { append_any(each); });
    } else if (value.is_object()) {
        append_members(value, "{");
        text += value.empty() ? "{}" : "}";
    } else {
        text += value.dump();
    }
}

void ValueText::append_param(const Param &param, const json &value, size_t count) {
    if (param.shape == calls::Shape::kList && value.is_array()) {
        append_interfaces(value);
    } else if (param.shape == calls::Shape::kOutPointer && value.is_number()) {
        text += "+" + value.dump();
    } else if (param.is_text()) {
        append_any(value);
    } else {
        append_block(param.element, value, count);
    }
}

/** Elements of a parameter, as far as the arguments say. */
size_t count_of(const KnownCall &call, const Param &param, const json &arguments) {
    if (param.counted_by == calls::kNotCounted) {
        return param.extent;
    }
    const auto counted = arguments.find(call.params[static_cast<size_t>(param.counted_by)].name);
    return counted != arguments.end() && counted->is_number_unsigned() ? counted->get<size_t>() : 0;
}

bool is_param(const KnownCall &call, const std::string &name) {
    return std::any_of(call.params.begin(), call.params.end(),
                       [&name](const Param &each) { return each.name == name; });
}

/** The entry of a result that is a status of the library or of the virtual device, or null. */
const adp_status_entry_t *status_of(const KnownCall &call, int64_t result) {
    if (result == ADP_OK || result != static_cast<int32_t>(result)) {
        return nullptr;
    }
    const bool may_be_the_librarys = call.result == calls::Result::kStatus;
    const bool may_be_the_devices = may_be_the_librarys || call.result == calls::Result::kI32;
    return (result < ADP_FAIL ? may_be_the_devices : may_be_the_librarys)
               ? adp_status_find(static_cast<int32_t>(result))
               : nullptr;
}

}  // namespace

std::string values_text(const KnownCall *known, const json &values, const json &arguments, Length length) {
    ValueText result(length);
    const auto begin = [&result](const std::string &name) {
        result.text += (result.text.empty() ? "" : ", ") + text::on_one_line(name) + "=";
    };
    for (const Param &param : known == nullptr ? std::span<const Param>() : known->params) {
        if (const auto value = values.find(param.name); value != values.end()) {
            begin(param.name);
            result.append_param(param, *value, count_of(*known, param, arguments));
        }
    }
    for (const auto &[name, value] : values.items()) {
        if (known == nullptr || !is_param(*known, name)) {
            begin(name);
            result.append_any(value);
        }
    }
    return result.text;
}

std::string result_text(const KnownCall *known, const json &result, Length length) {
    ValueText value(length);
    const calls::Result kind = known == nullptr ? calls::Result::kI32 : known->result;
    if (kind == calls::Result::kNothing) {
        value.text = "void";
    } else if (kind == calls::Result::kStruct && known->layout != nullptr && result.is_object()) {
        value.append_struct(*known->layout, result);
    } else if (kind == calls::Result::kInterface) {
        value.append_interface(result);
    } else {
        value.append_any(result);
    }
    if (known != nullptr && result.is_number_integer()) {
        const adp_status_entry_t *const status = status_of(*known, result.get<int64_t>());
        value.text += status == nullptr ? "" : fmt::format(" ({})", status->name);
    }
    return value.text;
}

}  // namespace adptrace
