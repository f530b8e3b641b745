// Exact arithmetic of rates: nothing is rounded and nothing overflows.
#include "vdevice/chip/rates/token_bucket.h"

#include <algorithm>

namespace vdevice::chip {
namespace {

constexpr int64_t kUnits = 1'000'000'000;  // to a kilobit or a frame
constexpr int64_t kOctetsPerKilobit = 125;

int64_t floor_quotient(int64_t dividend, int64_t divisor) {
    const int64_t quotient = dividend / divisor;
    return dividend % divisor < 0 ? quotient - 1 : quotient;
}

}  // namespace

TokenBucket::TokenBucket(Counting counting, RateLimit limit, Time now)
    : counting_{counting}, limit_{limit}, level_{full()}, filled_{now} {}

/** What an octet takes, or a frame. */
int64_t TokenBucket::unit() const {
    return counting_ == Counting::kFrames ? kUnits : kUnits / kOctetsPerKilobit;
}

int64_t TokenBucket::full() const {
    if (limit_.depth != 0) {
        return int64_t{limit_.depth} * kUnits;
    }
    const size_t least = counting_ == Counting::kFrames ? kMinFrames : kMinOctets;
    const int64_t burst = int64_t{limit_.rate} * std::chrono::nanoseconds{kBurst}.count();
    return std::max(burst, static_cast<int64_t>(least) * unit());
}

size_t TokenBucket::depth() const {
    return static_cast<size_t>(full() / unit());
}

int64_t TokenBucket::level() const {
    return floor_quotient(level_, unit());
}

int64_t TokenBucket::cost(size_t octets) const {
    return counting_ == Counting::kFrames ? unit() : static_cast<int64_t>(octets) * unit();
}

/** What must be in for the frame to pass. */
int64_t TokenBucket::needed(size_t octets) const {
    return std::min(cost(octets), full());
}

void TokenBucket::set_limit(RateLimit limit, Time now) {
    fill(now);
    limit_ = limit;
    level_ = std::min(level_, full());
}

// The bucket may have been left alone for years: the time is compared before it is multiplied.
void TokenBucket::fill(Time now) {
    const int64_t missing = full() - level_;
    const int64_t elapsed = std::max<int64_t>((now - filled_).count(), 0);
    level_ += elapsed > missing / limit_.rate ? missing : elapsed * limit_.rate;
    filled_ = std::max(filled_, now);
}

bool TokenBucket::charge(size_t octets, Time now) {
    fill(now);
    if (!has_room(octets)) {
        return false;
    }
    level_ -= cost(octets);
    return true;
}

Time TokenBucket::ready_at(size_t octets) const {
    const int64_t missing = needed(octets) - level_;
    if (missing <= 0) {
        return filled_;
    }
    const Time wait{(missing - 1) / limit_.rate + 1};
    return wait > Time::max() - filled_ ? Time::max() : filled_ + wait;
}

}  // namespace vdevice::chip
