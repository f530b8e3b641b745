/**
 * @file minimize.h
 * Delta debugging: the parts of a whole that are enough for a failure.
 */
#pragma once

#include <stddef.h>
#include <functional>
#include <vector>

namespace adptrace {

/** Indices of parts, ascending. */
using Parts = std::vector<size_t>;

/**
 * Removes ever smaller pieces of a whole that fails.
 *
 * @param count  of the parts of the whole
 * @param fails  whether the failure is still seen with these parts alone; not asked twice for the same ones. The parts
 *               for which it last said yes are the fewest so far.
 * @return parts that fail, and do not without any single one of them
 */
Parts minimize(size_t count, const std::function<bool(const Parts &)> &fails);

}  // namespace adptrace
