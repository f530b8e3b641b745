// Child processes, reports and shrinking.
#include "tests/differential/runner.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <new>
#include <string>

#include "tests/differential/comparison.h"
#include "tools/adptrace/reduce/minimize.h"

#ifdef ADP_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace differential {

Counts &counts() {
    static Counts *const shared = [] {
        void *memory = mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            std::perror("differential: mmap");
            std::exit(2);
        }
        return new (memory) Counts{};
    }();
    return *shared;
}

namespace {

constexpr int kDiffered = 1;
constexpr unsigned kMostSeconds = 300;  // a sequence that hangs is a crash

/** The wait status of a child process that ends with the status of @p body. */
int run_child(const std::function<int()> &body) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        std::perror("differential: fork");
        std::exit(2);
    }
    if (child == 0) {
        alarm(kMostSeconds);
        const int status = body();
#ifdef ADP_COVERAGE
        __gcov_dump();  // _exit() does not write what this process has counted
#endif
        _exit(status);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

Outcome outcome_of(int status) {
    if (!WIFEXITED(status) || WEXITSTATUS(status) > kDiffered) {
        return {Outcome::End::kCrashed, counts().step};
    }
    return {WEXITSTATUS(status) == 0 ? Outcome::End::kAgreed : Outcome::End::kDiffered, counts().step};
}

}  // namespace

Outcome run(const Sequence &sequence, std::FILE *trace) {
    counts().step = 0;
    const int status = run_child([&] {
        Comparison comparison(trace, false);
        for (size_t n = 0; n < sequence.size(); ++n) {
            counts().step = n;
            ++counts().calls[sequence[n].call];
            if (!comparison.run(sequence[n])) {
                return kDiffered;
            }
        }
        counts().imported_calls += comparison.imported_calls();
        if (trace != nullptr) {
            std::fflush(trace);
        }
        return 0;
    });
    return outcome_of(status);
}

namespace {

void print(const std::string &line) {
    dprintf(STDOUT_FILENO, "%s\n", line.c_str());
}

/** Answers other than 0, which have to be produced by hand to see the same. */
void print_answers(const std::vector<std::string> &lines) {
    for (const std::string &line : lines) {
        const size_t arrow = line.rfind(" -> ");
        if (arrow != std::string::npos && line[arrow + 4] != '0') {
            print("#   " + line);
        }
    }
}

void print_side(const char *name, const std::vector<std::string> &lines) {
    print(std::string("# ") + name);
    for (const std::string &line : lines) {
        print("#   " + line);
    }
    if (lines.empty()) {
        print("#   no call");
    }
}

}  // namespace

void report(const Sequence &sequence) {
    print("\n# As a script for adpsh. Each line is followed by the driver's answers other than 0.");
    const int status = run_child([&] {
        Comparison comparison(nullptr, true);
        for (const Step &step : sequence) {
            print(Comparison::script(step));
            const bool agrees = comparison.run(step);
            print_answers(comparison.lines());
            if (!agrees) {
                print("\n# Library and model differ in " + comparison.difference().what);
                print_side("The library made", comparison.difference().library);
                print_side("The model made", comparison.difference().model);
            }
        }
        return 0;
    });
    if (!WIFEXITED(status)) {
        print("\n# That call did not return: " + std::string(strsignal(WTERMSIG(status))));
    }
}

Sequence shrink(Sequence sequence, const Outcome &outcome) {
    sequence.resize(outcome.step + 1);
    // The last step is the one that differs, and stays.
    const auto candidate_of = [&sequence](const adptrace::Parts &steps) {
        Sequence candidate;
        std::transform(steps.begin(), steps.end(), std::back_inserter(candidate),
                       [&sequence](size_t step) { return sequence[step]; });
        candidate.push_back(sequence.back());
        return candidate;
    };
    return candidate_of(adptrace::minimize(outcome.step, [&](const adptrace::Parts &steps) {
        const Outcome now = run(candidate_of(steps), nullptr);
        return now.end == outcome.end && now.step == steps.size();
    }));
}

}  // namespace differential
