#include "tests/differential/runner.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>

namespace lives {

Counts &counts() {
    static Counts *const shared = [] {
        void *memory = mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            std::perror("lives: mmap");
            std::exit(2);
        }
        return new (memory) Counts{};
    }();
    return *shared;
}

namespace {

constexpr int kParted = 1;
constexpr unsigned kLongestLife = 300;  // seconds; a life that hangs is a crash

/** What @p live gives as the exit status of a child process. */
int run_child(const std::function<int()> &live) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        std::perror("lives: fork");
        std::exit(2);
    }
    if (child == 0) {
        alarm(kLongestLife);
        _exit(live());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

Outcome outcome_of(int status) {
    if (!WIFEXITED(status) || WEXITSTATUS(status) > kParted) {
        return {Outcome::End::kCrashed, counts().step};
    }
    return {WEXITSTATUS(status) == 0 ? Outcome::End::kAgreed : Outcome::End::kParted, counts().step};
}

}  // namespace

Outcome run_life(const std::vector<Step> &steps, std::FILE *trace) {
    counts().step = 0;
    const int status = run_child([&] {
        Life life(trace);
        for (size_t n = 0; n < steps.size(); ++n) {
            counts().step = n;
            ++counts().calls[steps[n].call];
            if (!life.live(steps[n])) {
                return kParted;
            }
        }
        counts().imported_calls += life.imported_calls();
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

/** Answers other than 0 are what a person has to make happen to see the same. */
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

void report_life(const std::vector<Step> &steps) {
    print("\n# As a script for adpsh; what the driver answered other than 0 stands behind each line.");
    const int status = run_child([&] {
        Life life(nullptr);
        life.describe();
        for (const Step &step : steps) {
            print(Life::script(step));
            const bool agrees = life.live(step);
            print_answers(life.lines());
            if (!agrees) {
                print("\n# Library and model part in " + life.difference().what);
                print_side("The library made", life.difference().library);
                print_side("The model made", life.difference().model);
            }
        }
        return 0;
    });
    if (!WIFEXITED(status)) {
        print("\n# That call did not return: " + std::string(strsignal(WTERMSIG(status))));
    }
}

std::vector<Step> shrink(std::vector<Step> steps, const Outcome &outcome) {
    steps.resize(outcome.step + 1);
    const size_t call = steps.back().call;
    const auto still_ends = [&](const std::vector<Step> &candidate) {
        const Outcome now = run_life(candidate, nullptr);
        return now.end == outcome.end && now.step + 1 == candidate.size() && candidate.back().call == call;
    };
    // Takes out ever smaller pieces; the last step is what it is about and stays.
    for (size_t piece = steps.size() / 2; piece >= 1;) {
        bool was_shortened = false;
        for (size_t at = 0; at + piece < steps.size();) {
            std::vector<Step> candidate = steps;
            const auto from = candidate.begin() + static_cast<ptrdiff_t>(at);
            candidate.erase(from, from + static_cast<ptrdiff_t>(piece));
            if (still_ends(candidate)) {
                steps = std::move(candidate);
                was_shortened = true;
            } else {
                at += piece;
            }
        }
        piece = was_shortened && piece == 1 ? 1 : piece / 2;
    }
    return steps;
}

}  // namespace lives
