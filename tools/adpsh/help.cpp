// The commands help and calls.
#include "calls/exported.h"
#include "text/suggest.h"
#include "tools/adpsh/builtins.h"
#include "tools/adpsh/describe.h"
#include "tools/adpsh/line_error.h"
#include "tools/adpsh/result.h"
#include "tools/adpsh/search.h"
#include "tools/adpsh/topics.h"
#include "tools/adpsh/usage.h"

#include <fmt/format.h>

#include <fnmatch.h>

namespace adpsh {

namespace {

constexpr std::string_view kSyntax =
    R"(A line is the name of a call and its inputs in order: adp_vlan_port_set 100 {1-4,26} {1-4}
    number         10, 0x1f, -1, a constant of the headers, agg2 for aggregation interface 2
    bytes          0180c2000000 or 01:80:c2:00:00:00, or $NAME for stored ones
    array          [1, 2, agg1]; a bitmap also as the set of its bits {1, 5-8, 26}
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
    text += "\nTopics, each with its calls in order and an example:";
    for (const Topic &topic : topics()) {
        text += fmt::format("\n    help {:<19} {}", topic.name, topic.purpose);
    }
    return text;
}

bool matches(const std::string &pattern, const char *name) {
    return ::fnmatch(pattern.c_str(), name, 0) == 0;
}

std::vector<const exported::Call *> calls_matching(const std::string &pattern) {
    if (pattern.find_first_of("*?") == std::string::npos) {
        return calls_about(pattern);
    }
    std::vector<const exported::Call *> found;
    for (const exported::Call &call : exported::calls()) {
        if (matches(pattern, call.name)) {
            found.push_back(&call);
        }
    }
    return found;
}

/** What goes by exactly this name. */
std::optional<Answer> about_name(const std::string &word) {
    if (const exported::Call *const call = exported::find_call(word)) {
        return describe(*call);
    }
    if (const exported::Table *const table = exported::find_table(word)) {
        return describe(*table);
    }
    if (const exported::Constant *const constant = exported::find_constant(word)) {
        return describe(*constant);
    }
    if (const exported::Structure *const structure = exported::find_structure(word)) {
        return describe(*structure);
    }
    if (const Topic *const topic = find_topic(word)) {
        return describe(*topic);
    }
    if (const Builtin *const builtin = find_builtin(word)) {
        const std::string text = fmt::format("{} {}\n{}", builtin->name, builtin->arguments, builtin->help);
        return Answer{text, {{"help", text}}};
    }
    if (const std::string text = device_result_text(word); !text.empty()) {
        return Answer{text, {{"help", word}, {"doc", text}}};
    }
    if (const exported::Constant *const result = library_result(word)) {
        return describe(*result);
    }
    return describe_enumeration(word);
}

/** Adds the names of one kind to the answer of a search. */
void add_found(Answer &answer, const char *kind, const std::vector<std::string> &rows,
               const std::vector<std::string> &names) {
    if (!rows.empty()) {
        answer.text += fmt::format("{}{}:", answer.text.empty() ? "" : "\n", kind);
        for (const std::string &row : rows) {
            answer.text += "\n  " + row;
        }
    }
    answer.object[kind] = names;
}

Answer search(const std::string &word) {
    Answer answer{"", {{"help", word}}};
    const auto add = [&answer](const char *kind, const auto &found, const auto &name_of, const auto &row_of) {
        std::vector<std::string> rows;
        std::vector<std::string> names;
        for (const auto *each : found) {
            names.emplace_back(name_of(*each));
            rows.push_back(row_of(*each));
        }
        add_found(answer, kind, rows, names);
    };
    const auto name_of = [](const auto &row) { return row.name; };
    const auto purpose = [](const auto &row) { return fmt::format("{:<36} {}", row.name, purpose_of(row.doc)); };
    add("calls", calls_about(word), name_of, purpose);
    add("constants", constants_about(word), name_of, purpose);
    std::vector<const Topic *> like;
    for (const Topic &topic : topics()) {
        if (is_like(word, topic.name)) {
            like.push_back(&topic);
        }
    }
    add("topics", like, name_of,
        [](const Topic &topic) { return fmt::format("help {:<31} {}", topic.name, topic.purpose); });
    add("tables", tables_about(word), name_of, purpose);
    const auto layout_name = [](const exported::Structure &row) { return row.layout->name; };
    add("structures", structures_about(word), layout_name, [&](const exported::Structure &row) {
        return fmt::format("{:<36} {}", row.layout->name, purpose_of(row.doc));
    });
    return answer;
}

[[noreturn]] void reject(const std::string &word) {
    std::vector<std::string_view> names;
    for (const exported::Call &call : exported::calls()) {
        names.emplace_back(call.name);
    }
    for (const Topic &topic : topics()) {
        names.push_back(topic.name);
    }
    throw LineError("unknown call '" + word + "': nothing has this word in its name or description" +
                    text::did_you_mean(word, names));
}

}  // namespace

Answer run_help(Session &, const Command &command) {
    const std::vector<std::string> words = words_of(command, 1);
    if (words.empty()) {
        return {overview(), {{"help", overview()}}};
    }
    if (std::optional<Answer> answer = about_name(words[0])) {
        return *std::move(answer);
    }
    Answer answer = search(words[0]);
    if (answer.text.empty()) {
        reject(words[0]);
    }
    return answer;
}

Answer run_calls(Session &, const Command &command) {
    const std::vector<std::string> words = words_of(command, 1);
    Answer answer;
    answer.object["calls"] = Json::array();
    for (const exported::Call *const call : calls_matching(words.empty() ? "*" : words[0])) {
        answer.text += (answer.text.empty() ? "" : "\n") + usage(*call);
        answer.object["calls"].push_back(call->name);
    }
    if (answer.text.empty()) {
        answer.text = "no call matches; 'help' lists the topics";
    }
    return answer;
}

}  // namespace adpsh
