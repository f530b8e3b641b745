// Everything that a recording says is made printable: it may be hostile.
#include "tools/adptrace/show/call_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

#include "text/printable.h"
#include "tools/adptrace/show/literals.h"
#include "tools/adptrace/show/times.h"

namespace adptrace {
namespace {

using nlohmann::json;

constexpr size_t kShownOctets = 32;
constexpr const char *kRed = "\x1b[31m";
constexpr const char *kPlain = "\x1b[0m";

struct Signal {
    int32_t number;
    const char *name;
};

/** Those that have the same number on every machine. */
constexpr Signal kSignals[] = {{1, "SIGHUP"},   {2, "SIGINT"},   {3, "SIGQUIT"},  {4, "SIGILL"},
                               {5, "SIGTRAP"},  {6, "SIGABRT"},  {8, "SIGFPE"},   {9, "SIGKILL"},
                               {11, "SIGSEGV"}, {13, "SIGPIPE"}, {14, "SIGALRM"}, {15, "SIGTERM"}};

/** The arguments of a known call, without those that it only writes. */
json inputs_of(const KnownCall *known, const json &arguments) {
    json inputs = arguments;
    for (const calls::Param &param : known == nullptr ? std::span<const calls::Param>() : known->params) {
        if (!param.is_read()) {
            inputs.erase(param.name);
        }
    }
    return inputs;
}

/** What a parameter says that the call has left zero. */
json zero_of(const calls::Param &param) {
    const bool is_one = param.counted_by == calls::kNotCounted && param.extent == 1;
    if (param.shape == calls::Shape::kOutPointer) {
        return nullptr;
    }
    if (param.element.kind == calls::Kind::kStruct && is_one) {
        return json::object();
    }
    const calls::Kind kind = param.element.kind;
    if (!is_one && (kind == calls::Kind::kU8 || kind == calls::Kind::kOpaque || kind == calls::Kind::kChar)) {
        return "";
    }
    if (!is_one) {
        return json::array();
    }
    return 0U;
}

/** The outputs, with those that the call wrote as they were before: a recording has only changes. */
json all_outputs(const KnownCall *known, const json &arguments, const json &end, bool is_failure) {
    json outputs = end["outputs"];
    for (const calls::Param &param : known == nullptr ? std::span<const calls::Param>() : known->params) {
        const auto before = arguments.find(param.name);
        const bool is_null = before != arguments.end() && before->is_null();
        if (!is_failure && !param.is_read() && !is_null && !outputs.contains(param.name)) {
            outputs[param.name] = before != arguments.end() ? *before : zero_of(param);
        }
    }
    return outputs;
}

std::string signal_text(int32_t number) {
    const auto *const found = std::find_if(std::begin(kSignals), std::end(kSignals),
                                           [number](const Signal &each) { return each.number == number; });
    return found == std::end(kSignals) ? fmt::format("signal {}", number)
                                       : fmt::format("{} (signal {})", found->name, number);
}

}  // namespace

std::string call_text(const Call &call, const Style &style) {
    const KnownCall *const known = known_call(call.name);
    const json arguments = arguments_of(call);
    const std::string text =
        fmt::format("{}({})", call.name, values_text(known, inputs_of(known, arguments), arguments, style.length));
    if (!call.has_returned) {
        return text + " = ?  (did not return)";
    }
    const json end = end_of(call);
    const bool is_failure = has_failed(call, end["result"]);
    const std::string outputs =
        values_text(known, all_outputs(known, arguments, end, is_failure), arguments, style.length);
    const std::string result = result_text(known, end["result"], style.length);
    const bool is_red = style.has_colours && is_failure;
    const std::string duration = "  (" + duration_text(time_between(call.began, call.ended)) + ")";
    return fmt::format("{} = {}{}{}{}{}", text, is_red ? kRed : "", result, is_red ? kPlain : "",
                       outputs.empty() ? "" : " {" + outputs + "}", style.has_duration ? duration : "");
}

std::string frame_text(const Frame &frame, const Style &style) {
    const size_t count = frame.octets.size() / 2;
    const size_t shown = style.length == Length::kShort ? std::min(count, kShownOctets) : count;
    return fmt::format("{} {} {} octets {}{}", text::on_one_line(frame.interface), frame.is_sent ? "sent" : "received",
                       count, octets_text(frame.octets, shown), shown < count ? ".." : "");
}

std::string board_text(const Board &board) {
    const json rows = std::move(json::parse(board.text)["board"]);
    json ports = json::array();
    for (const json &row : rows) {
        ports.push_back(row.is_object() && row.contains("phy") ? row["phy"] : json());
    }
    return fmt::format("--- port map of {} rows: {}", rows.size(),
                       values_text(nullptr, {{"phy", std::move(ports)}}, json::object(), Length::kFull));
}

std::string start_text(const Process &process) {
    return fmt::format("--- process {}{} runs {}{}", process.id,
                       process.parent == 0 ? "" : fmt::format(", forked from {},", process.parent),
                       text::on_one_line(process.program),
                       process.library.empty() ? "" : ", libadp " + text::on_one_line(process.library));
}

std::string exit_text(const Process &process) {
    return process.signal ? fmt::format("+++ process {} was ended by {}", process.id, signal_text(*process.signal))
                          : fmt::format("+++ process {} exited with status {}", process.id, process.status.value_or(0));
}

std::string header_text(const Header &header) {
    std::string command;
    for (const std::string &word : header.command) {
        command += (command.empty() ? "" : " ") + word;
    }
    return fmt::format("{}, started {}, {} bits, {}-endian", text::on_one_line(command),
                       text::on_one_line(header.started), header.word_bits, header.is_big_endian ? "big" : "little");
}

}  // namespace adptrace
