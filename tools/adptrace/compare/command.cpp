// adptrace diff: its command line.
#include <cstdio>

#include "tools/adptrace/command.h"
#include "tools/adptrace/compare/compare.h"

namespace adptrace {
namespace {

constexpr int kEqual = 0;
constexpr int kDifferent = 1;

struct Request {
    CompareOptions options;
    std::vector<std::string> files;
};

Request request_of(std::span<const std::string> arguments) {
    Request request;
    for (size_t n = 0; n < arguments.size(); ++n) {
        const std::string &word = arguments[n];
        if (word == "--all") {
            request.options.shows_all = true;
        } else if (word == "--library-only") {
            request.options.with_imported = false;
        } else if (word == "--calls" && n + 1 < arguments.size()) {
            request.options.calls = arguments[++n];
        } else if (word.starts_with("-") && word != "-") {
            throw Refusal(word == "--calls" ? "--calls needs a pattern." : "diff has no option '" + word + "'.");
        } else {
            request.files.push_back(word);
        }
    }
    if (request.files.size() != 2) {
        throw Refusal("diff needs two recordings: adptrace diff A B.");
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

extern const Command kDiff = {"diff", "[OPTION...] A B", "the differences of two recordings in meaning",
                              "Without an option: the first difference, and how many there are.\n"
                              "Addresses, times, durations, and the ids of processes and threads are not compared.\n"
                              "The exit status is 0 if the recordings are equal, 1 if they differ, 2 for trouble.\n\n"
                              "  --all            every difference\n"
                              "  --calls PATTERN  only those of the calls that match, as 'adp_vlan_*'\n"
                              "  --library-only   without driver and service calls\n",
                              run_diff};

}  // namespace adptrace
