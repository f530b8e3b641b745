// The search of A. Zeller and R. Hildebrandt, Simplifying and isolating failure-inducing input, by complements alone.
#include "tools/adptrace/reduce/minimize.h"

#include <algorithm>
#include <numeric>
#include <unordered_set>

namespace adptrace {
namespace {

/** Remembers the parts that do not fail. Those that do are never tried again: the search goes on from them. */
class Tries {
  public:
    Tries(size_t count, const std::function<bool(const Parts &)> &fails) : count_(count), fails_(fails) {}

    bool fails(const Parts &parts) {
        std::vector<bool> set(count_);
        std::for_each(parts.begin(), parts.end(), [&set](size_t part) { set[part] = true; });
        const bool is_new = passed_.insert(std::move(set)).second;
        return is_new && fails_(parts);
    }

  private:
    size_t count_;
    const std::function<bool(const Parts &)> &fails_;
    std::unordered_set<std::vector<bool>> passed_;
};

Parts without(const Parts &parts, size_t at, size_t piece) {
    Parts rest(parts.begin(), parts.begin() + static_cast<ptrdiff_t>(at));
    rest.insert(rest.end(), parts.begin() + static_cast<ptrdiff_t>(std::min(at + piece, parts.size())), parts.end());
    return rest;
}

}  // namespace

Parts minimize(size_t count, const std::function<bool(const Parts &)> &fails) {
    Tries tries(count, fails);
    Parts parts(count);
    std::iota(parts.begin(), parts.end(), 0);
    if (count == 0 || tries.fails({})) {
        return {};
    }
    for (size_t piece = (count + 1) / 2; piece >= 1;) {
        bool was_shortened = false;
        for (size_t at = 0; at < parts.size();) {
            Parts candidate = without(parts, at, piece);
            if (tries.fails(candidate)) {
                parts = std::move(candidate);
                was_shortened = true;
            } else {
                at += piece;
            }
        }
        piece = was_shortened && piece == 1 ? 1 : piece / 2;
    }
    return parts;
}

}  // namespace adptrace
