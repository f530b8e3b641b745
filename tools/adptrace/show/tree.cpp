// Nodes are the indices of the calls, then those of the frames.
#include "tools/adptrace/show/tree.h"

namespace adptrace {

Tree::Tree(const Recording &recording, const std::function<bool(const Call &)> &has_call,
           const std::function<bool(const Frame &)> &has_frame)
    : recording_(recording), links_(recording.calls().size() + recording.frames().size()) {
    choose(has_call, has_frame);
    const size_t calls = recording.calls().size();
    size_t frame = calls;
    for (size_t i = 0; i <= calls; ++i) {
        for (; frame < links_.size() && this->frame(frame).before <= i; ++frame) {
            append(frame, this->frame(frame).within);
        }
        if (i < calls) {
            append(i, call(i).within);
        }
    }
}

void Tree::choose(const std::function<bool(const Call &)> &has_call,
                  const std::function<bool(const Frame &)> &has_frame) {
    // A call stands before everything that is within it.
    for (size_t node = links_.size(); node-- > 0;) {
        Link &link = links_[node];
        link.is_shown = is_call(node) ? link.is_shown || has_call(call(node)) : has_frame(frame(node));
        const size_t within = is_call(node) ? call(node).within : frame(node).within;
        if (link.is_shown && within != kNone) {
            links_[within].is_shown = true;
        }
    }
}

void Tree::append(size_t node, size_t within) {
    if (!links_[node].is_shown) {
        return;
    }
    size_t &first = within == kNone ? first_ : links_[within].first;
    size_t &last = within == kNone ? last_ : links_[within].last;
    (last == kNone ? first : links_[last].next) = node;
    last = node;
}

}  // namespace adptrace
