// Lines keep their text: a recording of fewer calls has the numbers and times of the whole one.
#include "tools/adptrace/reduce/pieces.h"

#include <algorithm>

namespace adptrace {

Pieces::Pieces(const Recording &recording) {
    for (std::string_view rest = recording.text(); !rest.empty();) {
        const size_t end = rest.find('\n');
        lines_.push_back({rest.substr(0, end), kNone});
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    if (recording.is_cut()) {
        lines_.pop_back();
    }
    const std::vector<Call> &calls = recording.calls();
    std::vector<size_t> pieces(calls.size());
    auto frame = recording.frames().begin();
    const auto add_frames = [&](size_t before) {
        for (; frame != recording.frames().end() && frame->before == before; ++frame) {
            if (frame->within == kNone) {
                is_call_.push_back(false);
            }
            lines_[frame->line - 1].piece = frame->within == kNone ? is_call_.size() - 1 : pieces[frame->within];
        }
    };
    for (size_t index = 0; index < calls.size(); ++index) {
        add_frames(index);
        const Call &call = calls[index];
        if (call.within == kNone) {
            is_call_.push_back(true);
        }
        pieces[index] = call.within == kNone ? is_call_.size() - 1 : pieces[call.within];
        lines_[call.line - 1].piece = pieces[index];
        if (call.has_returned) {
            mark(call.end_text, pieces[index]);
        }
    }
    add_frames(calls.size());
}

/** @p line is a part of the recording's text. */
void Pieces::mark(std::string_view line, size_t piece) {
    const auto found = std::lower_bound(lines_.begin(), lines_.end(), line.data(),
                                        [](const Line &each, const char *at) { return each.text.data() < at; });
    found->piece = piece;
}

size_t Pieces::calls(const Parts &parts) const {
    return static_cast<size_t>(
        std::count_if(parts.begin(), parts.end(), [this](size_t part) { return is_call_[part]; }));
}

std::string Pieces::text(const Parts &parts) const {
    std::vector<bool> is_kept(count());
    std::for_each(parts.begin(), parts.end(), [&is_kept](size_t part) { is_kept[part] = true; });
    std::string text;
    for (const Line &line : lines_) {
        if (line.piece == kNone || is_kept[line.piece]) {
            text.append(line.text).push_back('\n');
        }
    }
    return text;
}

}  // namespace adptrace
