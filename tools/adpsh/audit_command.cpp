// The command audit: runs an audit and reports what it found.
#include "tools/adpsh/audit.h"
#include "tools/adpsh/builtins.h"
#include "tools/adpsh/capture.h"
#include "tools/adpsh/result.h"
#include "tools/adpsh/session.h"

#include <fmt/format.h>

#include <unistd.h>
#include <optional>

namespace adpsh {

namespace {

std::string finding_text(const Finding &finding) {
    if (finding.call.empty()) {
        return finding.text;
    }
    const std::string_view name = device_name_of(finding.result);
    return fmt::format("{} gave {}{}", finding.call, finding.result,
                       name.empty() ? "" : fmt::format(" ({} of the virtual device)", name));
}

std::string summary_of(const Audit &audit) {
    return fmt::format("{} difference{}, {} failed driver call{}; {}", audit.differences(),
                       audit.differences() == 1 ? "" : "s", audit.failed_calls(), audit.failed_calls() == 1 ? "" : "s",
                       audit.scope());
}

Answer answer_of(const Audit &audit) {
    Answer answer;
    Json findings = Json::array();
    for (const Finding &finding : audit.findings()) {
        const std::string text = finding_text(finding);
        answer.text += fmt::format("{}: {}: {}\n", finding.topic, finding.place, text);
        Json row = {{"topic", finding.topic}, {"place", finding.place}, {"text", text}, {"failed_call", nullptr}};
        if (!finding.call.empty()) {
            row["failed_call"] = {{"call", finding.call}, {"result", finding.result}};
        }
        findings.push_back(row);
    }
    answer.text += summary_of(audit);
    answer.is_failure = !audit.findings().empty();
    answer.object = {{"result", answer.is_failure ? 1 : 0},
                     {"audit", findings},
                     {"differences", audit.differences()},
                     {"failed_calls", audit.failed_calls()},
                     {"summary", summary_of(audit)}};
    return answer;
}

}  // namespace

Answer run_audit(Session &session, const Command &command) {
    words_of(command, 0);
    session.check_library();
    std::optional<Capture> out;
    std::optional<Capture> err;
    if (session.is_json()) {  // what a driver prints must not come between the objects
        out.emplace(STDOUT_FILENO);
        err.emplace(STDERR_FILENO);
    }
    Answer answer = answer_of(audit(loaded_tables(), session.multicast_groups()));
    if (session.is_json()) {
        const std::string complaints = err->take();
        answer.object["printed"] = {{"stdout", out->take()}, {"stderr", complaints}};
    }
    return answer;
}

}  // namespace adpsh
