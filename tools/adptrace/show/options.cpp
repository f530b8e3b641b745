// The options that choose calls are the same for both commands.
#include "tools/adptrace/show/options.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <vector>

#include "tools/adptrace/command.h"
#include "tools/adptrace/options.h"

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
    "      --last=N               The newest N of the calls that are within none, with all within them\n"
    "      --follow               Shows each of these calls when it has ended, until the recorded program ends\n"
    "      --json                 Each of these calls as a line of JSON\n"
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
constexpr uint64_t kMostLast = 100'000;

struct OrderName {
    std::string_view name;
    Order order;
};

constexpr OrderName kOrders[] = {
    {"time", Order::kTime}, {"count", Order::kCount}, {"errors", Order::kErrors}, {"name", Order::kName}};

int64_t time_of(const std::string &word) {
    double seconds = -1;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), seconds);
    if (error != std::errc{} || end != word.data() + word.size() || !(seconds >= 0) || seconds > kMostSeconds) {
        throw Refusal("'" + word + "' is no time: it takes seconds, such as 1.5.");
    }
    return static_cast<int64_t>(seconds * kNanoseconds);
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

std::vector<Option> filters(Filter &filter) {
    return {{"--calls", "PATTERN", [&](Word word) { filter.patterns.push_back(word); }},
            {"--failed", "", [&](Word) { filter.is_failed = true; }},
            {"--library", "", [&](Word) { filter.is_library = true; }},
            {"--driver", "", [&](Word) { filter.is_driver = true; }},
            {"--thread", "N", [&](Word word) { filter.thread = static_cast<uint32_t>(natural_of(word, UINT32_MAX)); }},
            {"--process", "ID", [&](Word word) { filter.process = static_cast<int64_t>(natural_of(word, INT64_MAX)); }},
            {"--since", "SECONDS", [&](Word word) { filter.since = time_of(word); }},
            {"--until", "SECONDS", [&](Word word) { filter.until = time_of(word); }}};
}

}  // namespace

bool is_in_parts(const Options &options) {
    return options.is_followed || options.is_json || options.last.has_value();
}

Options show_options(std::span<const std::string> words) {
    Options options;
    std::vector<Option> known = filters(options.show.filter);
    known.push_back({"--tree", "", [&](Word) { options.show.is_tree = true; }});
    known.push_back({"--frames", "", [&](Word) { options.show.has_frames = true; }});
    known.push_back({"--full", "", [&](Word) { options.show.style.length = Length::kFull; }});
    known.push_back({"--timeline", "PICTURE", [&](Word word) { options.timeline = word; }});
    known.push_back({"--last", "N", [&](Word word) { options.last = natural_of(word, kMostLast); }});
    known.push_back({"--follow", "", [&](Word) { options.is_followed = true; }});
    known.push_back({"--json", "", [&](Word) { options.is_json = true; }});
    options.file = only_file(read_options(words, known));
    if (!options.timeline.empty() && is_in_parts(options)) {
        throw Refusal("--timeline draws the whole recording: it takes neither --last nor --follow nor --json.");
    }
    if (options.is_followed && options.file == "-") {
        throw Refusal("--follow takes a FILE, not standard input.");
    }
    return options;
}

Options stat_options(std::span<const std::string> words) {
    Options options;
    std::vector<Option> known = filters(options.show.filter);
    known.push_back({"--sort", "COLUMN", [&](Word word) { options.order = order_of(word); }});
    known.push_back({"--json", "", [&](Word) { options.is_json = true; }});
    options.file = only_file(read_options(words, known));
    return options;
}

}  // namespace adptrace
