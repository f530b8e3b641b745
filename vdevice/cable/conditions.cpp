// Values of conditions as text: decimal numbers with units, exact to the last digit.
#include "vdevice/cable/conditions.h"

#include <algorithm>
#include <charconv>

namespace vdevice::cable {
namespace {

bool is_digit(char letter) {
    return letter >= '0' && letter <= '9';
}

/** So many digits cannot overflow, whatever their unit. */
constexpr size_t kMostDigits = 10;

std::optional<uint64_t> whole_of(std::string_view digits) {
    uint64_t number = 0;
    if (digits.empty() || digits.size() > kMostDigits || !std::all_of(digits.begin(), digits.end(), is_digit)) {
        return std::nullopt;
    }
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

/** The decimals of a unit, which must be a whole number. */
std::optional<uint64_t> part_of(std::string_view digits, uint64_t unit) {
    uint64_t part = 0;
    for (const char digit : digits) {
        if (!is_digit(digit) || unit % 10 != 0) {
            return std::nullopt;
        }
        unit /= 10;
        part += static_cast<uint64_t>(digit - '0') * unit;
    }
    return digits.empty() ? std::nullopt : std::optional{part};
}

std::optional<uint64_t> number_in(std::string_view text, uint64_t unit) {
    const size_t point = text.find('.');
    const auto whole = whole_of(text.substr(0, point));
    const auto part = point == std::string_view::npos ? 0 : part_of(text.substr(point + 1), unit);
    return whole && part ? std::optional{*whole * unit + *part} : std::nullopt;
}

}  // namespace

bool Conditions::is_none() const {
    return loss == 0 && duplicate == 0 && corrupt == 0 && rate == 0 && delay == 0 && jitter == 0;
}

std::optional<uint64_t> value_of(const Option &option, std::string_view text) {
    const size_t digits = std::min(text.find_first_not_of("0123456789."), text.size());
    for (const Unit &unit : option.units) {
        if (text.substr(digits) == unit.name) {
            const auto value = number_in(text.substr(0, digits), unit.size);
            return value && *value <= option.most ? value : std::nullopt;
        }
    }
    return std::nullopt;
}

std::string text_of(const Option &option, uint64_t value) {
    const auto fits = [&](const Unit &unit) { return value >= unit.size; };
    const auto found = std::find_if(option.units.rbegin(), option.units.rend(), fits);
    const Unit &unit = found == option.units.rend() ? option.units.front() : *found;
    std::string text = std::to_string(value / unit.size);
    uint64_t rest = value % unit.size;
    for (uint64_t place = unit.size / 10; rest != 0; rest %= place, place /= 10) {
        text += (place == unit.size / 10 ? "." : "") + std::to_string(rest / place);
    }
    return text.append(unit.name);
}

const char *fault_of(const Conditions &conditions) {
    return conditions.jitter > conditions.delay ? "the jitter of a cable is at most its delay." : nullptr;
}

}  // namespace vdevice::cable
