// adptrace record: its options, and what it says at the end.
#include "tools/adptrace/command.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tools/adptrace/record/program.h"
#include "tools/adptrace/record/recording_file.h"
#include "tools/adptrace/record/silence.h"

namespace adptrace::record {
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
        "a running program cannot be recorded: what it has called so far is unknown, and no library can be put in "
        "front of "
        "its calls any more. Start it again, with 'adptrace record -- PROGRAM' in its place.");
}

constexpr std::string_view kOutput = "--output=";

/** Takes an option. @return how many words it has */
size_t take(Options &options, std::span<const std::string> words) {
    const std::string &word = words[0];
    if (word == "-o" && words.size() < 2) {
        throw Refusal("'-o' needs a file.");
    }
    if (word == "-o" || word.starts_with(kOutput)) {
        options.file = word == "-o" ? words[1] : word.substr(kOutput.size());
        return word == "-o" ? 2 : 1;
    }
    if (word == "-f" || word == "--follow") {
        options.follows = true;
    } else if (word == "--frames") {
        options.frames = true;
    } else if (word.starts_with("-p") || word.starts_with("--pid")) {
        refuse_running();
    } else {
        throw Refusal("there is no option '" + word + "'; adptrace record --help lists them.");
    }
    return 1;
}

Options options_of(std::span<const std::string> arguments) {
    Options options;
    size_t index = 0;
    while (index < arguments.size() && arguments[index].starts_with('-')) {
        if (arguments[index] == "--") {
            ++index;
            break;
        }
        index += take(options, arguments.subspan(index));
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
    std::string text = options.file + ": " + std::to_string(contents.calls) +
                       (contents.calls == 1 ? " call, " : " calls, ") + size_text(contents.octets) + ".";
    if (contents.octets == 0) {
        text = options.file + ": the recording was removed while the program ran.";
    } else if (contents.processes == 0) {
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
}  // namespace adptrace::record

namespace adptrace {

extern const Command kRecord = {
    "record", "[-o FILE] [-f] [--frames] -- PROGRAM [ARGUMENT...]",
    "Runs a program and records its calls of the library, the driver and the services",
    "  -o, --output=FILE          The recording; by default the name of the program with '.adptrace', in this folder. "
    "An\n"
    "                             older recording is replaced, another file is not\n"
    "  -f, --follow               Record the processes that it starts, too, and those that go on in the background\n"
    "      --frames               Record the frames that it sends and receives on packet sockets; those of rings in\n"
    "                             memory are not seen\n"
    "  -p, --pid=PID              Say why a running program cannot be recorded\n\n"
    "A line is in the file before the call goes on, so a crash loses nothing. When the disk is full the recording "
    "stops\n"
    "with a sentence, and the program goes on. The status is the program's, or 128 and the signal that ended it.\n"
    "What is linked statically, is setuid, or is found by the program's own dlsym() cannot be recorded.\n",
    record::run};

}  // namespace adptrace
