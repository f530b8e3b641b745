// The calls of a thread at one depth follow each other. Those that are narrow are joined up to some width, so a row has
// a bounded number of marks.
#include "tools/adptrace/show/marks.h"

#include <algorithm>
#include <map>
#include <utility>

namespace adptrace {
namespace {

constexpr size_t kMostLanes = 12;
constexpr size_t kMostRows = 4;
constexpr double kNarrow = 3;  // pixels
constexpr double kJoined = 6;

class Layout {
  public:
    Layout(const Recording &recording, const Filter &filter, double width)
        : recording_(recording), filter_(filter), width_(width) {}
    Marks marks();

  private:
    void choose();
    void add(size_t index);
    std::optional<size_t> lane_of(const Call &call);
    [[nodiscard]] double place_of(int64_t at) const;
    [[nodiscard]] int64_t end_of(const Call &call) const;
    void append(std::vector<Mark> &row, const Mark &mark);

    const Recording &recording_;
    const Filter &filter_;
    double width_;
    std::vector<bool> is_chosen_;
    std::map<std::pair<size_t, uint32_t>, std::optional<size_t>> lanes_;
    Marks marks_;
};

/** A call that has not returned lasts as long as the one around it, or until its process ended. */
int64_t Layout::end_of(const Call &call) const {
    const Call *each = &call;
    while (!each->has_returned && each->within != kNone) {
        each = &recording_.calls()[each->within];
    }
    const Process &process = recording_.processes()[call.process];
    const int64_t latest = process.exit_line != 0 ? process.ended : marks_.until;
    return std::max(each->has_returned ? each->ended : latest, call.began);
}

void Layout::choose() {
    is_chosen_.resize(recording_.calls().size());
    bool is_first = true;
    for (size_t i = 0; i < is_chosen_.size(); ++i) {
        const Call &call = recording_.calls()[i];
        is_chosen_[i] = filter_.has(recording_, call);
        if (is_chosen_[i]) {
            marks_.from = is_first ? call.began : std::min(marks_.from, call.began);
            marks_.until = std::max(marks_.until, std::min(end_of(call), filter_.until));
            is_first = false;
        }
    }
}

double Layout::place_of(int64_t at) const {
    const double all = std::max(static_cast<double>(marks_.until) - static_cast<double>(marks_.from), 1.0);
    const double here = static_cast<double>(at) - static_cast<double>(marks_.from);
    return std::clamp(here / all, 0.0, 1.0) * width_;
}

std::optional<size_t> Layout::lane_of(const Call &call) {
    const auto [found, is_new] = lanes_.try_emplace({call.process, call.thread});
    if (is_new && marks_.lanes.size() < kMostLanes) {
        found->second = marks_.lanes.size();
        marks_.lanes.push_back({call.process, call.thread, {}});
    } else if (is_new) {
        ++marks_.threads;
    }
    return found->second;
}

void Layout::append(std::vector<Mark> &row, const Mark &mark) {
    if (!row.empty()) {
        Mark &last = row.back();
        if (mark.right - mark.left < kNarrow && mark.right <= last.left + kJoined) {
            last.right = std::max(last.right, mark.right);
            last.busy += mark.busy;
            last.count += mark.count;
            last.failed += mark.failed;
            last.unreturned += mark.unreturned;
            last.until = std::max(last.until, mark.until);
            return;
        }
    }
    row.push_back(mark);
    ++marks_.marks;
}

void Layout::add(size_t index) {
    const Call &call = recording_.calls()[index];
    const auto lane = lane_of(call);
    if (!lane || call.depth >= kMostRows) {
        ++(lane ? marks_.inner_calls : marks_.other_calls);
        return;
    }
    auto &rows = marks_.lanes[*lane].rows;
    rows.resize(std::max<size_t>(rows.size(), call.depth + 1));
    const int64_t end = end_of(call);
    const double left = place_of(call.began);
    const double right = place_of(end);
    append(rows[call.depth], {left, right, right - left, index, 1, has_failed(call) ? size_t{1} : 0,
                              call.has_returned ? size_t{0} : 1, end});
    ++marks_.calls;
}

Marks Layout::marks() {
    choose();
    for (size_t i = 0; i < is_chosen_.size(); ++i) {
        if (is_chosen_[i]) {
            add(i);
        }
    }
    return std::move(marks_);
}

}  // namespace

Marks marks_of(const Recording &recording, const Filter &filter, double width) {
    return Layout(recording, filter, width).marks();
}

}  // namespace adptrace
