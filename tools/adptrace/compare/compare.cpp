// Aligns the threads of two recordings, and goes through what belongs together in the order of the first one.
#include "tools/adptrace/compare/compare.h"

#include <algorithm>
#include <functional>
#include <vector>

#include "tools/adptrace/compare/alignment.h"
#include "tools/adptrace/compare/report.h"
#include "tools/adptrace/compare/units.h"
#include "tools/adptrace/compare/values.h"

namespace adptrace {
namespace {

const Thread kNoThread;

/** One thread in both recordings. */
struct AlignedThread {
    size_t process = 0; /**< index */
    size_t number = 0;  /**< in its process, from 1 */
    const Thread &a;
    const Thread &b;
    Alignment alignment;
    std::vector<bool> differs = {}; /**< by step, of those that were compared */
    size_t shown = 0;               /**< the steps before this one are shown, or far behind */
};

/** A step of an aligned thread. */
struct Place {
    size_t when;   /**< index of a call of the first recording */
    size_t thread; /**< index */
    size_t step;
};

class Comparer {
  public:
    Comparer(const Recording &a, const Recording &b, const CompareOptions &options)
        : a_(a),
          b_(b),
          options_(options),
          threads_a_(threads_of(a, options.with_imported)),
          threads_b_(threads_of(b, options.with_imported)),
          handles_(std::max(threads_a_.size(), threads_b_.size())),
          report_(a, b, options) {}

    Comparison comparison() {
        align_threads();
        for (const Place &place : places()) {
            compare_units(place);
        }
        return report_.finish();
    }

  private:
    void align_threads();
    [[nodiscard]] Alignment aligned(const Thread &a, const Thread &b) const;
    [[nodiscard]] std::vector<Place> places() const;
    void compare_units(const Place &place);
    [[nodiscard]] std::vector<Row> rows_of(const Unit &a, const Unit &b, size_t process);
    [[nodiscard]] Row row_of(const Step &calls, size_t process);
    [[nodiscard]] bool matters(const Row &row) const;
    [[nodiscard]] std::vector<Row> before(const Place &place) const;
    [[nodiscard]] static Step outer_calls(const AlignedThread &thread, const Step &step);

    const Recording &a_;
    const Recording &b_;
    const CompareOptions &options_;
    std::vector<std::vector<Thread>> threads_a_;
    std::vector<std::vector<Thread>> threads_b_;
    std::vector<AlignedThread> threads_;
    std::vector<Handles> handles_; /**< by process */
    uint64_t unit_ = 0;
    Report report_;
};

Element element_of(const Call &call) {
    const uint64_t name = std::hash<std::string_view>()(call.name) + call.depth;
    return {key_of(call) + call.depth, name};
}

std::vector<Element> elements_of(const Recording &recording, const std::vector<size_t> &calls) {
    std::vector<Element> elements;
    elements.reserve(calls.size());
    for (const size_t call : calls) {
        elements.push_back(element_of(recording.calls()[call]));
    }
    return elements;
}

std::vector<size_t> outer_calls_of(const Thread &thread) {
    std::vector<size_t> calls;
    calls.reserve(thread.size());
    for (const Unit &unit : thread) {
        calls.push_back(unit.front());
    }
    return calls;
}

Alignment Comparer::aligned(const Thread &a, const Thread &b) const {
    return align(elements_of(a_, outer_calls_of(a)), elements_of(b_, outer_calls_of(b)), options_.most_differences);
}

void Comparer::align_threads() {
    for (size_t process = 0; process < handles_.size(); ++process) {
        const size_t count_a = process < threads_a_.size() ? threads_a_[process].size() : 0;
        const size_t count_b = process < threads_b_.size() ? threads_b_[process].size() : 0;
        for (size_t number = 0; number < std::max(count_a, count_b); ++number) {
            const Thread &a = number < count_a ? threads_a_[process][number] : kNoThread;
            const Thread &b = number < count_b ? threads_b_[process][number] : kNoThread;
            threads_.push_back({process, number + 1, a, b, aligned(a, b)});
            if (const auto from = threads_.back().alignment.not_smallest_from) {
                report_.say_not_smallest(outer_calls(threads_.back(), *from));
            }
        }
    }
}

/** What the second recording alone has stands behind what its thread did before. */
std::vector<Place> Comparer::places() const {
    std::vector<Place> places;
    for (size_t index = 0; index < threads_.size(); ++index) {
        const AlignedThread &thread = threads_[index];
        size_t when = thread.a.empty() ? a_.calls().size() : thread.a.front().front();
        for (size_t step = 0; step < thread.alignment.steps.size(); ++step) {
            const size_t unit = thread.alignment.steps[step].a;
            when = unit == Step::kAbsent ? when : thread.a[unit].front();
            places.push_back({when, index, step});
        }
    }
    std::stable_sort(places.begin(), places.end(), [](const Place &a, const Place &b) { return a.when < b.when; });
    return places;
}

Step Comparer::outer_calls(const AlignedThread &thread, const Step &step) {
    return {step.a < thread.a.size() ? thread.a[step.a].front() : Step::kAbsent,
            step.b < thread.b.size() ? thread.b[step.b].front() : Step::kAbsent};
}

Row Comparer::row_of(const Step &calls, size_t process) {
    Row row{calls, {}};
    if (calls.is_pair()) {
        row.differences = differences_of(a_.calls()[calls.a], b_.calls()[calls.b], handles_[process], unit_);
    }
    return row;
}

std::vector<Row> Comparer::rows_of(const Unit &a, const Unit &b, size_t process) {
    std::vector<Row> rows;
    const bool are_pair = !a.empty() && !b.empty();
    if (are_pair) {  // whatever their arguments
        rows.push_back(row_of({a.front(), b.front()}, process));
    }
    const auto inner = [are_pair](const Unit &unit) {
        return std::vector(unit.begin() + (are_pair ? 1 : 0), unit.end());
    };
    const std::vector<size_t> inner_a = inner(a);
    const std::vector<size_t> inner_b = inner(b);
    const Alignment alignment = align(elements_of(a_, inner_a), elements_of(b_, inner_b), options_.most_differences);
    for (const Step &step : alignment.steps) {
        rows.push_back(row_of(
            {step.a == Step::kAbsent ? step.a : inner_a[step.a], step.b == Step::kAbsent ? step.b : inner_b[step.b]},
            process));
    }
    return rows;
}

/** Whether it is of a chosen call, on either side. */
bool Comparer::matters(const Row &row) const {
    const auto is_chosen = [this](const Recording &recording, size_t call) {
        return call != Step::kAbsent && options_.filter.has(recording, recording.calls()[call]);
    };
    return is_chosen(a_, row.calls.a) || is_chosen(b_, row.calls.b);
}

/** What the thread did just before, as far as it is not shown yet. */
std::vector<Row> Comparer::before(const Place &place) const {
    constexpr size_t kMostBefore = 3;
    const AlignedThread &thread = threads_[place.thread];
    std::vector<Row> rows;
    for (size_t step = std::max(thread.shown, place.step - std::min(place.step, kMostBefore)); step < place.step;
         ++step) {
        rows.push_back({outer_calls(thread, thread.alignment.steps[step]), {}});
        rows.back().differences.resize(thread.differs[step] ? 1 : 0);
    }
    return rows;
}

void Comparer::compare_units(const Place &place) {
    static const Unit kNoUnit;
    AlignedThread &thread = threads_[place.thread];
    const Step &step = thread.alignment.steps[place.step];
    ++unit_;
    const std::vector<Row> rows = rows_of(step.a == Step::kAbsent ? kNoUnit : thread.a[step.a],
                                          step.b == Step::kAbsent ? kNoUnit : thread.b[step.b], thread.process);
    const auto differs = [](const Row &row) { return row.differs(); };
    thread.differs.push_back(std::any_of(rows.begin(), rows.end(), differs));
    const bool is_whole = matters(rows.front());
    const auto counts = [&](const Row &row) { return row.differs() && (is_whole || matters(row)); };
    if (std::none_of(rows.begin(), rows.end(), counts)) {
        return;
    }
    if (report_.wants_rows()) {
        report_.show(thread.process, thread.number, before(place), rows);
        thread.shown = place.step + 1;
    }
    report_.count(step);
}

}  // namespace

Comparison compare(const Recording &a, const Recording &b, const CompareOptions &options) {
    return Comparer(a, b, options).comparison();
}

}  // namespace adptrace
