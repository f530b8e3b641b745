// Reads command lines.
#include "tools/adptrace/options.h"

#include <algorithm>
#include <charconv>

#include "text/suggest.h"
#include "tools/adptrace/command.h"

namespace adptrace {
namespace {

const Option &option_named(const std::string &name, std::span<const Option> options) {
    const auto found = std::find_if(options.begin(), options.end(), [&name](const Option &each) {
        return each.name == name || (!each.letter.empty() && each.letter == name);
    });
    if (found == options.end()) {
        std::vector<std::string_view> names;
        std::transform(options.begin(), options.end(), std::back_inserter(names),
                       [](const Option &each) { return each.name; });
        throw Refusal("there is no option " + name + text::did_you_mean(name, names) + "; --help lists them.");
    }
    return *found;
}

}  // namespace

std::vector<std::string> read_options(std::span<const std::string> words, std::span<const Option> options) {
    std::vector<std::string> rest;
    for (size_t n = 0; n < words.size(); ++n) {
        const std::string &word = words[n];
        if (word == "-" || !word.starts_with('-')) {
            rest.push_back(word);
            continue;
        }
        const size_t equals = word.starts_with("--") ? word.find('=') : std::string::npos;
        const Option &option = option_named(word.substr(0, equals), options);
        const bool has_value = equals != std::string::npos;
        if (option.value.empty() && has_value) {
            throw Refusal(std::string(option.name) + " takes no value.");
        }
        if (!option.value.empty() && !has_value && n + 1 == words.size()) {
            throw Refusal(std::string(option.name) + " needs " + std::string(option.value) + ".");
        }
        option.set(option.value.empty() ? "" : has_value ? word.substr(equals + 1) : words[++n]);
    }
    return rest;
}

std::string only_file(std::span<const std::string> words) {
    if (words.empty()) {
        throw Refusal("it needs the FILE of a recording, or - for standard input.");
    }
    if (words.size() > 1) {
        throw Refusal("it takes one FILE, not '" + words[0] + "' and '" + words[1] + "'.");
    }
    return words[0];
}

uint64_t natural_of(const std::string &word, uint64_t most) {
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc{} || end != word.data() + word.size() || number == 0 || number > most) {
        throw Refusal("'" + word + "' is no number from 1 " +
                      (most < UINT32_MAX ? "to " + std::to_string(most) : std::string("on")) + ".");
    }
    return number;
}

}  // namespace adptrace
