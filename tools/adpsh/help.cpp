// The commands help and calls.
#include "calls/exported.h"
#include "text/suggest.h"
#include "tools/adpsh/builtins.h"
#include "tools/adpsh/line_error.h"

#include <fmt/format.h>

#include <fnmatch.h>

namespace adpsh {

namespace {

constexpr std::string_view kSyntax =
    R"(A line is the name of a call and its inputs in order: adp_vlan_port_set 100 {1,2} {2}
    number         10, 0x1f, -1, a constant of the headers, agg2 for aggregation interface 2
    bytes          0180c2000000 or 01:80:c2:00:00:00, or $NAME for stored ones
    array          [1, 2, agg1]; a bitmap also as the set of its bits {1, 5, 26}
    record         {field=value field=value}, fields left out are 0
    text           word or "some text"
    word           a number, null, or {4, 5} for the address of a set
    callback       print or none
An argument may be named, NAME=value; an output too, to say what it holds before the call. # opens a comment.
)";

std::string overview() {
    std::string text(kSyntax);
    text += "Commands:";
    for (const Builtin &builtin : builtins()) {
        text += fmt::format("\n    {:<24} {}", fmt::format("{} {}", builtin.name, builtin.arguments), builtin.help);
    }
    return text;
}

Answer about_call(const exported::Call &call) {
    return {fmt::format("{};\n{}\n\nusage: {}", call.declaration, call.doc, usage(call)),
            {{"help", call.name}, {"declaration", call.declaration}, {"usage", usage(call)}, {"doc", call.doc}}};
}

bool matches(const std::string &pattern, const char *name) {
    if (pattern.find_first_of("*?") != std::string::npos) {
        return ::fnmatch(pattern.c_str(), name, 0) == 0;
    }
    return std::string_view(name).find(pattern) != std::string_view::npos;
}

}  // namespace

Answer run_help(Session &, const Command &command) {
    const std::vector<std::string> words = words_of(command, 1);
    if (words.empty()) {
        return {overview(), {{"help", overview()}}};
    }
    if (const exported::Call *const call = exported::find_call(words[0])) {
        return about_call(*call);
    }
    if (const Builtin *const builtin = find_builtin(words[0])) {
        const std::string text = fmt::format("{} {}\n{}", builtin->name, builtin->arguments, builtin->help);
        return {text, {{"help", text}}};
    }
    if (const exported::Table *const table = exported::find_table(words[0])) {
        return {fmt::format("{}\n{}", table->name, table->doc), {{"help", table->name}, {"doc", table->doc}}};
    }
    std::vector<std::string_view> names;
    for (const exported::Call &call : exported::calls()) {
        names.emplace_back(call.name);
    }
    throw LineError("unknown call '" + words[0] + "'" + text::did_you_mean(words[0], names));
}

Answer run_calls(Session &, const Command &command) {
    const std::vector<std::string> words = words_of(command, 1);
    Answer answer;
    answer.object["calls"] = Json::array();
    for (const exported::Call &call : exported::calls()) {
        if (words.empty() || matches(words[0], call.name)) {
            answer.text += (answer.text.empty() ? "" : "\n") + usage(call);
            answer.object["calls"].push_back(call.name);
        }
    }
    if (answer.text.empty()) {
        answer.text = "no call matches";
    }
    return answer;
}

}  // namespace adpsh
