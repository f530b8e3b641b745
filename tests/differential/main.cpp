// differential [CALLS [SEED]] [--trace FILE | --script] [--falsify CALL]: random sequences of calls, the library
// against the reference model.
#include <getopt.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "calls/exported.h"
#include "tests/differential/comparison.h"
#include "tests/differential/random.h"
#include "tests/differential/runner.h"
#include "tests/differential/sequence.h"

namespace {

using differential::Outcome;

constexpr size_t kSequenceCalls = 1000;

struct Options {
    uint64_t calls = 200000; /**< 0: until stopped */
    uint64_t seed = 1;
    const char *trace = nullptr;
    bool prints_script = false;
};

int usage() {
    std::fprintf(stderr,
                 "usage: differential [CALLS [SEED]] [--trace FILE | --script] [--falsify CALL]\n"
                 "  CALLS  number of calls, by default 200000; 0: until stopped\n"
                 "  SEED   the same seed gives the same calls on every machine; by default 1\n"
                 "  --trace FILE  writes every call with everything that it did\n"
                 "  --script      prints the calls as a script for adpsh, without making them\n"
                 "  --falsify CALL  changes that call's result, to see that the difference is found\n");
    return 2;
}

bool read_number(const char *text, uint64_t *number) {
    char *end = nullptr;
    *number = std::strtoull(text, &end, 10);
    return *text >= '0' && *text <= '9' && *end == '\0';
}

bool read_options(int argc, char **argv, Options *options) {
    constexpr option kLong[] = {{"trace", required_argument, nullptr, 't'},
                                {"script", no_argument, nullptr, 's'},
                                {"falsify", required_argument, nullptr, 'f'},
                                {nullptr, 0, nullptr, 0}};
    for (int c = getopt_long(argc, argv, "", kLong, nullptr); c != -1;
         c = getopt_long(argc, argv, "", kLong, nullptr)) {
        if (c == 't') {
            options->trace = optarg;
        } else if (c == 'f') {
            differential::falsify(optarg);
        } else if (c == 's') {
            options->prints_script = true;
        } else {
            return false;
        }
    }
    uint64_t *const numbers[] = {&options->calls, &options->seed};
    for (int n = 0; optind + n < argc; ++n) {
        if (n >= 2 || !read_number(argv[optind + n], numbers[n])) {
            return false;
        }
    }
    return true;
}

/** The number of functions that were never called; in a long run there must be none. */
int count_missed(uint64_t calls) {
    constexpr uint64_t kLongRun = 20000;
    int missed = 0;
    for (size_t n = 0; n < exported::calls().size() && calls >= kLongRun; ++n) {
        if (differential::counts().calls[n] == 0) {
            std::printf("differential: %s was never called\n", exported::calls()[n].name);
            ++missed;
        }
    }
    return missed;
}

int report_failure(const differential::Sequence &sequence, const Outcome &outcome, uint64_t seed, uint64_t number) {
    const bool crashed = outcome.end == Outcome::End::kCrashed;
    std::printf("\ndifferential: FAILED: %s in %s, call %zu of sequence %llu of seed %llu\n",
                crashed ? "the process ended" : "library and model differ",
                differential::name_of(sequence[outcome.step]), outcome.step, static_cast<unsigned long long>(number),
                static_cast<unsigned long long>(seed));
    const auto shrunk = differential::shrink(sequence, outcome);
    std::printf("shrunk from %zu calls to %zu\n", outcome.step + 1, shrunk.size());
    std::fflush(stdout);
    differential::report(shrunk);
    return 1;
}

uint64_t sequence_seed(const Options &options, uint64_t number) {
    return differential::scramble(options.seed) + number;
}

void print_script(const Options &options) {
    uint64_t made = 0;
    for (uint64_t number = 0; options.calls == 0 || made < options.calls; ++number, made += kSequenceCalls) {
        std::printf("# sequence %llu\n", static_cast<unsigned long long>(number));
        for (const differential::Step &step :
             differential::make_sequence(sequence_seed(options, number), kSequenceCalls)) {
            std::printf("%s\n", differential::Comparison::script(step).c_str());
        }
    }
}

int run(const Options &options, std::FILE *trace) {
    using std::chrono::steady_clock;
    constexpr std::chrono::seconds kShownEvery(5);
    const auto start = steady_clock::now();
    const auto seconds = [&start] { return std::chrono::duration<double>(steady_clock::now() - start).count(); };
    auto shown = start;
    uint64_t made = 0;
    for (uint64_t number = 0; options.calls == 0 || made < options.calls; ++number) {
        const uint64_t left = options.calls == 0 ? kSequenceCalls : options.calls - made;
        const auto size = static_cast<size_t>(std::min<uint64_t>(kSequenceCalls, left));
        const auto sequence = differential::make_sequence(sequence_seed(options, number), size);
        if (trace != nullptr) {
            std::fprintf(trace, "== sequence %llu\n", static_cast<unsigned long long>(number));
        }
        const Outcome outcome = differential::run(sequence, trace);
        if (outcome.end != Outcome::End::kAgreed) {
            return report_failure(sequence, outcome, options.seed, number);
        }
        made += size;
        if (steady_clock::now() - shown >= kShownEvery) {
            shown = steady_clock::now();
            std::printf("%llu calls, %.0f a second\n", static_cast<unsigned long long>(made),
                        static_cast<double>(made) / seconds());
            std::fflush(stdout);
        }
    }
    if (count_missed(made) != 0) {
        return 1;
    }
    std::printf("differential: %llu calls of %zu functions agree, and %llu calls that they made (seed %llu, %.1f s)\n",
                static_cast<unsigned long long>(made), exported::calls().size(),
                static_cast<unsigned long long>(differential::counts().imported_calls),
                static_cast<unsigned long long>(options.seed), seconds());
    return 0;
}

}  // namespace

int main(int argc, char **argv) {
    Options options;
    if (!read_options(argc, argv, &options)) {
        return usage();
    }
    if (options.prints_script) {
        print_script(options);
        return 0;
    }
    std::FILE *trace = nullptr;
    if (options.trace != nullptr && (trace = std::fopen(options.trace, "w")) == nullptr) {
        std::perror(options.trace);
        return 2;
    }
    const int status = run(options, trace);
    if (trace != nullptr && std::fclose(trace) != 0) {
        std::perror(options.trace);
        return 2;
    }
    return status;
}
