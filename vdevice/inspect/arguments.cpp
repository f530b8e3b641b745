// Words of a request, matched with the names in the subject's arguments and with its options.
#include "vdevice/inspect/arguments.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string_view>

#include "text/suggest.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

constexpr std::string_view kOption = "--";

/** The names of the arguments; in brackets at the end stand those that can be left out, all together. */
struct Usage {
    std::vector<std::string> names;
    size_t required;
    bool repeats; /**< the last one, whose words become a list */

    bool accepts(size_t count) const {
        return count == names.size() || count == required || (repeats && count > required);
    }
};

/** An argument that stands for a filter's value is named as the filter. */
std::string member_named(std::string word, const Subject &subject) {
    for (const Filter &filter : subject.filters) {
        if (word == filter.value) {
            return filter.name;
        }
    }
    std::transform(word.begin(), word.end(), word.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return word;
}

Usage usage_of(const Subject &subject) {
    Usage usage{{}, 0, std::string_view{subject.arguments}.ends_with("...]")};
    bool is_required = true;
    std::istringstream words(subject.arguments);
    for (std::string word; words >> word;) {
        is_required = is_required && word.front() != '[';
        std::erase_if(word, [](char letter) { return letter == '[' || letter == ']' || letter == '.'; });
        usage.names.push_back(member_named(word, subject));
        usage.required += is_required ? 1 : 0;
    }
    return usage;
}

/** A word is a number in decimal, octal with a 0 or hexadecimal with a 0x in front of it, or stays a word. */
json value_of(const json &word) {
    constexpr int kAnyBase = 0;
    if (!word.is_string()) {
        return word;
    }
    const auto text = word.get<std::string>();
    char *end = nullptr;
    errno = 0;
    const int64_t number = std::strtoll(text.c_str(), &end, kAnyBase);
    return errno == 0 && !text.empty() && end == text.c_str() + text.size() ? json(number) : word;
}

bool is_option(const json &word) {
    return word.is_string() && word.get_ref<const std::string &>().starts_with(kOption);
}

const Filter &filter_of(std::string_view option, const Subject &subject) {
    std::vector<std::string> names;
    for (const Filter &filter : subject.filters) {
        if (option == filter.name) {
            return filter;
        }
        names.emplace_back(std::string{kOption} + filter.name);
    }
    const std::string whole = std::string{kOption}.append(option);
    const std::string question = text::did_you_mean(whole, {names.begin(), names.end()}, ", ");
    throw Refusal{std::string{"The command '"} + subject.name + "' has no option '" + whole + "'" +
                  (question.empty() ? "." : question)};
}

/** Takes "--vlan=10", or "--vlan" and the word behind it. Gives the number of words. */
size_t take_option(json &request, const json &words, size_t at, const Subject &subject) {
    const auto word = words[at].get<std::string>().substr(kOption.size());
    const size_t equals = word.find('=');
    const Filter &filter = filter_of(std::string_view{word}.substr(0, equals), subject);
    const bool has_value = filter.value[0] != '\0';
    if (equals != std::string::npos && has_value) {
        request[filter.name] = value_of(word.substr(equals + 1));
        return 1;
    }
    if (equals != std::string::npos || (has_value && at + 1 == words.size())) {
        throw Refusal{std::string{"The option is used as '"} + std::string{kOption} + filter.name +
                      (has_value ? " " : "") + filter.value + "'."};
    }
    request[filter.name] = has_value ? value_of(words[at + 1]) : json(true);
    return has_value ? 2 : 1;
}

/** Those that are too many are counted by the caller. */
void take_argument(json &request, const Usage &usage, size_t number, const json &word) {
    if (usage.repeats && number + 1 >= usage.names.size()) {
        json &list = request[usage.names.back()];
        list = number + 1 == usage.names.size() ? json::array() : list;
        list.push_back(value_of(word));
    } else if (number < usage.names.size()) {
        request[usage.names[number]] = value_of(word);
    }
}

}  // namespace

json with_named_arguments(json request, const Subject &subject) {
    const auto found = request.find("arguments");
    if (found == request.end()) {
        return request;
    }
    const json words = *found;
    if (!words.is_array()) {
        throw Refusal{"The arguments must be a list."};
    }
    const Usage usage = usage_of(subject);
    size_t count = 0;
    for (size_t at = 0; at < words.size();) {
        if (is_option(words[at])) {
            at += take_option(request, words, at, subject);
        } else {
            take_argument(request, usage, count, words[at]);
            ++count;
            ++at;
        }
    }
    if (!usage.accepts(count)) {
        throw Refusal{usage.names.empty()
                          ? std::string{"The command '"} + subject.name + "' has no arguments."
                          : std::string{"The command is used as '"} + subject.name + " " + subject.arguments + "'."};
    }
    return request;
}

}  // namespace vdevice::inspect
