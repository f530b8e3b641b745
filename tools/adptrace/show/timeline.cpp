// SVG without scripts, in colours for a light and a dark page. What colours say, shapes and titles say too.
#include "tools/adptrace/show/timeline.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "tools/adptrace/show/call_text.h"
#include "tools/adptrace/show/marks.h"
#include "tools/adptrace/show/times.h"

namespace adptrace {
namespace {

constexpr double kWidth = 1200;
constexpr double kLeft = 130;  // of the plot; the names of the lanes are beside it
constexpr double kRight = 20;
constexpr double kTop = 84;
constexpr double kRow = 18;
constexpr double kRowStep = 28;  // with room for the cross of a failure
constexpr double kLaneGap = 14;
constexpr double kLine = 19;
constexpr double kBottom = 60;
constexpr double kCharacter = 6.7;
constexpr double kMostTicks = 11;
constexpr double kCross = 3;
constexpr double kLeastWidth = 1;
constexpr double kLeastHeight = 5;
constexpr double kLeastPart = 2;
constexpr size_t kLongestTitle = 400;
constexpr size_t kLongestHeading = 140;

constexpr const char *kStyle =
    "<style>\n"
    "text{font:12px sans-serif;fill:#222}.n{font:11px monospace;fill:#fff}.h{font-size:15px;font-weight:bold}\n"
    ".p{fill:#fff}.g{stroke:#ddd}.l{fill:#2563a8}.d{fill:#2f7d4f}.f{fill:#b3261e}\n"
    ".u{fill:none;stroke:#222;stroke-dasharray:4 2}.x{fill:none;stroke:#b3261e;stroke-width:2}\n"
    "@media (prefers-color-scheme:dark){text{fill:#ddd}.n{fill:#fff}.p{fill:#16181c}.g{stroke:#3a3d44}\n"
    ".u{stroke:#ddd}.x{stroke:#ff8a80}}\n"
    "</style>\n";

/** Text for XML; what is not of ASCII a viewer might refuse. */
std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            default:
                result += c >= ' ' && c <= '~' ? c : '?';
        }
    }
    return result;
}

/** 1, 2 or 5 times a power of ten, so that there are not too many ticks. */
double tick_step(double range) {
    const double power = std::pow(10.0, std::floor(std::log10(std::max(range / kMostTicks, 1.0))));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (range / (power * factor) <= kMostTicks) {
            return power * factor;
        }
    }
    return power * 10;
}

const char *plural(size_t count) {
    return count == 1 ? "" : "s";
}

class Picture {
  public:
    Picture(const Recording &recording, const Filter &filter)
        : recording_(recording), marks_(marks_of(recording, filter, kWidth - kLeft - kRight)) {}
    Timeline timeline();

  private:
    void add_axis(double bottom);
    void add_legend();
    void add_lane(const Lane &lane, double top);
    void add_mark(const Mark &mark, double top);
    void add_rect(const char *kind, double x, double y, double width, double height);
    void add_cross(double x, double y);
    [[nodiscard]] std::string title_of(const Mark &mark) const;
    [[nodiscard]] std::string lane_name(const Lane &lane) const;
    /** What the picture shows, and what it leaves out. */
    [[nodiscard]] std::vector<std::string> sentences() const;
    void add_text(double x, double y, std::string_view text, const char *more = "") {
        svg_ += fmt::format("<text x=\"{:.1f}\" y=\"{:.1f}\"{}>{}</text>\n", x, y, more, escaped(text));
    }

    const Recording &recording_;
    Marks marks_;
    std::string svg_;
    double last_cross_ = 0; /**< in this row; crosses that touch say no more than one */
};

std::string Picture::title_of(const Mark &mark) const {
    const Call &call = recording_.calls()[mark.first];
    if (mark.count == 1) {
        return (time_text(call.began) + " s: " + call_text(call, {})).substr(0, kLongestTitle);
    }
    return fmt::format("{} calls from {} s to {} s, the first {}{}{}", mark.count, time_text(call.began),
                       time_text(mark.until), call.name,
                       mark.failed == 0 ? "" : fmt::format("; {} failed", mark.failed),
                       mark.unreturned == 0 ? "" : fmt::format("; {} did not return", mark.unreturned));
}

/** How high a mark is: of calls drawn as one it says how much of the time they take. */
double height_of(const Mark &mark) {
    const double width = mark.right - mark.left;
    return mark.count == 1 || width <= 0 ? kRow : std::clamp(kRow * mark.busy / width, kLeastHeight, kRow);
}

void Picture::add_rect(const char *kind, double x, double y, double width, double height) {
    svg_ += fmt::format("<rect class=\"{}\" x=\"{:.1f}\" y=\"{:.1f}\" width=\"{:.1f}\" height=\"{:.1f}\"/>", kind, x, y,
                        width, height);
}

void Picture::add_cross(double x, double y) {
    svg_ += fmt::format("<path class=\"x\" d=\"M{:.1f} {:.1f}l6 6m0 -6l-6 6\"/>", x - kCross, y - 2 * kCross - 1);
}

void Picture::add_mark(const Mark &mark, double top) {
    const Call &call = recording_.calls()[mark.first];
    const double x = kLeft + mark.left;
    const double width = std::max(mark.right - mark.left, kLeastWidth);
    const double height = height_of(mark);
    const double y = top + kRow - height;
    const bool is_unreturned = mark.unreturned == mark.count;
    svg_ += "<g><title>" + escaped(title_of(mark)) + "</title>";
    add_rect(is_unreturned ? "u" : is_of_library(call) ? "l" : "d", x, y, width, height);
    if (mark.failed > 0) {
        const double part = static_cast<double>(mark.failed) / static_cast<double>(mark.count);
        add_rect("f", x, y, width, std::max(part * height, kLeastPart));
        if (x >= last_cross_ + 4 * kCross) {
            add_cross(x + std::min(width / 2, kCross), top);
            last_cross_ = x;
        }
    }
    const std::string label = mark.count == 1 ? std::string(call.name) : fmt::format("{} calls", mark.count);
    if (static_cast<double>(label.size() + 1) * kCharacter < width) {
        svg_ += fmt::format("<text class=\"{}\" x=\"{:.1f}\" y=\"{:.1f}\">{}</text>", is_unreturned ? "m" : "n", x + 3,
                            top + kRow - 5, escaped(label));
    }
    svg_ += "</g>\n";
}

std::string Picture::lane_name(const Lane &lane) const {
    return recording_.processes().size() == 1
               ? fmt::format("thread {}", lane.thread)
               : fmt::format("{}, thread {}", recording_.processes()[lane.process].id, lane.thread);
}

void Picture::add_lane(const Lane &lane, double top) {
    add_text(8, top + kRow - 4, lane_name(lane));
    for (size_t row = 0; row < lane.rows.size(); ++row) {
        last_cross_ = 0;
        for (const Mark &mark : lane.rows[row]) {
            add_mark(mark, top + static_cast<double>(row) * kRowStep);
        }
    }
}

void Picture::add_axis(double bottom) {
    const double range = std::max(static_cast<double>(marks_.until) - static_cast<double>(marks_.from), 1.0);
    const double step = tick_step(range);
    const TimeUnit &unit = unit_for(static_cast<uint64_t>(step));
    for (double at = 0; at <= range; at += step) {
        const double x = kLeft + at / range * (kWidth - kLeft - kRight);
        svg_ += fmt::format("<line class=\"g\" x1=\"{0:.1f}\" x2=\"{0:.1f}\" y1=\"{1}\" y2=\"{2}\"/>\n", x, kTop - 16,
                            bottom);
        add_text(x, bottom + 16, fmt::format("{:.0f} {}", at / static_cast<double>(unit.nanoseconds), unit.name),
                 " text-anchor=\"middle\"");
    }
}

void Picture::add_legend() {
    struct Row {
        const char *kind;
        const char *text;
    };
    constexpr Row kRows[] = {{"l", "call of the library"},
                             {"d", "call of the driver or a service"},
                             {"f", "failed, with a cross"},
                             {"u", "did not return"}};
    double x = kLeft;
    for (const Row &row : kRows) {
        add_rect(row.kind, x, 46, 14, 12);
        if (*row.kind == 'f') {
            add_cross(x + 7, 46);
        }
        add_text(x + 20, 56, row.text);
        x += 230;
    }
}

std::vector<std::string> Picture::sentences() const {
    const size_t lanes = marks_.lanes.size();
    if (marks_.calls == 0) {
        return {"No call is chosen."};
    }
    std::vector<std::string> result = {fmt::format("{} call{} of {} thread{}, from {} s to {} s of the recording.",
                                                   marks_.calls, plural(marks_.calls), lanes, plural(lanes),
                                                   time_text(marks_.from), time_text(marks_.until))};
    if (marks_.marks < marks_.calls) {
        result.push_back(
            fmt::format("Calls that are too close are drawn as one, as high as their share of the time: {} marks; "
                        "--since and --until show a part.",
                        marks_.marks));
    }
    if (marks_.threads > 0) {
        result.push_back(fmt::format("Left out: {} call{} of {} more thread{}; --thread and --process show them.",
                                     marks_.other_calls, plural(marks_.other_calls), marks_.threads,
                                     plural(marks_.threads)));
    }
    if (marks_.inner_calls > 0) {
        result.push_back(
            fmt::format("Left out: {} call{} deep within others.", marks_.inner_calls, plural(marks_.inner_calls)));
    }
    return result;
}

Timeline Picture::timeline() {
    const std::vector<std::string> below = sentences();
    double bottom = kTop;
    for (const Lane &lane : marks_.lanes) {
        bottom += static_cast<double>(lane.rows.size()) * kRowStep + kLaneGap;
    }
    const double height = bottom + kBottom + static_cast<double>(below.size()) * kLine;
    svg_ =
        fmt::format("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {0} {1}\" width=\"{0}\" height=\"{1}\">\n",
                    kWidth, height);
    svg_ += "<title>Calls over time: " + escaped(below[0]) + "</title>\n";
    svg_ += kStyle;
    svg_ += fmt::format("<rect class=\"p\" width=\"{}\" height=\"{}\"/>\n", kWidth, height);
    add_text(8, 22, header_text(recording_.header()).substr(0, kLongestHeading), " class=\"h\"");
    add_legend();
    add_axis(bottom);
    double top = kTop;
    for (const Lane &lane : marks_.lanes) {
        add_lane(lane, top);
        top += static_cast<double>(lane.rows.size()) * kRowStep + kLaneGap;
    }
    add_text(kLeft, bottom + 2 * kLine, fmt::format("time from {} s of the recording on", time_text(marks_.from)));
    std::string summary;
    for (size_t i = 0; i < below.size(); ++i) {
        add_text(8, bottom + (static_cast<double>(i) + 3.5) * kLine, below[i]);
        summary += (i == 0 ? "" : " ") + below[i];
    }
    return {svg_ + "</svg>\n", summary};
}

}  // namespace

Timeline timeline_of(const Recording &recording, const Filter &filter) {
    return Picture(recording, filter).timeline();
}

}  // namespace adptrace
