/**
 * @file report.h
 * Differences as text.
 */
#pragma once

#include <stddef.h>
#include <string>
#include <vector>

#include "tools/adptrace/compare/alignment.h"
#include "tools/adptrace/compare/compare.h"
#include "tools/adptrace/compare/values.h"

namespace adptrace {

/** Two calls that belong together, or one alone, by their indices. */
struct Row {
    Step calls;
    std::vector<Difference> differences;

    [[nodiscard]] bool differs() const { return !calls.is_pair() || !differences.empty(); }
};

class Report {
  public:
    /** It begins with remarks on the recordings as a whole. */
    Report(const Recording &a, const Recording &b, const CompareOptions &options);

    /** The indices of the first calls that may be aligned better. */
    void say_not_smallest(const Step &from);
    /** Whether the next difference is to be shown. */
    [[nodiscard]] bool wants_rows() const { return options_.shows_all || differences() == 0; }
    /** @p before: the calls before, @p rows: the outer call and those within it. */
    void show(size_t process, size_t thread, const std::vector<Row> &before, const std::vector<Row> &rows);
    /** A difference; @p units: of both recordings or of one alone. */
    void count(const Step &units);
    /** With the counts as its last line. */
    Comparison finish();

  private:
    void show_row(const Row &row, bool with_differences);
    [[nodiscard]] size_t differences() const { return in_a_alone_ + in_b_alone_ + different_; }

    const Recording &a_;
    const Recording &b_;
    const CompareOptions &options_;
    std::string text_;
    size_t in_a_alone_ = 0;
    size_t in_b_alone_ = 0;
    size_t different_ = 0;
};

}  // namespace adptrace
