// Times as text: seconds of the recording, and durations in a unit that fits.
#include "tools/adptrace/show/times.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace adptrace {
namespace {

constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr int64_t kNanosecondsPerMicrosecond = 1'000;
constexpr std::array<TimeUnit, 4> kTimeUnits = {{{1'000'000'000, "s"}, {1'000'000, "ms"}, {1'000, "us"}, {1, "ns"}}};

}  // namespace

const TimeUnit &unit_for(uint64_t nanoseconds) {
    return *std::find_if(kTimeUnits.begin(), kTimeUnits.end() - 1,
                         [nanoseconds](const TimeUnit &each) { return nanoseconds >= each.nanoseconds; });
}

std::string time_text(int64_t nanoseconds) {
    return fmt::format("{}.{:06}", nanoseconds / kNanosecondsPerSecond,
                       nanoseconds % kNanosecondsPerSecond / kNanosecondsPerMicrosecond);
}

std::string duration_text(uint64_t nanoseconds) {
    const TimeUnit &unit = unit_for(nanoseconds);
    const double value = static_cast<double>(nanoseconds) / static_cast<double>(unit.nanoseconds);
    const bool has_fraction = value < 10 && unit.nanoseconds > 1;
    return has_fraction ? fmt::format("{:.1f} {}", value, unit.name) : fmt::format("{:.0f} {}", value, unit.name);
}

uint64_t time_between(int64_t earlier, int64_t later) {
    return later < earlier ? 0 : static_cast<uint64_t>(later) - static_cast<uint64_t>(earlier);
}

}  // namespace adptrace
