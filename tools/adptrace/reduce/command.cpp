// adptrace reduce: its command line, and the runs of the command on parts of the recording.
#include "tools/adptrace/command.h"

#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <numeric>

#include "tools/adptrace/options.h"
#include "tools/adptrace/recording/recording.h"
#include "tools/adptrace/reduce/minimize.h"
#include "tools/adptrace/reduce/pieces.h"
#include "tools/adptrace/reduce/progress.h"
#include "tools/adptrace/reduce/shell_command.h"

namespace adptrace {
namespace {

using std::chrono::milliseconds;

struct Task {
    std::string file;
    std::string out;
    std::string command;
    std::optional<milliseconds> limit;
};

milliseconds time_of(const std::string &word) {
    constexpr double kMostSeconds = 86400;
    double seconds = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), seconds);
    if (error != std::errc() || end != word.data() + word.size() || !(seconds > 0 && seconds <= kMostSeconds)) {
        throw Refusal("--time needs a number of seconds up to 86400, not '" + word + "'.");
    }
    return std::chrono::ceil<milliseconds>(std::chrono::duration<double>(seconds));
}

bool is_same_file(const std::string &a, const std::string &b) {
    std::error_code error;
    return std::filesystem::equivalent(a, b, error);
}

/** The result takes the place of what is there. */
void check_out(const Task &task) {
    std::error_code error;
    if (is_same_file(task.file, task.out)) {
        throw Refusal("the result would overwrite " + task.file + "; give another name with -o.");
    }
    if (std::filesystem::exists(task.out, error) && !std::filesystem::is_regular_file(task.out, error)) {
        throw Refusal(task.out + " is no ordinary file; give another name with -o.");
    }
}

Task task_of(std::span<const std::string> words) {
    Task task;
    const Option known[] = {{"--until", "COMMAND", [&](const std::string &word) { task.command = word; }},
                            {"--output", "FILE", [&](const std::string &word) { task.out = word; }, "-o"},
                            {"--time", "SECONDS", [&](const std::string &word) { task.limit = time_of(word); }}};
    const std::vector<std::string> files = read_options(words, known);
    if (files.size() != 1 || task.command.empty()) {
        throw Refusal("it needs the FILE of a recording, and a command: --until='COMMAND'.");
    }
    task.file = files[0];
    task.out = task.out.empty() ? task.file + ".reduced" : task.out;
    check_out(task);
    return task;
}

/** Runs the command on parts of a recording; the smallest that fails is in the task's file at any time. */
class Reduction {
  public:
    explicit Reduction(const Task &task)
        : task_(task),
          recording_(Recording::of_file(task.file)),
          pieces_(recording_),
          command_(task.command, task.limit),
          candidate_(task.out + ".candidate"),
          progress_(::isatty(STDERR_FILENO) != 0, Progress::Clock::now()) {}
    Reduction(const Reduction &) = delete;
    Reduction &operator=(const Reduction &) = delete;
    ~Reduction() { ::unlink(candidate_.c_str()); }

    /** @return the exit status */
    int run();

  private:
    void check_whole();
    void write_candidate(const Parts &parts) const;
    void keep_candidate();
    std::optional<int> try_parts(const Parts &parts);
    bool fails(const Parts &parts);
    [[nodiscard]] std::string counts() const;
    [[nodiscard]] Parts all() const;

    const Task &task_;
    Recording recording_;
    Pieces pieces_;
    ShellCommand command_;
    std::string candidate_; /**< the file that the command gets */
    Progress progress_;
    Parts smallest_;
    size_t runs_ = 0;
    size_t undecided_ = 0;
    bool is_kept_ = false; /**< whether there is a result */
};

Parts Reduction::all() const {
    Parts parts(pieces_.count());
    std::iota(parts.begin(), parts.end(), 0);
    return parts;
}

void Reduction::write_candidate(const Parts &parts) const {
    std::ofstream file(candidate_, std::ios::binary | std::ios::trunc);
    file << pieces_.text(parts);
    file.close();
    if (!file) {
        throw Refusal(candidate_ + " cannot be written.");
    }
}

void Reduction::keep_candidate() {
    if (std::rename(candidate_.c_str(), task_.out.c_str()) != 0) {
        throw Refusal(task_.out + " cannot be written.");
    }
    is_kept_ = true;
}

std::optional<int> Reduction::try_parts(const Parts &parts) {
    write_candidate(parts);
    ++runs_;
    return command_.run(candidate_);
}

void Reduction::check_whole() {
    if (pieces_.count() == 0) {
        throw Refusal(task_.file + " has no calls.");
    }
    const std::optional<int> status = try_parts(all());
    if (!status) {
        throw Refusal("the command did not end in time on the whole recording.");
    }
    if (*status == 0) {
        throw Refusal("the command succeeds on the whole recording; there is nothing to find.");
    }
    if (*status == ShellCommand::kNotRun || *status == ShellCommand::kNotFound) {
        throw Refusal("the shell cannot run the command: status " + std::to_string(*status) + ".");
    }
    smallest_ = all();
}

bool Reduction::fails(const Parts &parts) {
    std::fputs(progress_.update(counts(), Progress::Clock::now()).c_str(), stderr);
    const std::optional<int> status = try_parts(parts);
    undecided_ += status ? 0U : 1U;
    if (status.value_or(0) == 0) {
        return false;
    }
    if (parts.empty()) {
        throw Refusal("the command fails on a recording without calls, too: it does not depend on them.");
    }
    keep_candidate();
    smallest_ = parts;
    return true;
}

std::string Reduction::counts() const {
    const auto number = [](size_t count, const char *one) {
        return std::to_string(count) + one + (count == 1 ? "" : "s");
    };
    return std::to_string(pieces_.calls(smallest_)) + " of " + number(pieces_.calls(all()), " call") + " left after " +
           number(runs_, " run") + (undecided_ == 0 ? "" : ", " + std::to_string(undecided_) + " undecided");
}

int Reduction::run() {
    int status = EXIT_SUCCESS;
    try {
        check_whole();
        minimize(pieces_.count(), [this](const Parts &parts) { return fails(parts); });
    } catch (const Interrupted &interrupted) {
        status = ShellCommand::kSignalled + interrupted.signal();
    }
    std::fputs(progress_.finish().c_str(), stderr);
    if (smallest_.empty()) {
        throw Refusal("interrupted before anything was known.");
    }
    if (!is_kept_) {
        write_candidate(smallest_);
        keep_candidate();
    }
    std::printf("%s: %s%s\n", task_.out.c_str(), counts().c_str(), status == EXIT_SUCCESS ? "" : ", interrupted");
    return status;
}

int run_reduce(std::span<const std::string> arguments) {
    const Task task = task_of(arguments);
    return Reduction(task).run();
}

}  // namespace

extern const Command kReduce = {
    "reduce", "--until='COMMAND' [OPTION...] FILE",
    "Finds the fewest calls of a recording for which a command still fails",
    "      --until='COMMAND'      What the shell runs; {} is the name of a recording of fewer calls, which otherwise "
    "is\n"
    "                             the last argument. It fails if its status is not 0\n"
    "  -o, --output=FILE          The result, always the smallest so far; by default FILE.reduced\n"
    "      --time=SECONDS         A run that takes longer is ended, and decides nothing\n"
    "\nA call is left out with all that happened during it. An interrupt ends the search.\n",
    run_reduce};

}  // namespace adptrace
