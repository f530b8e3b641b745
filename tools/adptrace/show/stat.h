/**
 * @file stat.h
 * How often each call was made, with what success, and how long it took.
 */
#pragma once

#include <string>

#include "tools/adptrace/recording/recording.h"
#include "tools/adptrace/show/filter.h"

namespace adptrace {

enum class Order { kTime, kCount, kErrors, kName };

/** Tables of the library's calls and of the driver's. */
std::string stat_text(const Recording &recording, const Filter &filter, Order order);
/** The same as JSON, on one line. */
std::string stat_json(const Recording &recording, const Filter &filter, Order order);

}  // namespace adptrace
