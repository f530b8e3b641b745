/**
 * @file pieces.h
 * A recording in pieces that can be left out: a call of the program's with everything within it, or a frame.
 */
#pragma once

#include <stddef.h>
#include <string>
#include <string_view>
#include <vector>

#include "tools/adptrace/recording/recording.h"
#include "tools/adptrace/reduce/minimize.h"

namespace adptrace {

class Pieces {
  public:
    /** The recording must outlive it. */
    explicit Pieces(const Recording &recording);

    [[nodiscard]] size_t count() const { return is_call_.size(); }
    /** How many of these are calls. */
    [[nodiscard]] size_t calls(const Parts &parts) const;
    /** A recording of these, and of all lines that belong to no piece. */
    [[nodiscard]] std::string text(const Parts &parts) const;

  private:
    struct Line {
        std::string_view text;
        size_t piece = kNone;
    };

    void mark(std::string_view line, size_t piece);

    std::vector<Line> lines_;
    std::vector<bool> is_call_; /**< by piece */
};

}  // namespace adptrace
