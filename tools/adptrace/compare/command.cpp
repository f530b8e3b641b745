// adptrace diff: its command line.
#include <cstdio>

#include "tools/adptrace/command.h"
#include "tools/adptrace/compare/compare.h"
#include "tools/adptrace/options.h"

namespace adptrace {
namespace {

constexpr int kEqual = 0;
constexpr int kDifferent = 1;

struct Request {
    CompareOptions options;
    std::vector<std::string> files;
};

Request request_of(std::span<const std::string> words) {
    Request request;
    CompareOptions &options = request.options;
    const Option known[] = {
        {"--all", "", [&](const std::string &) { options.shows_all = true; }},
        {"--calls", "PATTERN", [&](const std::string &word) { options.filter.patterns.push_back(word); }},
        {"--library-only", "", [&](const std::string &) { options.with_imported = false; }}};
    request.files = read_options(words, known);
    if (request.files.size() != 2) {
        throw Refusal("it needs two recordings, A and B.");
    }
    return request;
}

int run_diff(std::span<const std::string> arguments) {
    Request request = request_of(arguments);
    request.options.name_a = request.files[0];
    request.options.name_b = request.files[1];
    const Recording a = Recording::of_file(request.files[0]);
    const Recording b = Recording::of_file(request.files[1]);
    const Comparison comparison = compare(a, b, request.options);
    std::fputs(comparison.text.c_str(), stdout);
    if (std::fflush(stdout) != 0) {
        throw Refusal("the differences cannot be written.");
    }
    return comparison.differences == 0 ? kEqual : kDifferent;
}

}  // namespace

extern const Command kDiff = {
    "diff", "[OPTION...] A B", "Compares two recordings, and shows the first difference in meaning",
    "      --all                  Every difference\n"
    "      --calls=PATTERN        Differences of calls of this name; * and ? as in a shell; again for more\n"
    "      --library-only         Without the calls of the driver and of the services\n"
    "\nTimes, addresses, and the ids of processes and threads are not compared. The exit status is 0 if nothing "
    "differs,\n"
    "1 if something does, 2 for trouble.\n",
    run_diff};

}  // namespace adptrace
