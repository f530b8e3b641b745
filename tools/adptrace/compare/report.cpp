// Lines with the line numbers of both recordings in front.
#include "tools/adptrace/compare/report.h"

#include <algorithm>
#include <span>

#include "tools/adptrace/compare/remarks.h"
#include "tools/adptrace/show/call_text.h"

namespace adptrace {
namespace {

constexpr size_t kMostRows = 60;        // of one difference
constexpr size_t kEqualRowsBefore = 2;  // a row that differs
constexpr size_t kColumn = 7;
constexpr Style kStyle = {.length = Length::kShort, .has_colours = false, .has_duration = false};

std::string number_of(size_t line) {
    const std::string number = line == 0 ? "" : std::to_string(line);
    return std::string(kColumn - std::min(kColumn - 1, number.size()), ' ') + number;
}

/** Which rows are shown: the first, those that differ, and what stands right before them. */
std::vector<bool> shown(const std::vector<Row> &rows) {
    std::vector<bool> shown(rows.size(), false);
    shown[0] = true;
    size_t count = 0;
    for (size_t index = 0; index < rows.size(); ++index) {
        for (size_t at = index - std::min(index, kEqualRowsBefore); rows[index].differs() && at <= index; ++at) {
            shown[at] = shown[at] || count < kMostRows;
        }
        count += rows[index].differs() ? 1U : 0U;
    }
    return shown;
}

std::string calls_text(size_t count) {
    return std::to_string(count) + (count == 1 ? " call" : " calls");
}

}  // namespace

Report::Report(const Recording &a, const Recording &b, const CompareOptions &options)
    : a_(a), b_(b), options_(options), text_(remarks_on(a, b, options)) {}

void Report::say_not_smallest(const Step &from) {
    const auto line_of = [](const Recording &recording, size_t call, const std::string &name) {
        return call == Step::kAbsent ? "the end of " + name
                                     : "line " + std::to_string(recording.calls()[call].line) + " of " + name;
    };
    text_ += "remark: more than " + std::to_string(options_.most_differences) + " differences; from " +
             line_of(a_, from.a, options_.name_a) + " and " + line_of(b_, from.b, options_.name_b) +
             " on, more may be shown than there need be\n";
}

void Report::show(size_t process, size_t thread, const std::vector<Row> &before, const std::vector<Row> &rows) {
    if (differences() == 0) {
        text_ += "--- " + options_.name_a + "\n+++ " + options_.name_b + "\n";
    }
    const std::string which =
        a_.processes().size() > 1 || b_.processes().size() > 1 ? "process " + std::to_string(process + 1) + ", " : "";
    text_ += "@@ " + which + "thread " + std::to_string(thread) + " @@\n";
    for (const Row &row : before) {
        show_row(row, false);
    }
    const std::vector<bool> is_shown = shown(rows);
    size_t left_out = 0;
    for (size_t index = 0; index < rows.size(); ++index) {
        left_out += is_shown[index] ? 0U : 1U;
        const bool is_next_shown = index + 1 == rows.size() || is_shown[index + 1];
        if (is_shown[index]) {
            show_row(rows[index], true);
        } else if (is_next_shown) {
            text_ += std::string(2 * kColumn + 3, ' ') + "... " + calls_text(left_out) + "\n";
            left_out = 0;
        }
    }
}

void Report::show_row(const Row &row, bool with_differences) {
    const auto show = [this, &row](char mark, bool is_of_a, bool is_of_b) {
        const Call &call = is_of_a ? a_.calls()[row.calls.a] : b_.calls()[row.calls.b];
        text_ += mark + number_of(is_of_a ? a_.calls()[row.calls.a].line : 0) +
                 number_of(is_of_b ? b_.calls()[row.calls.b].line : 0) + std::string(2 + 2 * call.depth, ' ') +
                 call_text(call, kStyle) + "\n";
    };
    if (!row.differs()) {
        return show(' ', true, true);
    }
    if (row.calls.a != Step::kAbsent) {
        show('-', true, false);
    }
    if (row.calls.b != Step::kAbsent) {
        show('+', false, true);
    }
    for (const Difference &difference :
         std::span(row.differences).first(with_differences ? row.differences.size() : 0)) {
        text_ +=
            std::string(2 * kColumn + 5, ' ') + difference.what + ": " + difference.a + " | " + difference.b + "\n";
    }
}

void Report::count(const Step &units) {
    ++(units.is_pair() ? different_ : units.b == Step::kAbsent ? in_a_alone_ : in_b_alone_);
}

Comparison Report::finish() {
    if (differences() == 0) {
        text_ += options_.name_a + " and " + options_.name_b +
                 " are equal in meaning: " + calls_text(a_.calls().size()) + "\n";
        return {std::move(text_), 0};
    }
    text_ += calls_text(differences()) + (differences() == 1 ? " differs: " : " differ: ") +
             std::to_string(different_) + " in both, " + std::to_string(in_a_alone_) + " only in " + options_.name_a +
             ", " + std::to_string(in_b_alone_) + " only in " + options_.name_b +
             (options_.shows_all || differences() == 1 ? "" : "; the first is shown, --all shows all") + "\n";
    return {std::move(text_), differences()};
}

}  // namespace adptrace
