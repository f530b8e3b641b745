#include "tools/adpsh/session.h"

#include "tools/adpsh/builtins.h"
#include "tools/adpsh/events.h"
#include "tools/adpsh/execute.h"
#include "tools/adpsh/refusal.h"
#include "tools/adpsh/suggest.h"

#include <algorithm>
#include <new>
#include <optional>

namespace adpsh {

namespace {

constexpr std::string_view kEcho = "echo";
constexpr std::string_view kBlanks = " \t\r";

[[noreturn]] void refuse_unknown(const std::string &name) {
    std::vector<std::string_view> names;
    for (const Builtin &builtin : builtins()) {
        names.push_back(builtin.name);
    }
    for (const exported::Call &call : exported::calls()) {
        names.emplace_back(call.name);
    }
    throw Refusal("there is no call '" + written({Value::Form::kWord, name, {}}) + "'" + did_you_mean(name, names));
}

/** What stands behind a line's first word if that is the given one. */
std::optional<std::string_view> behind(std::string_view word, std::string_view line) {
    const size_t start = std::min(line.find_first_not_of(kBlanks), line.size());
    if (line.substr(start, word.size()) != word) {
        return std::nullopt;
    }
    std::string_view rest = line.substr(start + word.size());
    if (!rest.empty() && kBlanks.find(rest.front()) == std::string_view::npos) {
        return std::nullopt;
    }
    rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
    return rest;
}

}  // namespace

Session::Session(SessionOptions options)
    : options_(options), report_(options.json ? json_report() : text_report(options.numbered)) {
    exported::receive_events(keep_event);
}

bool Session::run(std::string_view line) {
    ++line_;
    try {
        execute_line(line);
        return true;
    } catch (const BrokenCall &broken) {
        is_broken_ = true;
        report_->refusal(line_, broken.what());
    } catch (const Refusal &refusal) {
        report_->refusal(line_, refusal.what());
    } catch (const std::bad_alloc &) {
        report_->refusal(line_, "there is not enough memory for this line");
    }
    return false;
}

void Session::execute_line(std::string_view line) {
    if (const std::optional<std::string_view> text = behind(kEcho, line)) {
        report_->answer(line_, {std::string(*text), {{"echo", *text}}});  // any text, also one that is no command
        return;
    }
    const auto parsed = parse_line(line);
    if (const Error *error = std::get_if<Error>(&parsed)) {
        throw Refusal(error->text + " (column " + std::to_string(error->column) + ")");
    }
    const Command &command = std::get<Command>(parsed);
    if (command.name.empty()) {
        return;
    }
    if (const Builtin *builtin = find_builtin(command.name)) {
        report_->answer(line_, builtin->run(*this, command));
    } else if (const exported::Call *call = exported::find_call(command.name)) {
        if (is_broken_) {
            // A lock that the broken call held would stop the next one for ever.
            throw Refusal("an earlier call was ended in the middle, the library cannot be used any more: start again");
        }
        report_->call(line_, execute(*call, command, variables_, {options_.json, options_.trace}));
    } else {
        refuse_unknown(command.name);
    }
}

}  // namespace adpsh
