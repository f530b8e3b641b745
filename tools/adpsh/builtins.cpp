// The table of the shell's own commands, and the short ones.
#include "tools/adpsh/builtins.h"

#include "calls/describe.h"
#include "tools/adpsh/device.h"
#include "tools/adpsh/line_error.h"
#include "tools/adpsh/session.h"

#include <adp/adp.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <optional>
#include <thread>

namespace adpsh {

namespace {

constexpr double kMaxSeconds = 60;
constexpr double kMillisecondsPerSecond = 1000;
constexpr double kDefaultWait = 5;
constexpr const char *kCpuInterface = "eth0";
constexpr const char *kFrameVariable = "frame";
constexpr size_t kMostDeviceWords = 16;
// The default board: user port i is the chip's port i + 3, the CPU its port 0.
constexpr uint32_t kFirstPhysicalPort = 3;

Answer done() {
    return {{}, {{"result", 0}}};
}

std::chrono::milliseconds seconds_of(const std::string &word) {
    double seconds = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), seconds);
    if (error != std::errc() || end != word.data() + word.size() || !(seconds >= 0 && seconds <= kMaxSeconds)) {
        throw LineError(fmt::format("'{}' is not a time between 0 and {} seconds", word, kMaxSeconds));
    }
    return std::chrono::milliseconds(static_cast<long>(seconds * kMillisecondsPerSecond));
}

void require(adp_status_t status, const char *call) {
    if (status != ADP_OK) {
        throw LineError(fmt::format("{} returned {}", call, status));
    }
}

Answer run_map(Session &, const Command &command) {
    words_of(command, 0);
    fill_map();
    return {fmt::format("user ports 1..{} are the physical ports {}..{}, the CPU port is 0", ADP_USER_PORTS,
                        1 + kFirstPhysicalPort, ADP_USER_PORTS + kFirstPhysicalPort),
            {{"result", 0}}};
}

Answer run_trace(Session &session, const Command &command) {
    const std::vector<std::string> words = words_of(command, 1);
    if (words.size() != 1 || (words[0] != "on" && words[0] != "off")) {
        throw LineError("usage: trace on|off");
    }
    session.trace(words[0] == "on");
    return done();
}

Answer run_set(Session &session, const Command &command) {
    if (command.arguments.size() != 1 || command.arguments[0].name.empty()) {
        throw LineError("usage: set NAME = HEX");
    }
    const Argument &argument = command.arguments[0];
    session.variables()[argument.name] = bytes_of(argument.value, session.variables());
    return done();
}

Answer run_listen(Session &session, const Command &command) {
    words_of(command, 0);
    session.frames().open(kCpuInterface);
    return done();
}

Answer run_wait_frame(Session &session, const Command &command) {
    const std::vector<std::string> words = words_of(command, 1);
    const std::chrono::milliseconds time =
        words.empty() ? std::chrono::milliseconds(static_cast<long>(kDefaultWait * kMillisecondsPerSecond))
                      : seconds_of(words[0]);
    session.frames().open(kCpuInterface);
    session.variables().erase(kFrameVariable);
    const std::optional<Bytes> frame = session.frames().wait(time);
    if (!frame) {
        return {fmt::format("no frame within {} ms", time.count()), {{"frame", nullptr}}};
    }
    session.variables()[kFrameVariable] = *frame;
    const std::string hex = calls::hex_text(frame->data(), frame->size());
    return {"frame = " + hex, {{"frame", hex}}};
}

Answer run_sleep(Session &, const Command &command) {
    const std::vector<std::string> words = words_of(command, 1);
    if (words.size() != 1) {
        throw LineError("usage: sleep SECONDS");
    }
    std::this_thread::sleep_for(seconds_of(words[0]));
    return done();
}

Answer run_quit(Session &session, const Command &) {
    session.end();
    return done();
}

constexpr std::array kBuiltins = {
    Builtin{"help", "[WORD]", "this overview; a call, constant, struct, table or topic; or all that has the word",
            run_help},
    Builtin{"?", "[WORD]", "the same", run_help},
    Builtin{"calls", "[WORD]", "the library's calls, or those about a word; also a pattern with * and ?", run_calls},
    Builtin{"device", "[SUBJECT]", "asks the running device: device ports, device macs; alone lists the subjects",
            run_device},
    Builtin{"show", "[TABLE]", "the library's exported tables, or one of them", run_show},
    Builtin{"audit", "", "what the library's tables say against what the driver reads back; changes nothing",
            run_audit},
    Builtin{"map", "", "fills the port map for the default board: 26 ports, user port i at physical port i + 3",
            run_map},
    Builtin{"trace", "on|off", "shows the driver calls of each call", run_trace},
    Builtin{"set", "NAME = HEX", "stores a byte string; later lines can use it as $NAME", run_set},
    Builtin{"listen", "", "starts to receive on eth0, so that wait_frame misses no frame", run_listen},
    Builtin{"wait_frame", "[SECONDS]", "waits for the next frame on eth0 and stores it as $frame", run_wait_frame},
    Builtin{"sleep", "SECONDS", "waits, at most 60 seconds", run_sleep},
    Builtin{"echo", "TEXT", "prints the text", nullptr},
    Builtin{"quit", "", "ends the shell", run_quit},
    Builtin{"exit", "", "ends the shell", run_quit},
};

}  // namespace

void fill_map() {
    require(adp_set_max_phy_port_num(ADP_USER_PORTS), "adp_set_max_phy_port_num");
    require(adp_add_cpu_port(0, 0, 0, 0, 0), "adp_add_cpu_port");
    for (uint32_t i = 1; i <= ADP_USER_PORTS; ++i) {
        require(adp_add_phy_port(i, 0, 0, i + kFirstPhysicalPort, 0), "adp_add_phy_port");
    }
}

Answer run_device(Session &session, const Command &command) {
    std::vector<std::string> words = words_of(command, kMostDeviceWords);
    if (words.empty()) {
        words.emplace_back("help");
    }
    return ask_device(words, session.is_json());
}

std::span<const Builtin> builtins() {
    return kBuiltins;
}

const Builtin *find_builtin(std::string_view name) {
    const auto *const found = std::find_if(kBuiltins.begin(), kBuiltins.end(),
                                           [name](const Builtin &builtin) { return builtin.name == name; });
    return found == kBuiltins.end() ? nullptr : found;
}

std::vector<std::string> words_of(const Command &command, size_t most) {
    std::vector<std::string> words;
    for (const Argument &argument : command.arguments) {
        const bool plain = argument.name.empty() && argument.value.form == Value::Form::kWord;
        if (!plain || words.size() == most) {
            throw LineError(fmt::format("usage: {} {}", command.name, find_builtin(command.name)->arguments));
        }
        words.push_back(argument.value.text);
    }
    return words;
}

}  // namespace adpsh
