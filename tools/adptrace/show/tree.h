/**
 * @file tree.h
 * Calls and frames by the call that they are within.
 */
#pragma once

#include <stddef.h>
#include <functional>
#include <vector>

#include "tools/adptrace/recording/recording.h"

namespace adptrace {

/** The chosen calls and frames, and every call around one. A node is a number. */
class Tree {
  public:
    Tree(const Recording &recording, const std::function<bool(const Call &)> &has_call,
         const std::function<bool(const Frame &)> &has_frame);

    /** The first of those that are within none; kNone if there is none. */
    [[nodiscard]] size_t first() const { return first_; }
    [[nodiscard]] size_t first_within(size_t node) const { return links_[node].first; }
    /** The next one within the same call. */
    [[nodiscard]] size_t next(size_t node) const { return links_[node].next; }
    [[nodiscard]] bool is_call(size_t node) const { return node < recording_.calls().size(); }
    [[nodiscard]] const Call &call(size_t node) const { return recording_.calls()[node]; }
    [[nodiscard]] const Frame &frame(size_t node) const {
        return recording_.frames()[node - recording_.calls().size()];
    }

  private:
    struct Link {
        size_t first = kNone;
        size_t last = kNone;
        size_t next = kNone;
        bool is_shown = false;
    };

    void choose(const std::function<bool(const Call &)> &has_call, const std::function<bool(const Frame &)> &has_frame);
    void append(size_t node, size_t within);

    const Recording &recording_;
    std::vector<Link> links_;
    size_t first_ = kNone;
    size_t last_ = kNone;
};

}  // namespace adptrace
