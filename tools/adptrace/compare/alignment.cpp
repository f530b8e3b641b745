// The search for equal elements, and then among those between them for elements of one name.
#include "tools/adptrace/compare/alignment.h"

#include <algorithm>
#include <cstdlib>

namespace adptrace {
namespace {

using Member = uint64_t Element::*;
using Elements = std::span<const Element>;

/**
 * A search from the beginning of two sequences. A place (x, y) is behind x elements of the first sequence and y of the
 * second; diagonal k has the places with x - y = k. Row d has the furthest x on each diagonal that d differences reach.
 */
class Search {
  public:
    Search(Elements a, Elements b, Member member, size_t most) : a_(a), b_(b), member_(member) {
        for (int64_t d = 0; d <= static_cast<int64_t>(most) && !is_complete_; ++d) {
            add_row(d);
        }
    }

    /** The way to the end, or to the furthest place. */
    [[nodiscard]] std::vector<Step> steps() const;

  private:
    static constexpr int64_t kUnreachable = -1;

    void add_row(int64_t d);
    [[nodiscard]] int64_t reached(int64_t d, int64_t k) const;
    [[nodiscard]] int64_t after_insertion(int64_t d, int64_t k) const;
    [[nodiscard]] int64_t after_deletion(int64_t d, int64_t k) const;
    [[nodiscard]] int64_t furthest_diagonal(int64_t d) const;
    [[nodiscard]] int64_t size_a() const { return static_cast<int64_t>(a_.size()); }
    [[nodiscard]] int64_t size_b() const { return static_cast<int64_t>(b_.size()); }

    Elements a_;
    Elements b_;
    Member member_;
    std::vector<std::vector<int64_t>> rows_; /**< diagonals -d, -d + 2, .. d of row d */
    bool is_complete_ = false;
};

int64_t Search::reached(int64_t d, int64_t k) const {
    const bool is_in_row = d >= 0 && std::abs(k) <= d;
    return is_in_row ? rows_[static_cast<size_t>(d)][static_cast<size_t>((k + d) / 2)] : kUnreachable;
}

/** Where row @p d begins on diagonal @p k if its last difference is an element of the second sequence alone. */
int64_t Search::after_insertion(int64_t d, int64_t k) const {
    const int64_t x = reached(d - 1, k + 1);
    return x == kUnreachable || x - k > size_b() ? kUnreachable : x;
}

int64_t Search::after_deletion(int64_t d, int64_t k) const {
    const int64_t x = reached(d - 1, k - 1);
    return x == kUnreachable || x >= size_a() ? kUnreachable : x + 1;
}

void Search::add_row(int64_t d) {
    std::vector<int64_t> row;
    row.reserve(static_cast<size_t>(d) + 1);
    for (int64_t k = -d; k <= d; k += 2) {
        int64_t x = d == 0 ? 0 : std::max(after_insertion(d, k), after_deletion(d, k));
        if (x != kUnreachable) {
            const auto is_equal = [&] {
                return a_[static_cast<size_t>(x)].*member_ == b_[static_cast<size_t>(x - k)].*member_;
            };
            while (x < size_a() && x - k < size_b() && is_equal()) {
                ++x;
            }
            is_complete_ = is_complete_ || (x == size_a() && x - k == size_b());
        }
        row.push_back(x);
    }
    rows_.push_back(std::move(row));
}

/** Of several that are as far the middle one: so no sequence runs ahead where nothing is equal. */
int64_t Search::furthest_diagonal(int64_t d) const {
    int64_t best = 0;
    int64_t most = -1;
    for (int64_t k = -d; k <= d; k += 2) {
        const int64_t x = reached(d, k);
        const int64_t far = x == kUnreachable ? -1 : 2 * x - k;
        if (far > most || (far == most && std::abs(k) < std::abs(best))) {
            most = far;
            best = k;
        }
    }
    return best;
}

std::vector<Step> Search::steps() const {
    std::vector<Step> steps;
    auto d = static_cast<int64_t>(rows_.size()) - 1;
    int64_t k = is_complete_ ? size_a() - size_b() : furthest_diagonal(d);
    int64_t x = reached(d, k);
    for (; d >= 0; --d) {
        const int64_t inserted = after_insertion(d, k);
        const int64_t deleted = after_deletion(d, k);
        for (const int64_t from = d == 0 ? 0 : std::max(inserted, deleted); x > from; --x) {
            steps.push_back({static_cast<size_t>(x - 1), static_cast<size_t>(x - 1 - k)});
        }
        if (d > 0 && inserted >= deleted) {
            steps.push_back({Step::kAbsent, static_cast<size_t>(x - k - 1)});
            ++k;
        } else if (d > 0) {
            steps.push_back({static_cast<size_t>(--x), Step::kAbsent});
            --k;
        }
    }
    std::reverse(steps.begin(), steps.end());
    return steps;
}

size_t moved(size_t index, size_t by) {
    return index == Step::kAbsent ? index : index + by;
}

Alignment align_by(Elements a, Elements b, Member member, size_t most) {
    Alignment found;
    Step at{0, 0};
    while (at.a < a.size() || at.b < b.size()) {
        if (at != Step{0, 0} && !found.not_smallest_from) {
            found.not_smallest_from = at;
        }
        Step next = at;
        for (const Step &step : Search(a.subspan(at.a), b.subspan(at.b), member, most).steps()) {
            found.steps.push_back({moved(step.a, at.a), moved(step.b, at.b)});
            next.a += step.a == Step::kAbsent ? 0 : 1;
            next.b += step.b == Step::kAbsent ? 0 : 1;
        }
        at = next;
    }
    return found;
}

/** Elements of both sequences between two pairs. */
struct Gap {
    std::vector<Element> a, b;
    std::vector<size_t> places_a, places_b;

    void add(const Step &step, Elements all_a, Elements all_b) {
        if (step.a != Step::kAbsent) {
            a.push_back(all_a[step.a]);
            places_a.push_back(step.a);
        } else {
            b.push_back(all_b[step.b]);
            places_b.push_back(step.b);
        }
    }

    /** Appends its elements, those of one name as pairs. */
    void append_to(std::vector<Step> &steps, size_t most) const {
        for (const Step &step : align_by(a, b, &Element::name, most).steps) {
            steps.push_back({step.a == Step::kAbsent ? step.a : places_a[step.a],
                             step.b == Step::kAbsent ? step.b : places_b[step.b]});
        }
    }
};

}  // namespace

Alignment align(std::span<const Element> a, std::span<const Element> b, size_t most) {
    const Alignment exact = align_by(a, b, &Element::key, std::max<size_t>(most, 1));
    Alignment found{{}, exact.not_smallest_from};
    Gap gap;
    for (const Step &step : exact.steps) {
        if (step.is_pair()) {
            gap.append_to(found.steps, std::max<size_t>(most, 1));
            gap = {};
            found.steps.push_back(step);
        } else {
            gap.add(step, a, b);
        }
    }
    gap.append_to(found.steps, std::max<size_t>(most, 1));
    return found;
}

}  // namespace adptrace
