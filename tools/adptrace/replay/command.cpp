// The command `replay`.
#include "tools/adptrace/command.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

#include "text/printable.h"
#include "tools/adptrace/replay/driver_only.h"
#include "tools/adptrace/replay/faults.h"
#include "tools/adptrace/replay/loaded.h"
#include "tools/adptrace/replay/options.h"

namespace adptrace {
namespace replay {
namespace {

constexpr int kDiffers = 1;
constexpr int kTrouble = 2;
constexpr char kLibrary[] = "libadp.so";
const std::vector<std::string> kDrivers = {"libnetlink_api.so", "libdevice_services.so"};

std::string counted(size_t count, const std::string &what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/** Shows on a terminal how far it is. */
class ProgressLine {
  public:
    ~ProgressLine() {
        if (is_shown_) {
            std::fputs("\r\033[K", stderr);
        }
    }
    void operator()(size_t done, size_t all) {
        const auto now = std::chrono::steady_clock::now();
        if (!is_terminal_ || now < next_) {
            return;
        }
        next_ = now + kBetween;
        is_shown_ = true;
        std::fprintf(stderr, "\r%zu of %zu calls", done, all);
    }

  private:
    static constexpr std::chrono::milliseconds kBetween{200};
    const bool is_terminal_ = isatty(STDERR_FILENO) == 1;
    std::chrono::steady_clock::time_point next_ = std::chrono::steady_clock::now() + kBetween;
    bool is_shown_ = false;
};

size_t process_index(const Recording &recording, std::optional<uint64_t> id) {
    const auto &processes = recording.processes();
    for (size_t index = 0; index < processes.size(); ++index) {
        if (!id || processes[index].id == static_cast<int64_t>(*id)) {
            return index;
        }
    }
    throw Refusal(id ? "the recording has no process " + std::to_string(*id) + "." : "the recording has no process.");
}

/** The line with which a call begins. */
size_t line_of_call(const Recording &recording, size_t process, uint64_t number) {
    for (const Call &call : recording.calls()) {
        if (call.process == process && call.number == number) {
            return call.line;
        }
    }
    throw Refusal("the process has no call " + std::to_string(number) + ".");
}

Options options_of(const Recording &recording, const CommandLine &line) {
    Options options;
    options.process = process_index(recording, line.process);
    if (line.until_line) {
        options.last_line = static_cast<size_t>(*line.until_line);
    } else if (line.until_call) {
        options.last_line = line_of_call(recording, options.process, *line.until_call);
    }
    options.is_to_keep_going = line.is_to_keep_going || line.is_driver_only;
    options.is_to_crash = line.is_to_crash;
    options.is_to_send_frames = line.is_to_send_frames;
    return options;
}

std::unique_ptr<Driver> driver_of(const CommandLine &line) {
    if (!line.is_driver_recorded) {
        return std::make_unique<LoadedDriver>(line.drivers.empty() ? kDrivers : line.drivers);
    }
    try {
        // libadp names a driver library, which has to be there although no call reaches it.
        const LoadedDriver unused(kDrivers);
    } catch (const Refusal &) {  // then the loader finds one, or says what is missing
    }
    return nullptr;
}

/** What has been done, in one sentence. */
std::string sentence(const Outcome &outcome, const CommandLine &line) {
    std::string text = "Made ";
    if (!line.is_driver_only) {
        text += counted(outcome.library_calls, "library call") + " and ";
    }
    text += counted(outcome.driver_calls, "driver call");
    if ((line.until_line || line.until_call) && outcome.last != nullptr) {
        text += ", the last " + std::string(outcome.last->name) + " of line " + std::to_string(outcome.last->line);
    }
    return text + ": " + (outcome.differences == 0 ? "no difference" : counted(outcome.differences, "difference")) +
           ".";
}

Outcome play(const Recording &recording, const CommandLine &line, const Reporter &reporter) {
    const Options options = options_of(recording, line);
    const std::unique_ptr<Driver> driver = driver_of(line);
    ProgressLine progress;
    const auto show = [&progress](size_t done, size_t all) { progress(done, all); };
    if (line.is_driver_only) {
        return DriverReplay(recording, driver.get(), options, reporter).run(show);
    }
    LoadedLibrary library(line.library.empty() ? kLibrary : line.library);
    return Replay(recording, library, driver.get(), options, reporter).run(show);
}

int run(std::span<const std::string> arguments) {
    const CommandLine line = command_line_of(arguments);
    const Recording recording = Recording::of_file(line.file);
    report_crashes(line.is_to_crash ? -1 : kTrouble);
    bool is_shown = false;
    const Outcome outcome = play(recording, line, [&](const std::string &text) {
        if (!is_shown || line.is_to_keep_going) {
            std::fputs(text.c_str(), stdout);
        }
        is_shown = true;
    });
    if (!outcome.reason.empty()) {
        std::printf("%s\n", text::on_one_line(outcome.reason).c_str());
    }
    std::printf("%s\n", sentence(outcome, line).c_str());
    if (outcome.differences > 0) {
        return kDiffers;
    }
    return outcome.is_trouble ? kTrouble : EXIT_SUCCESS;
}

}  // namespace
}  // namespace replay

extern const Command kReplay = {"replay", "[OPTION...] FILE", "Makes the calls of a recording again, and compares",
                                replay::kHelp, replay::run};

}  // namespace adptrace
