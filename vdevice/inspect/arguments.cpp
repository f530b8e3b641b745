// Words of a request, matched with the names in the subject's arguments.
#include "vdevice/inspect/arguments.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>

namespace vdevice::inspect {
namespace {

using nlohmann::json;

std::vector<std::string> names_of(const Subject &subject) {
    std::string text = subject.arguments;
    std::erase_if(text, [](char letter) { return letter == '[' || letter == ']'; });
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), {}};
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

}  // namespace

json with_named_arguments(json request, const Subject &subject) {
    const auto words = request.find("arguments");
    if (words == request.end()) {
        return request;
    }
    if (!words->is_array()) {
        throw Refusal{"The arguments must be a list."};
    }
    const std::vector<std::string> names = names_of(subject);
    const bool can_be_left_out = subject.arguments[0] == '[' && words->empty();
    if (words->size() != names.size() && !can_be_left_out) {
        throw Refusal{names.empty()
                          ? std::string{"The command '"} + subject.name + "' has no arguments."
                          : std::string{"The command is used as '"} + subject.name + " " + subject.arguments + "'."};
    }
    for (size_t i = 0; i < words->size(); ++i) {
        request[names[i]] = value_of((*words)[i]);
    }
    return request;
}

}  // namespace vdevice::inspect
