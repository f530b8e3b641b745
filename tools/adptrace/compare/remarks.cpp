// One line for each.
#include "tools/adptrace/compare/remarks.h"

#include <nlohmann/json.hpp>

#include "text/printable.h"

namespace adptrace {
namespace {

using nlohmann::json;

std::string library_of(const Recording &recording) {
    for (const Process &process : recording.processes()) {
        if (!process.library.empty()) {
            return text::on_one_line(process.library);
        }
    }
    return "unknown";
}

std::string machine_of(const Recording &recording) {
    const Header &header = recording.header();
    return std::to_string(header.word_bits) + (header.is_big_endian ? " bits, big-endian" : " bits, little-endian");
}

std::string board_of(const Recording &recording) {
    return recording.boards().empty() ? "unknown" : json::parse(recording.boards().back().text)["board"].dump();
}

std::string end_of(const Recording &recording) {
    const auto has_signal = [](const Process &process) { return process.signal.has_value(); };
    for (const Process &process : recording.processes()) {
        if (has_signal(process)) {
            return "signal " + std::to_string(*process.signal);
        }
    }
    const auto &processes = recording.processes();
    const bool is_known = !processes.empty() && processes.front().status.has_value();
    return is_known ? "exit status " + std::to_string(*processes.front().status) : "unknown";
}

}  // namespace

std::string remarks_on(const Recording &a, const Recording &b, const CompareOptions &options) {
    std::string text;
    const auto remark = [&](const std::string &what, const std::string &of_a, const std::string &of_b) {
        if (of_a != of_b) {
            text += "remark: " + what + ": " + of_a + " | " + of_b + "\n";
        }
    };
    remark("library builds", library_of(a), library_of(b));
    remark("machines", machine_of(a), machine_of(b));
    remark("number of processes", std::to_string(a.processes().size()), std::to_string(b.processes().size()));
    remark("end of the program", end_of(a), end_of(b));
    if (board_of(a) != board_of(b)) {
        text += "remark: the port maps differ\n";
    }
    const auto say_cut = [&](const Recording &recording, const std::string &name) {
        text += recording.is_cut() ? "remark: the last line of " + name + " is cut\n" : "";
    };
    say_cut(a, options.name_a);
    say_cut(b, options.name_b);
    return text;
}

}  // namespace adptrace
