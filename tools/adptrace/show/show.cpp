// Calls in the order of their beginning. What is within a call is indented; in a tree it follows the call at once, also
// when other threads made calls meanwhile.
#include "tools/adptrace/show/show.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/adptrace/show/events.h"
#include "tools/adptrace/show/times.h"
#include "tools/adptrace/show/tree.h"

namespace adptrace {
namespace {

constexpr size_t kIndent = 2;

class Shower {
  public:
    Shower(const Recording &recording, const ShowOptions &options, const LineSink &sink)
        : recording_(recording),
          options_(options),
          sink_(sink),
          has_processes_(options.has_processes || recording.processes().size() > 1) {}

    void show();

  private:
    void show_list();
    void show_tree();
    void show_branch(const Tree &tree, size_t node, const std::string &prefix);
    void show_event(const Event &event);
    void write(int64_t at, const std::string &text) {
        sink_(fmt::format("{:>12} {}\n", time_text(at), text));
        is_empty_ = false;
    }
    [[nodiscard]] std::string thread_text(size_t process, uint32_t thread) const {
        return has_processes_ ? fmt::format("[{}/{}]", recording_.processes()[process].id, thread)
                              : fmt::format("[{}]", thread);
    }
    [[nodiscard]] bool has(const Frame &frame) const {
        const Filter &filter = options_.filter;
        return filter.has(recording_, frame.process, frame.at) && (!filter.thread || frame.thread == *filter.thread);
    }
    void write_call(const Call &call, const std::string &prefix) {
        write(call.began, thread_text(call.process, call.thread) + " " + prefix + call_text(call, options_.style));
    }
    void write_frame(const Frame &frame, const std::string &prefix) {
        write(frame.at, thread_text(frame.process, frame.thread) + " " + prefix + frame_text(frame, options_.style));
    }

    const Recording &recording_;
    const ShowOptions &options_;
    const LineSink &sink_;
    bool has_processes_;
    bool is_empty_ = true;
    std::vector<uint8_t> indents_; /**< of what is within each call */
};

void Shower::show_event(const Event &event) {
    if (event.line < options_.first_line) {
        return;
    }
    const Process &process = recording_.processes()[event.process];
    if (event.kind == Event::Kind::kFrame) {
        const Frame &frame = recording_.frames()[event.index];
        const size_t indent = frame.within == kNone ? 0 : indents_[frame.within];
        if (options_.has_frames && has(frame)) {
            write_frame(frame, std::string(indent, ' '));
        }
    } else if (!options_.filter.is_about_calls() && options_.filter.has(recording_, event.process, event.at)) {
        write(event.at, event.kind == Event::Kind::kBoard   ? board_text(recording_.boards()[event.index])
                        : event.kind == Event::Kind::kStart ? start_text(process)
                                                            : exit_text(process));
    }
}

void Shower::show_list() {
    const std::vector<Event> events = events_of(recording_);
    auto event = events.begin();
    indents_.resize(recording_.calls().size());
    for (size_t i = 0; i < recording_.calls().size(); ++i) {
        const Call &call = recording_.calls()[i];
        for (; event != events.end() && event->line < call.line; ++event) {
            show_event(*event);
        }
        const size_t indent = call.within == kNone ? 0 : indents_[call.within];
        const bool is_shown = options_.filter.has(recording_, call);
        indents_[i] = static_cast<uint8_t>(std::min<size_t>(indent + (is_shown ? kIndent : 0), UINT8_MAX));
        if (is_shown) {
            write_call(call, std::string(indent, ' '));
        }
    }
    std::for_each(event, events.end(), [this](const Event &each) { show_event(each); });
}

void Shower::show_branch(const Tree &tree, size_t node, const std::string &prefix) {
    for (size_t child = tree.first_within(node); child != kNone;) {
        const size_t next = tree.next(child);
        const std::string branch = prefix + (next == kNone ? "`- " : "|- ");
        if (tree.is_call(child)) {
            write_call(tree.call(child), branch);
            show_branch(tree, child, prefix + (next == kNone ? "   " : "|  "));
        } else {
            write_frame(tree.frame(child), branch);
        }
        child = next;
    }
}

void Shower::show_tree() {
    const auto has_frame = [this](const Frame &frame) { return options_.has_frames && has(frame); };
    const Tree tree(
        recording_, [this](const Call &call) { return options_.filter.has(recording_, call); }, has_frame);
    std::vector<Event> events = events_of(recording_);
    std::erase_if(events, [](const Event &event) { return event.kind == Event::Kind::kFrame; });
    auto event = events.begin();
    for (size_t root = tree.first(); root != kNone; root = tree.next(root)) {
        const size_t line = tree.is_call(root) ? tree.call(root).line : tree.frame(root).line;
        for (; event != events.end() && event->line < line; ++event) {
            show_event(*event);
        }
        if (tree.is_call(root)) {
            write_call(tree.call(root), "");
            show_branch(tree, root, "");
        } else {
            write_frame(tree.frame(root), "");
        }
    }
    std::for_each(event, events.end(), [this](const Event &each) { show_event(each); });
}

void Shower::show() {
    if (!options_.filter.is_about_calls() && options_.first_line <= 1) {
        sink_("--- " + header_text(recording_.header()) + "\n");
    }
    options_.is_tree ? show_tree() : show_list();
    if (is_empty_ && options_.first_line == 0 && options_.filter.is_about_calls()) {
        sink_("--- no call is chosen\n");
    }
    if (recording_.is_cut()) {
        sink_("--- the recording is cut: its last line is not whole\n");
    }
}

}  // namespace

void show(const Recording &recording, const ShowOptions &options, const LineSink &sink) {
    Shower(recording, options, sink).show();
}

}  // namespace adptrace
