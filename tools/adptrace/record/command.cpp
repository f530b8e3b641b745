// adptrace record: its options, and what it says at the end.
#include "tools/adptrace/command.h"

#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/adptrace/record/program.h"
#include "tools/adptrace/record/recording_file.h"
#include "tools/adptrace/record/silence.h"

namespace adptrace {
namespace {

constexpr int kSignalStatus = 128; /**< a shell's status of a program that a signal has ended is this and the signal */

struct Options {
    std::string file;
    bool follows = false;
    bool frames = false;
    std::vector<std::string> program;
};

[[noreturn]] void refuse_running() {
    throw Refusal(
        "a running program cannot be recorded: what it has called so far is unknown, and no library can be put in front of "
        "its calls any more. Start it again, with 'adptrace record -- PROGRAM' in its place.");
}

const std::string &value_of(std::span<const std::string> arguments, size_t index) {
    if (index + 1 >= arguments.size()) {
        throw Refusal("'" + arguments[index] + "' needs a file.");
    }
    return arguments[index + 1];
}

Options options_of(std::span<const std::string> arguments) {
    Options options;
    size_t index = 0;
    for (; index < arguments.size() && arguments[index].starts_with('-'); ++index) {
        const std::string &word = arguments[index];
        if (word == "--") {
            ++index;
            break;
        }
        if (word == "-o") {
            options.file = value_of(arguments, index++);
        } else if (word == "-f") {
            options.follows = true;
        } else if (word == "--frames") {
            options.frames = true;
        } else if (word == "-p") {
            refuse_running();
        } else {
            throw Refusal("there is no option '" + word + "'; adptrace record --help lists them.");
        }
    }
    options.program.assign(arguments.begin() + static_cast<ptrdiff_t>(index), arguments.end());
    if (options.program.empty()) {
        throw Refusal("which program? adptrace record [-o FILE] [-f] [--frames] -- PROGRAM...");
    }
    if (options.file.empty()) {
        options.file = std::filesystem::path(options.program[0]).filename().string() + ".adptrace";
    }
    return options;
}

std::string size_text(uint64_t octets) {
    constexpr uint64_t kKilo = 1024;
    if (octets < kKilo * kKilo) {
        return std::to_string((octets + kKilo - 1) / kKilo) + " KiB";
    }
    return std::to_string(octets / kKilo / kKilo) + " MiB";
}

/** One line on standard error, whatever the program has written there. */
void say(const Options &options, const std::string &program, const Contents &contents) {
    std::string text = options.file + ": " + std::to_string(contents.calls) + (contents.calls == 1 ? " call, " : " calls, ") +
                       size_text(contents.octets) + ".";
    if (contents.processes == 0) {
        text = "nothing was recorded: " + why_silent(program, options.follows);
    } else if (contents.calls == 0) {
        text += " " + options.program[0] + " made none." +
                (options.follows ? "" : " If a program that it starts makes them, record with -f.");
    }
    std::fprintf(stderr, "adptrace: %s\n", text.c_str());
}

int run(std::span<const std::string> arguments) {
    const Options options = options_of(arguments);
    const std::string program = program_file(options.program[0]);
    const std::string library = recorder_library();
    RecordingFile recording(options.file);
    recording.write_header(options.program);
    const Session session = recording.session(options.follows, options.frames);
    const Ending ending = [&] {
        try {
            return run_program(program, options.program, library, recording.path(), session);
        } catch (const Refusal &) {
            recording.remove();
            throw;
        }
    }();
    const Contents contents = recording.contents(ending.process);
    if (contents.has_process) {
        recording.write_exit(ending);
    }
    say(options, program, contents);
    return ending.signal != 0 ? kSignalStatus + ending.signal : ending.status;
}

}  // namespace

extern const Command kRecord = {
    "record", "[-o FILE] [-f] [--frames] -- PROGRAM...",
    "runs a program and records its calls of libadp, the driver and the services",
    "  -o FILE     the recording; by default the name of the program with '.adptrace'. Another recording is replaced\n"
    "  -f          records the processes that it starts, too, and those that go on in the background\n"
    "  --frames    records the frames that are sent and received on packet sockets, but not those of rings in memory\n"
    "  -p PID      says why a running program cannot be recorded\n\n"
    "Each line is in the file before the call goes on, so what a crash leaves can be read. A program that is linked\n"
    "statically or is setuid cannot be recorded, nor can what it calls by dlsym() of its own.\n"
    "The status is the program's, or 128 and the signal that ended it.\n",
    run};

}  // namespace adptrace
