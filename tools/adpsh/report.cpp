// The two forms of report: text and JSON.
#include "tools/adpsh/report.h"

#include "tools/adpsh/parameter.h"
#include "tools/adpsh/result.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace adpsh {

namespace {

/** A full disk or a closed pipe must not look like success. */
void print(const std::string &text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot write the answers to standard output");
    }
}

void complain(const std::string &text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
}

/** `ADP_STG_STATE_FORWARDING` for 4 in `state`; empty where the header has no name, and after a failure. */
std::string constant_name(const Outcome &outcome, const Slot &slot) {
    const calls::Kind kind = slot.parameter->element.kind;
    if (outcome.failure || slot.elements != 1 || slot.is_null || kind == calls::Kind::kStruct ||
        slot.parameter->shape != calls::Shape::kPlain) {
        return {};
    }
    const int64_t value = calls::load(kind, slot.storage.data());
    for (const exported::Constant *const constant : constants_of(*outcome.call, *slot.parameter)) {
        if (constant->value == value) {
            return constant->name;
        }
    }
    return {};
}

class TextReport : public Report {
  public:
    explicit TextReport(bool numbered) : numbered_(numbered) {}

    void call(size_t, const Outcome &outcome) override {
        for (const std::string &warning : outcome.warnings) {
            complain("warning: " + warning + "\n");
        }
        std::string text;
        for (const std::string &driver_call : outcome.trace) {
            text += "    " + driver_call + "\n";
        }
        for (const std::string &event : outcome.events) {
            text += "  event " + event + "\n";
        }
        text += "= " + result_text(outcome) + "\n";
        for (const Slot &slot : outcome.arguments->slots()) {
            if (is_shown(slot)) {
                const std::string name = constant_name(outcome, slot);
                text += fmt::format("  {} = {}{}\n", slot.parameter->name, text_of(slot, *outcome.arguments),
                                    name.empty() ? "" : " (" + name + ")");
            }
        }
        print(text);
    }

    void answer(size_t, const Answer &answer) override {
        if (!answer.text.empty()) {
            print(answer.text + "\n");
        }
    }

    void error(size_t line, const std::string &message) override {
        complain(numbered_ ? fmt::format("line {}: {}\n", line, message) : message + "\n");
    }

  private:
    bool numbered_;
};

class JsonReport : public Report {
  public:
    void call(size_t line, const Outcome &outcome) override {
        Json object = {{"line", line}, {"call", outcome.call->name}};
        add_result(outcome, object);
        object["outputs"] = Json::object();
        object["names"] = Json::object();
        for (const Slot &slot : outcome.arguments->slots()) {
            if (is_shown(slot)) {
                object["outputs"][slot.parameter->name] = json_of(slot, *outcome.arguments);
                if (const std::string name = constant_name(outcome, slot); !name.empty()) {
                    object["names"][slot.parameter->name] = name;
                }
            }
        }
        object["warnings"] = outcome.warnings;
        object["trace"] = outcome.trace;
        object["events"] = outcome.events;
        object["printed"] = {{"stdout", outcome.printed_stdout}, {"stderr", outcome.printed_stderr}};
        write(object);
    }

    void answer(size_t line, const Answer &answer) override {
        Json object = {{"line", line}};
        object.update(answer.object);
        write(object);
    }

    void error(size_t line, const std::string &message) override { write({{"line", line}, {"error", message}}); }

  private:
    static void write(const Json &object) {
        // Texts need not be UTF-8.
        print(object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
    }
};

}  // namespace

std::unique_ptr<Report> text_report(bool numbered) {
    return std::make_unique<TextReport>(numbered);
}
std::unique_ptr<Report> json_report() {
    return std::make_unique<JsonReport>();
}

}  // namespace adpsh
