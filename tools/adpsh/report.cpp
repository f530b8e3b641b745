// The two forms of report: text and JSON.
#include "tools/adpsh/report.h"

#include <fmt/format.h>

#include <cstdio>

namespace adpsh {

namespace {

void print(std::FILE *to, const std::string &text) {
    std::fwrite(text.data(), 1, text.size(), to);
    std::fflush(to);
}

class TextReport : public Report {
  public:
    explicit TextReport(bool numbered) : numbered_(numbered) {}

    void call(size_t, const Outcome &outcome) override {
        std::string text;
        for (const std::string &driver_call : outcome.trace) {
            text += "    " + driver_call + "\n";
        }
        for (const std::string &event : outcome.events) {
            text += "  event " + event + "\n";
        }
        text += "= " + text_of(*outcome.call, outcome.result) + "\n";
        for (const Slot &slot : outcome.arguments->slots()) {
            if (is_shown(slot)) {
                text += fmt::format("  {} = {}\n", slot.parameter->name, text_of(slot, *outcome.arguments));
            }
        }
        print(stdout, text);
    }

    void answer(size_t, const Answer &answer) override {
        if (!answer.text.empty()) {
            print(stdout, answer.text + "\n");
        }
    }

    void error(size_t line, const std::string &message) override {
        print(stderr, numbered_ ? fmt::format("line {}: {}\n", line, message) : message + "\n");
    }

  private:
    bool numbered_;
};

class JsonReport : public Report {
  public:
    void call(size_t line, const Outcome &outcome) override {
        Json object = {{"line", line}, {"call", outcome.call->name}};
        object["result"] = json_of(*outcome.call, outcome.result);
        object["outputs"] = Json::object();
        for (const Slot &slot : outcome.arguments->slots()) {
            if (is_shown(slot)) {
                object["outputs"][slot.parameter->name] = json_of(slot, *outcome.arguments);
            }
        }
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
        print(stdout, object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
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
