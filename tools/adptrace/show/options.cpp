// Options are rows of a table; those that choose calls are the same for both commands.
#include "tools/adptrace/show/options.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "text/suggest.h"
#include "tools/adptrace/command.h"

namespace adptrace {

#define FILTER_HELP                                                                            \
    "      --calls=PATTERN        Calls of this name; * and ? as in a shell; again for more\n" \
    "      --failed               Calls that failed\n"                                         \
    "      --library              Calls of the library\n"                                      \
    "      --driver               Calls of the driver and of the services\n"                   \
    "      --thread=N             Calls of this thread, counted from 1 in each process\n"      \
    "      --process=ID           Of this process\n"                                           \
    "      --since=SECONDS        From this time of the recording on\n"                        \
    "      --until=SECONDS        Up to this time of the recording\n"

const char *const kShowHelp = FILTER_HELP
    "      --tree                 A call with all that is within it, and the calls around a chosen one\n"
    "      --frames               Also the frames that the program sent and received\n"
    "      --full                 Long values in full\n"
    "      --timeline=PICTURE     Writes a picture of the chosen calls over time instead, as SVG\n"
    "\nFILE is - for standard input.\n";
const char *const kStatHelp = FILTER_HELP
    "      --sort=COLUMN          By time (the default), count, errors or name\n"
    "      --json                 In JSON, with times in nanoseconds\n"
    "\nFILE is - for standard input.\n";

#undef FILTER_HELP

namespace {

constexpr double kNanoseconds = 1e9;
constexpr double kMostSeconds = 9e9;

struct Option {
    std::string_view name;
    std::string_view value; /**< what it takes, empty for nothing */
    std::function<void(Options &, const std::string &)> set;
};

struct OrderName {
    std::string_view name;
    Order order;
};

constexpr OrderName kOrders[] = {
    {"time", Order::kTime}, {"count", Order::kCount}, {"errors", Order::kErrors}, {"name", Order::kName}};

template <typename T>
std::optional<T> number_of(const std::string &word) {
    T number{};
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    return error == std::errc{} && end == word.data() + word.size() ? std::optional(number) : std::nullopt;
}

int64_t time_of(const std::string &word) {
    const auto seconds = number_of<double>(word);
    if (!seconds || !(*seconds >= 0) || *seconds > kMostSeconds) {
        throw Refusal("'" + word + "' is no time: it takes seconds, such as 1.5.");
    }
    return static_cast<int64_t>(*seconds * kNanoseconds);
}

template <typename T>
T natural_of(const std::string &word) {
    const auto number = number_of<T>(word);
    if (!number || *number < 1) {
        throw Refusal("'" + word + "' is no number from 1 on.");
    }
    return *number;
}

Order order_of(const std::string &word) {
    const auto *const found = std::find_if(std::begin(kOrders), std::end(kOrders),
                                           [&word](const OrderName &each) { return each.name == word; });
    if (found == std::end(kOrders)) {
        throw Refusal("--sort takes time, count, errors or name, not '" + word + "'.");
    }
    return found->order;
}

using Word = const std::string &;

std::vector<Option> filters() {
    return {{"--calls", "PATTERN", [](Options &o, Word word) { o.show.filter.patterns.push_back(word); }},
            {"--failed", "", [](Options &o, Word) { o.show.filter.is_failed = true; }},
            {"--library", "", [](Options &o, Word) { o.show.filter.is_library = true; }},
            {"--driver", "", [](Options &o, Word) { o.show.filter.is_driver = true; }},
            {"--thread", "N", [](Options &o, Word word) { o.show.filter.thread = natural_of<uint32_t>(word); }},
            {"--process", "ID", [](Options &o, Word word) { o.show.filter.process = natural_of<int64_t>(word); }},
            {"--since", "SECONDS", [](Options &o, Word word) { o.show.filter.since = time_of(word); }},
            {"--until", "SECONDS", [](Options &o, Word word) { o.show.filter.until = time_of(word); }}};
}

const Option &option_named(const std::vector<Option> &known, const std::string &word) {
    std::vector<std::string_view> names;
    for (const Option &option : known) {
        if (option.name == word) {
            return option;
        }
        names.push_back(option.name);
    }
    throw Refusal("there is no option " + word + text::did_you_mean(word, names) + "; --help lists them.");
}

Options options_of(std::span<const std::string> words, const std::vector<Option> &known) {
    Options options;
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string &word = words[i];
        if (word == "-" || !word.starts_with('-')) {
            if (!options.file.empty()) {
                throw Refusal("it takes one FILE, not '" + options.file + "' and '" + word + "'.");
            }
            options.file = word;
            continue;
        }
        const size_t equals = word.find('=');
        const Option &option = option_named(known, word.substr(0, equals));
        if (option.value.empty() ? equals != std::string::npos : equals == std::string::npos && i + 1 == words.size()) {
            throw Refusal(option.value.empty() ? fmt::format("{} takes no value.", option.name)
                                               : fmt::format("{} needs {}.", option.name, option.value));
        }
        option.set(options, option.value.empty()          ? std::string()
                            : equals == std::string::npos ? words[++i]
                                                          : word.substr(equals + 1));
    }
    if (options.file.empty()) {
        throw Refusal("it needs the FILE of a recording, or - for standard input.");
    }
    return options;
}

}  // namespace

Options show_options(std::span<const std::string> words) {
    std::vector<Option> known = filters();
    known.push_back({"--tree", "", [](Options &o, Word) { o.show.is_tree = true; }});
    known.push_back({"--frames", "", [](Options &o, Word) { o.show.has_frames = true; }});
    known.push_back({"--full", "", [](Options &o, Word) { o.show.style.length = Length::kFull; }});
    known.push_back({"--timeline", "PICTURE", [](Options &o, Word word) { o.timeline = word; }});
    return options_of(words, known);
}

Options stat_options(std::span<const std::string> words) {
    std::vector<Option> known = filters();
    known.push_back({"--sort", "COLUMN", [](Options &o, Word word) { o.order = order_of(word); }});
    known.push_back({"--json", "", [](Options &o, Word) { o.is_json = true; }});
    return options_of(words, known);
}

}  // namespace adptrace
