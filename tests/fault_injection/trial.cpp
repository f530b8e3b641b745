// Compares every run with its row.
#include "tests/fault_injection/trial.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <optional>
#include <set>

#include "calls/call_table.h"
#include "tests/fault_injection/plan.h"
#include "tests/fault_injection/plan_reader.h"
#include "tests/fault_injection/run.h"
#include "tests/fault_injection/state.h"

namespace fault_injection {
namespace {

constexpr std::string_view kAllocation = "memory";
/** Their texts contain results, so they differ from run to run. */
constexpr std::string_view kLoggers[] = {"Log_logging_func", "sys_trace_add_log"};
constexpr int32_t kNegative = -9;
constexpr int32_t kPositive = 77;

/** The failures of a call. Driver calls fail with a negative and with a positive result, which rules can tell apart. */
std::vector<Failure> failures_of(const Item &item, size_t driver_calls, size_t same_name) {
    if (item.name == kAllocation) {
        return {{Failure::What::kAllocation, same_name, "", 0, false}};
    }
    if (!calls::find_call(item.name)) {
        return {{Failure::What::kSystem, same_name, item.name, EPERM, false}};
    }
    std::set<int32_t> values{failing_result(item.name, kNegative), failing_result(item.name, kPositive)};
    if (item.name == "onu_mac2str") {
        values = {0};  // its only failure is a null text
    }
    std::vector<Failure> failures;
    for (const int32_t value : values) {
        failures.push_back({Failure::What::kDriver, driver_calls, item.name, value, false});
        if (!item.writes.empty()) {
            failures.push_back({Failure::What::kDriver, driver_calls, item.name, value, true});
        }
    }
    return failures;
}

std::string without_result(const std::string &line) {
    return line.substr(0, line.find(" -> "));
}

/** Whether the line shows the argument, or a field of one, with this value. */
bool shows(const std::string &line, const Assignment &argument) {
    const std::string text = argument.target + "=" + argument.value;
    for (size_t at = line.find(text); at != std::string::npos; at = line.find(text, at + 1)) {
        const bool begins = std::string_view("( {").find(line[at - 1]) != std::string_view::npos;
        const bool ends = std::string_view(",)}").find(line[at + text.size()]) != std::string_view::npos;
        if (begins && ends) {
            return true;
        }
    }
    return false;
}

/** Whether a line of the trace is this call, with the arguments that the plan names. */
bool is_call(const std::string &line, const ExpectedCall &call) {
    return line.substr(0, line.find('(')) == call.item->name &&
           std::all_of(call.arguments().begin(), call.arguments().end(),
                       [&line](const Assignment &argument) { return shows(line, argument); });
}

std::string text_of(const ExpectedCall &call) {
    std::string text = call.item->name + "(";
    for (const Assignment &argument : call.arguments()) {
        text += (text.back() == '(' ? "" : ", ") + argument.target + "=" + argument.value;
    }
    return text + ")";
}

/** One row in one state. */
class Trial {
  public:
    Trial(const Family &family, const Row &row, const State &state, Report &report)
        : row_(row),
          state_(state),
          report_(report),
          plan_(plan_of(family, row, state)),
          plan_without_driver_(plan_without_driver(family, row, state)) {}

    [[nodiscard]] bool applies() const { return plan_.has_value(); }

    void run_all() {
        const Observed clean = run_one({}, std::nullopt);
        size_t number = 0;
        size_t driver_calls = 0;
        std::map<std::string, size_t> by_name;
        for (const Item *item : failing_calls(*plan_)) {
            failing_item_ = item;
            for (const Failure &failure : failures_of(*item, driver_calls, by_name[item->name])) {
                run_one(failure, number);
                count(failure);
            }
            ++number;
            ++by_name[item->name];
            driver_calls += calls::find_call(item->name) ? 1U : 0U;
        }
        for (const int32_t value : {kNegative, kPositive}) {
            if (driver_calls > 0) {
                run_one({Failure::What::kEveryDriverCall, 0, "", value, false}, FailingCall::kEvery);
                ++report_.counts.runs_without_driver;
            }
        }
        if (clean.allocations != by_name[std::string(kAllocation)]) {
            complain("it allocates " + std::to_string(clean.allocations) + " times");
        }
    }

  private:
    Observed run_one(const Failure &failure, std::optional<size_t> failing) {
        what_ = describe(failure, failing);
        const int64_t result = failure.what == Failure::What::kSystem ? -1 : failure.value;
        const Expected expected =
            expect(failure.what == Failure::What::kEveryDriverCall ? *plan_without_driver_ : *plan_,
                   failing ? std::optional(FailingCall{*failing, result, failure.writes}) : std::nullopt);
        Observed observed = run(row_, state_, failure);
        ++report_.counts.runs;
        compare_status(expected, observed);
        compare_calls(expected, observed);
        compare_memory(expected, observed);
        return observed;
    }

    [[nodiscard]] std::string describe(const Failure &failure, std::optional<size_t> failing) const {
        if (!failing) {
            return "nothing failing";
        }
        const std::string which = *failing == FailingCall::kEvery
                                      ? "every call"
                                      : "call " + std::to_string(*failing) + ", " + failing_item_->name + ",";
        return which + " failing with " + std::to_string(failure.value) + (failure.writes ? " after it wrote" : "");
    }

    void count(const Failure &failure) {
        report_.counts.failed_calls += failure.what == Failure::What::kDriver ? 1U : 0U;
        report_.counts.failed_system_calls += failure.what == Failure::What::kSystem ? 1U : 0U;
        report_.counts.failed_allocations += failure.what == Failure::What::kAllocation ? 1U : 0U;
    }

    void complain(const std::string &text) {
        report_.complaints.push_back(row_.where + ": " + in_state(row_.call, state_) + " [" + state_.name + "], " +
                                     what_ + ": " + text);
    }

    void compare_status(const Expected &expected, const Observed &observed) {
        if (static_cast<int32_t>(observed.status) != static_cast<int32_t>(expected.status)) {
            complain("it returns " + std::to_string(static_cast<int32_t>(observed.status)) + ", not " +
                     std::to_string(static_cast<int32_t>(expected.status)));
        }
    }

    /** The calls must be the expected ones, with the arguments of the undisturbed run if it makes them too. */
    void compare_calls(const Expected &expected, const Observed &observed) {
        size_t line = 0;
        for (const ExpectedCall &call : expected.calls) {
            if (call.item->name == kAllocation) {
                continue;
            }
            if (line == observed.trace.size() || !is_call(observed.trace[line], call)) {
                return complain("it makes the call " +
                                (line == observed.trace.size() ? std::string("none") : observed.trace[line]) +
                                " as number " + std::to_string(line) + ", not " + text_of(call));
            }
            compare_with_clean(call, without_result(observed.trace[line]));
            ++line;
        }
        if (line < observed.trace.size()) {
            complain("it goes on with " + observed.trace[line]);
        }
    }

    void compare_with_clean(const ExpectedCall &call, const std::string &line) {
        const bool is_logger =
            std::find(std::begin(kLoggers), std::end(kLoggers), call.item->name) != std::end(kLoggers);
        if (call.changed != nullptr || is_logger) {
            return;
        }
        const auto [clean, is_first] = clean_lines_.try_emplace(call.item, line);
        if (!is_first && clean->second != line) {
            complain("it calls " + line + ", not " + clean->second);
        }
    }

    void compare_memory(const Expected &expected, const Observed &observed) {
        const Memory &memory = memory_after(expected.writes);
        if (observed.memory.tables != memory.tables) {
            complain("a table differs" + difference(observed.memory.tables, memory.tables));
        }
        compare_rules(expected.rules.value_or(memory.rules), observed.memory.rules);
        for (size_t index = 0; index < memory.outputs.size(); ++index) {
            if (observed.memory.outputs[index] != memory.outputs[index]) {
                complain("output " + std::to_string(index) + " differs" +
                         difference(observed.memory.outputs[index], memory.outputs[index]));
            }
        }
        if (observed.kept_memory != expected.kept_memory) {
            complain("it keeps " + std::to_string(observed.kept_memory) + " blocks of memory");
        }
        if (observed.open_descriptors != expected.open_descriptors) {
            complain("it leaves " + std::to_string(observed.open_descriptors) + " descriptors open");
        }
    }

    /** Most runs of a row write the same, so the memory of the last comparison is kept. */
    const Memory &memory_after(const std::vector<Assignment> &writes) {
        if (!memory_ || writes != written_) {
            memory_ = memory_with(row_, state_, writes);
            written_ = writes;
        }
        return *memory_;
    }

    void compare_rules(const std::vector<std::string> &expected, const std::vector<std::string> &observed) {
        if (observed != expected) {
            std::string text = "the list of rules holds";
            for (const std::string &rule : observed) {
                text += " " + rule;
            }
            complain(text);
        }
    }

    static std::string difference(const std::string &observed, const std::string &expected) {
        if (observed.size() != expected.size()) {
            return ": it has " + std::to_string(observed.size()) + " bytes, not " + std::to_string(expected.size());
        }
        size_t at = 0;
        while (observed[at] == expected[at]) {
            ++at;
        }
        return " at byte " + std::to_string(at) + ": " + std::to_string(static_cast<uint8_t>(observed[at])) + ", not " +
               std::to_string(static_cast<uint8_t>(expected[at]));
    }

    const Row &row_;
    const State &state_;
    Report &report_;
    std::optional<Plan> plan_;
    std::optional<Plan> plan_without_driver_;
    std::map<const Item *, std::string> clean_lines_;
    const Item *failing_item_ = nullptr;
    std::string what_;
    std::vector<Assignment> written_;
    std::optional<Memory> memory_;
};

}  // namespace

void run_row(const Family &family, const Row &row, Report &report) {
    size_t states_run = 0;
    for (const State &state : states()) {
        Trial trial(family, row, state, report);
        if (trial.applies()) {
            trial.run_all();
            ++states_run;
        } else if (row.takes_interface() && row.wants(state.name)) {
            report.complaints.push_back(row.where + ": nothing is said of the state " + state.name);
        }
    }
    if (states_run == 0) {
        report.complaints.push_back(row.where + ": nothing is ever run");
    }
    ++report.counts.rows;
    report.counts.functions.insert(row.function);
}

}  // namespace fault_injection
