// Records every call of the library against a driver that succeeds, and writes the calls and what they call in turn as
// a C program's tables: record ANSWERS ROWS OUTPUT.c OUTPUT.json.
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <exception>
#include <fstream>
#include <set>
#include <stdexcept>

#include <adp/types.h>

#include "adpsh/table.h"
#include "bench/calls/record/blocks.h"
#include "bench/calls/record/cases.h"
#include "bench/calls/record/driver_calls.h"
#include "bench/calls/record/library_call.h"
#include "bench/calls/state.h"
#include "tests/support/fake_system.h"

namespace {

using record::Blocks;
using record::Case;
using record::LibraryCall;

constexpr std::size_t kFanOut = 8;
constexpr const char *kAttributeSet = "adp_set_phy_port_attr";

struct Recorded {
    adpsh::ResultKind kind;
    adpsh::Result result;
    std::vector<std::string> calls;
    std::size_t remote;        /**< of these, calls that leave the process */
    std::size_t remote_in_all; /**< with those that make what the call finds */

    /** What a later call has to give, as C. */
    [[nodiscard]] std::string expected() const {
        if (kind == adpsh::ResultKind::kRecord || kind == adpsh::ResultKind::kText) {
            return result.address != nullptr ? "SOME_ADDRESS" : "0";
        }
        return kind == adpsh::ResultKind::kNone ? "ANY_RESULT"
                                                : std::to_string(static_cast<int32_t>(result.number)) + "L";
    }
    /** Whether the call was told that this is not to be had, and did nothing. */
    [[nodiscard]] bool is_refused() const {
        return kind == adpsh::ResultKind::kStatus && result.number != ADP_OK && calls.empty();
    }
};

/** Brings the tables up, makes what the call finds, and the call. Gives those calls as C, too. */
Recorded run(const Case &one, Blocks &blocks, std::string &call, std::vector<std::string> &before) {
    if (bring_up() != 0) {
        throw std::runtime_error("the tables cannot be brought up");
    }
    before.clear();
    const std::size_t at_first = record::remote_calls();
    std::deque<LibraryCall> earlier;
    for (const std::string &line : one.before) {
        earlier.emplace_back(line, blocks).invoke();
        before.push_back(earlier.back().text());
    }
    LibraryCall subject(one.call, blocks);
    call = subject.text();
    const std::size_t made_before = record::remote_calls();
    record::begin(blocks);
    const adpsh::Result result = subject.invoke();
    const std::size_t made = record::remote_calls();
    return {subject.result_kind(), result, record::finish(), made - made_before, made - at_first};
}

std::string kind_of(const Case &one, std::size_t calls) {
    if (calls == 0) {
        return "no driver call";
    }
    if (one.function == kAttributeSet) {
        return "attribute set";
    }
    return calls == 1 ? "wrapper" : one.is_group && calls >= kFanOut ? "fan-out" : "other";
}

std::string function_text(const std::string &name, const std::vector<std::string> &statements,
                          const std::string &last) {
    std::string text = "static long " + name + "(void) {\n";
    for (const std::string &statement : statements) {
        text += "    " + statement + ";\n";
    }
    return text + "    return " + last + ";\n}\n";
}

/** The floor: all of the calls, and the last one's result. */
std::string floor_text(const std::string &name, std::vector<std::string> calls) {
    const std::string last = calls.empty() ? "0" : "(long)" + calls.back();
    if (!calls.empty()) {
        calls.pop_back();
    }
    return function_text(name, calls, last);
}

class Writer {
  public:
    /** Adds the case, unless the call is refused. */
    void add(const Case &one) {
        const std::string number = std::to_string(count_);
        std::string call;
        std::vector<std::string> before;
        Blocks warm_up("warm_up");
        const Recorded first = run(one, warm_up, call, before);
        Blocks blocks("block_" + number);
        const Recorded recorded = run(one, blocks, call, before);
        if (recorded.is_refused() && !one.has_any_result) {
            return;
        }
        ++count_;
        functions_recorded_.insert(one.function);
        const bool has_result = recorded.kind != adpsh::ResultKind::kNone;
        functions_ += "\n/* " + one.call + " */\n" + blocks.definitions();
        functions_ += "static void prepare_" + number + "(void) {\n" + blocks.preparation() + "}\n";
        functions_ += "static void before_" + number + "(void) {\n";
        for (const std::string &statement : before) {
            functions_ += "    " + statement + ";\n";
        }
        functions_ += "}\n";
        functions_ += has_result ? function_text("call_" + number, {}, "(long)" + call)
                                 : function_text("call_" + number, {call}, "0");
        functions_ += floor_text("floor_" + number, recorded.calls);
        table_ += "    {\"" + one.name + "\", prepare_" + number + ", before_" + number + ", call_" + number +
                  ", floor_" + number + ", " + (one.has_any_result ? "ANY_RESULT" : recorded.expected()) + "},\n";
        json_ += std::string(json_.empty() ? "" : ",\n") + "{\"name\": \"" + one.name + "\", \"function\": \"" +
                 one.function + "\", \"kind\": \"" + kind_of(one, recorded.calls.size()) +
                 "\", \"driver_calls\": " + std::to_string(recorded.calls.size()) +
                 ", \"remote\": " + std::to_string(first.remote_in_all + recorded.remote_in_all + recorded.remote) +
                 "}";
    }

    /** A function without a case cannot be forgotten. */
    void require_all() const {
        std::string missing;
        for (const adpsh::Call &call : adpsh::calls()) {
            missing += functions_recorded_.count(call.name) == 0 ? std::string(" ") + call.name : "";
        }
        if (!missing.empty()) {
            throw std::runtime_error("nobody would know what these cost, which have no row:" + missing);
        }
    }

    void write(const std::string &code, const std::string &json) const {
        std::ofstream(code)
            << "// Generated by recording every call. Do not edit.\n"
               "#include \"bench/calls/cases.h\"\n\n#include <adp/adp.h>\n#include <device_services.h>\n"
               "#include <netlink_api.h>\n#include <string.h>\n"
            << functions_ << "\nconst struct bench_case bench_cases[] = {\n"
            << table_ << "};\nconst unsigned bench_case_count = " << count_ << ";\n";
        std::ofstream(json) << "[" << json_ << "]\n";
    }

  private:
    std::size_t count_ = 0;
    std::set<std::string> functions_recorded_;
    std::string functions_;
    std::string table_;
    std::string json_;
};

void record_all(char **arguments) {
    enum Argument { kProgram, kAnswers, kRows, kCode, kJson };
    record::answer_from(arguments[kAnswers]);
    const std::vector<Case> cases = record::all_cases(arguments[kRows]);
    const fake_system::Session session;
    Writer writer;
    for (const Case &one : cases) {
        try {
            writer.add(one);
        } catch (const std::exception &error) {
            throw std::runtime_error(one.call + ": " + error.what());
        }
    }
    writer.require_all();
    writer.write(arguments[kCode], arguments[kJson]);
}

}  // namespace

int main(int count, char **arguments) {
    constexpr int kArguments = 5;
    if (count != kArguments) {
        std::fprintf(stderr, "usage: record ANSWERS ROWS OUTPUT.c OUTPUT.json\n");
        return EXIT_FAILURE;
    }
    try {
        record_all(arguments);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "record: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
