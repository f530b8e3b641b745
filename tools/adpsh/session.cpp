// Executes lines: commands of the shell and calls of the library.
#include "tools/adpsh/session.h"

#include "text/suggest.h"
#include "tools/adpsh/builtins.h"
#include "tools/adpsh/device.h"
#include "tools/adpsh/events.h"
#include "tools/adpsh/execute.h"
#include "tools/adpsh/line_error.h"

#include <algorithm>
#include <new>
#include <optional>

namespace adpsh {

namespace {

constexpr std::string_view kEcho = "echo";
constexpr std::string_view kBlanks = " \t\r";

/** Words that the device may know: a name with an underscore is a call's. */
bool may_be_subject(const std::string &name) {
    return name.find('_') == std::string::npos;
}

[[noreturn]] void reject_unknown(const std::string &name, const std::vector<std::string> &subjects) {
    std::vector<std::string_view> names(subjects.begin(), subjects.end());
    for (const Builtin &builtin : builtins()) {
        names.push_back(builtin.name);
    }
    for (const exported::Call &call : exported::calls()) {
        names.emplace_back(call.name);
    }
    const std::string word = written({Value::Form::kWord, name, {}});
    std::string hint = text::did_you_mean(name, names);
    if (exported::find_constant(name) != nullptr || exported::find_structure(name) != nullptr ||
        exported::find_table(name) != nullptr) {
        hint = "; 'help " + word + "' describes it";
    } else if (hint.empty() && may_be_subject(name)) {
        hint = "; 'help " + word + "' searches for it, and ";
        hint += subjects.empty() ? "'device " + word + "' asks the device" : "'device' lists what the device answers";
    }
    throw LineError("unknown call '" + word + "'" + hint);
}

/** The rest of a line whose first word is the given one. */
std::optional<std::string_view> rest_after(std::string_view word, std::string_view line) {
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
    : options_(options), report_(options.json ? json_report() : text_report(!options.at_terminal)) {
    exported::receive_events(keep_event);
}

bool Session::run(std::string_view line) {
    ++line_;
    try {
        execute_line(line);
        return true;
    } catch (const CrashedCall &crash) {
        is_crashed_ = true;
        report_->error(line_, crash.what());
    } catch (const LineError &error) {
        report_->error(line_, error.what());
    } catch (const std::bad_alloc &) {
        report_->error(line_, "there is not enough memory for this line");
    }
    return false;
}

void Session::execute_line(std::string_view line) {
    if (const std::optional<std::string_view> text = rest_after(kEcho, line)) {
        report_->answer(line_, {std::string(*text), {{"echo", *text}}});  // the text need not be a command
        return;
    }
    const auto parsed = parse_line(line);
    if (const Error *error = std::get_if<Error>(&parsed)) {
        throw LineError(error->text + " (column " + std::to_string(error->column) + ")");
    }
    const Command &command = std::get<Command>(parsed);
    if (command.name.empty()) {
        return hint();
    }
    was_used_ = true;
    if (const Builtin *builtin = find_builtin(command.name)) {
        const Answer answer = builtin->run(*this, command);
        has_failed_ |= answer.is_failure;
        report_->answer(line_, answer);
    } else if (const exported::Call *call = exported::find_call(command.name)) {
        check_library();
        const Outcome outcome = execute(*call, command, variables_, {options_.json, options_.trace});
        multicast_groups_.follow(outcome);
        report_->call(line_, outcome);
    } else {
        execute_unknown(command);
    }
}

void Session::check_library() const {
    if (is_crashed_) {
        // The crashed call may hold a lock for which the next call would wait forever.
        throw LineError("an earlier call crashed and left the library in an unknown state: start adpsh again");
    }
}

/** A subject of the device is asked for as if the line began with `device`. */
void Session::execute_unknown(const Command &command) {
    const std::vector<std::string> subjects =
        may_be_subject(command.name) ? device_subjects() : std::vector<std::string>();
    if (std::find(subjects.begin(), subjects.end(), command.name) == subjects.end()) {
        reject_unknown(command.name, subjects);
    }
    Command asked{"device", {{{}, {Value::Form::kWord, command.name, {}}}}};
    asked.arguments.insert(asked.arguments.end(), command.arguments.begin(), command.arguments.end());
    report_->answer(line_, run_device(*this, asked));
}

void Session::hint() {
    if (options_.at_terminal && !options_.json && !was_used_) {
        was_used_ = true;
        report_->answer(line_, {std::string(kHint), {}});
    }
}

}  // namespace adpsh
