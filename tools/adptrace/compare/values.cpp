// Compares calls by what their parameters are: read, written, a handle.
#include "tools/adptrace/compare/values.h"

#include <algorithm>
#include <functional>
#include <nlohmann/json.hpp>

#include "text/printable.h"
#include "tools/adptrace/compare/parameters.h"
#include "tools/adptrace/show/value_text.h"

namespace adptrace {
namespace {

using nlohmann::json;

/** Null, which is zero, for what was left out. */
const json &member_of(const json &object, const std::string &name) {
    static const json kAbsent;
    const auto found = object.find(name);
    return found == object.end() ? kAbsent : *found;
}

/** The number of a word, which can be an array of one. */
uint64_t word_of(const json &value) {
    if (value.is_array()) {
        return value.size() == 1 ? word_of(value[0]) : 0;
    }
    return value.is_number_integer() ? value.get<uint64_t>() : 0;
}

bool is_zero(const json &value) {
    if (value.is_structured()) {
        return std::all_of(value.begin(), value.end(), is_zero);
    }
    return value.is_null() || value == 0 || (value.is_string() && value.get_ref<const std::string &>().empty());
}

struct Written {
    const json &before;
    const json &after;
};

bool is_same(const Written &a, const Written &b);

bool has_same_elements(const Written &a, const Written &b) {
    static const json kAbsent;
    const auto element = [](const json &array, size_t index) -> const json & {
        return index < array.size() ? array[index] : kAbsent;
    };
    for (size_t index = 0; index < std::max(a.after.size(), b.after.size()); ++index) {
        if (!is_same({element(a.before, index), element(a.after, index)},
                     {element(b.before, index), element(b.after, index)})) {
            return false;
        }
    }
    return true;
}

bool has_same_members(const Written &a, const Written &b) {
    json names = a.after;
    names.update(b.after);
    for (const auto &item : names.items()) {
        const std::string &name = item.key();
        if (!is_same({member_of(a.before, name), member_of(a.after, name)},
                     {member_of(b.before, name), member_of(b.after, name)})) {
            return false;
        }
    }
    return true;
}

/** Whether the calls have written the same. What neither has changed may have been anything. */
bool is_same(const Written &a, const Written &b) {
    if (a.after == b.after || (is_zero(a.after) && is_zero(b.after)) || (a.before == a.after && b.before == b.after)) {
        return true;
    }
    const auto all = [&](auto is_type) {
        return is_type(a.after) && is_type(b.after) && (is_type(a.before) || a.before.is_null()) &&
               (is_type(b.before) || b.before.is_null());
    };
    return (all([](const json &value) { return value.is_array(); }) && has_same_elements(a, b)) ||
           (all([](const json &value) { return value.is_object(); }) && has_same_members(a, b));
}

/** Octets as an array, so that each is compared for itself. */
json elements_of(const calls::Param &param, const json &value) {
    if (!is_octets(param) || !value.is_string()) {
        return value;
    }
    json octets = json::array();
    const auto &text = value.get_ref<const std::string &>();
    for (size_t at = 0; at < text.size(); at += 2) {
        octets.push_back(text.substr(at, 2));
    }
    return octets;
}

/** Two texts that differ, cut to the part where they do. */
Difference difference_of(std::string what, const std::string &a, const std::string &b) {
    constexpr size_t kMostCharacters = 72;
    constexpr size_t kShownBefore = 24;
    const auto end = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first;
    const auto equal = static_cast<size_t>(end - a.begin());
    const bool is_long = std::max(a.size(), b.size()) > kMostCharacters && equal > kShownBefore;
    const size_t from = is_long ? equal - kShownBefore : 0;
    const auto cut = [from](const std::string &text) {
        const std::string rest = text.substr(from);
        return (from > 0 ? ".." : "") + rest.substr(0, kMostCharacters) + (rest.size() > kMostCharacters ? ".." : "");
    };
    return {std::move(what), cut(a), cut(b)};
}

/** One pair of calls. */
class Pair {
  public:
    Pair(const Call &a, const Call &b, Handles &handles, uint64_t unit)
        : a_(a),
          b_(b),
          handles_(handles),
          unit_(unit),
          known_(known_call(a.name)),
          arguments_a_(arguments_of(a)),
          arguments_b_(arguments_of(b)) {}

    std::vector<Difference> differences() {
        if (a_.name != b_.name) {
            found_.push_back({"call", std::string(a_.name), std::string(b_.name)});
        } else {
            compare_arguments();
        }
        if (a_.has_returned != b_.has_returned) {
            const auto text_of = [](const Call &call) { return call.has_returned ? "yes" : "no"; };
            found_.push_back({"returned", text_of(a_), text_of(b_)});
        } else if (a_.has_returned) {
            compare_results();
            compare_outputs();
        }
        return std::move(found_);
    }

  private:
    /** A difference in the named member of two objects. */
    void add(const std::string &kind, const std::string &name, const json &a, const json &b) {
        const auto text_of = [&](const json &values, const json &arguments) -> std::string {
            if (!values.contains(name)) {
                return kind == "output" ? "unchanged" : "missing";
            }
            const std::string text = values_text(known_, {{name, values[name]}}, arguments, Length::kFull);
            return text.substr(std::min(text.size(), text.find('=') + 1));
        };
        found_.push_back(
            difference_of(kind + " " + text::on_one_line(name), text_of(a, arguments_a_), text_of(b, arguments_b_)));
    }

    void compare_whole(const std::string &kind, const json &a, const json &b) {
        json names = a;
        names.update(b);
        for (const auto &item : names.items()) {
            if (member_of(a, item.key()) != member_of(b, item.key())) {
                add(kind, item.key(), a, b);
            }
        }
    }

    void compare_arguments() {
        if (known_ == nullptr) {
            return compare_whole("argument", arguments_a_, arguments_b_);
        }
        for (const calls::Param &param : known_->params) {
            const json &a = member_of(arguments_a_, param.name);
            const json &b = member_of(arguments_b_, param.name);
            if (!param.is_read()) {
                compare_addresses(param);
            } else if (!is_same_argument(param, a, b)) {
                add("argument", param.name, arguments_a_, arguments_b_);
            }
        }
    }

    bool is_same_argument(const calls::Param &param, const json &a, const json &b) {
        if (is_address_of_program(a_.name, param)) {
            return handles_.meet(word_of(a), word_of(b), unit_);
        }
        return is_handle(param) ? handles_.are_pair(word_of(a), word_of(b)) : a == b;
    }

    /** Where the call writes: somewhere or nowhere. */
    void compare_addresses(const calls::Param &param) {
        const auto text_of = [&param](const json &arguments) {
            const bool is_null = arguments.contains(param.name) && arguments[param.name].is_null();
            return is_null ? "null" : "an address";
        };
        const std::string a = text_of(arguments_a_);
        const std::string b = text_of(arguments_b_);
        if (a != b) {
            found_.push_back({std::string("argument ") + param.name, a, b});
        }
    }

    void compare_results() {
        const json a = result_of(a_);
        const json b = result_of(b_);
        const bool are_numbers = a.is_number_integer() && b.is_number_integer();
        const bool are_of_machine = is_result_of_machine(a_.name) && are_numbers && (a < 0) == (b < 0);
        if (!are_of_machine && a != b) {
            found_.push_back(
                difference_of("result", result_text(known_, a, Length::kFull), result_text(known_, b, Length::kFull)));
        }
    }

    void compare_outputs() {
        const json a = outputs_of(a_);
        const json b = outputs_of(b_);
        if (known_ == nullptr) {
            return compare_whole("output", a, b);
        }
        for (const calls::Param &param : known_->params) {
            if (param.is_written() && !is_same_output(param, a, b)) {
                add("output", param.name, a, b);
            }
        }
    }

    bool is_same_output(const calls::Param &param, const json &outputs_a, const json &outputs_b) {
        const auto memory_of = [&param](const json &arguments, const json &outputs) {
            const json before = elements_of(param, member_of(arguments, param.name));
            return std::pair(before, outputs.contains(param.name) ? elements_of(param, outputs[param.name]) : before);
        };
        const auto [before_a, after_a] = memory_of(arguments_a_, outputs_a);
        const auto [before_b, after_b] = memory_of(arguments_b_, outputs_b);
        const uint64_t handle_a = word_of(after_a);
        const uint64_t handle_b = word_of(after_b);
        return is_handle(param) && handle_a != 0 && handle_b != 0 ? handles_.give(handle_a, handle_b, unit_)
                                                                  : is_same({before_a, after_a}, {before_b, after_b});
    }

    const Call &a_;
    const Call &b_;
    Handles &handles_;
    uint64_t unit_;
    const KnownCall *known_;
    json arguments_a_;
    json arguments_b_;
    std::vector<Difference> found_;
};

}  // namespace

bool Handles::are_pair(uint64_t a, uint64_t b) const {
    const auto found = of_a_.find(a);
    return found != of_a_.end() ? found->second.handle == b : a == b && !of_b_.contains(b);
}

bool Handles::meet(uint64_t a, uint64_t b, uint64_t unit) {
    const bool are_new = a != 0 && b != 0 && !of_a_.contains(a) && !of_b_.contains(b);
    return are_new ? give(a, b, unit) : are_pair(a, b);
}

bool Handles::give(uint64_t a, uint64_t b, uint64_t unit) {
    const auto stays = [unit](const std::map<uint64_t, Other> &all, uint64_t handle, uint64_t other) {
        const auto found = all.find(handle);
        return found == all.end() || found->second.unit != unit || found->second.handle == other;
    };
    if (!stays(of_a_, a, b) || !stays(of_b_, b, a)) {
        return false;
    }
    if (const auto found = of_a_.find(a); found != of_a_.end()) {
        of_b_.erase(found->second.handle);
    }
    if (const auto found = of_b_.find(b); found != of_b_.end()) {
        of_a_.erase(found->second.handle);
    }
    of_a_[a] = {b, unit};
    of_b_[b] = {a, unit};
    return true;
}

uint64_t key_of(const Call &call) {
    json arguments = arguments_of(call);
    if (const KnownCall *const known = known_call(call.name)) {
        for (const calls::Param &param : known->params) {
            if (!param.is_read() || is_handle(param) || is_address_of_program(call.name, param)) {
                arguments.erase(param.name);
            }
        }
    }
    return std::hash<std::string>()(std::string(call.name) + arguments.dump());
}

std::vector<Difference> differences_of(const Call &a, const Call &b, Handles &handles, uint64_t unit) {
    return Pair(a, b, handles, unit).differences();
}

}  // namespace adptrace
