// Sets a limit, and charges frames to its bucket.
#include "vdevice/chip/rates/limiter.h"

namespace vdevice::chip {

Status Limiter::set(RateLimit limit, Time now) {
    if (limit.rate > TokenBucket::kMaxRate || limit.depth > TokenBucket::kMaxDepth) {
        return Status::kBadArgument;
    }
    limit_ = limit;
    if (limit.rate == 0) {
        bucket_.reset();
        passed_ = dropped_ = 0;
    } else if (bucket_) {
        bucket_->set_limit(limit, now);
    } else {
        bucket_.emplace(counting_, limit, now);
    }
    return Status::kOk;
}

void Limiter::set_counting(Counting counting, Time now) {
    if (counting == counting_) {
        return;
    }
    counting_ = counting;
    if (bucket_) {
        bucket_.emplace(counting, limit_, now);
    }
}

bool Limiter::has_room(size_t octets, Time now) {
    if (!bucket_) {
        return true;
    }
    bucket_->fill(now);
    return bucket_->has_room(octets);
}

void Limiter::pass(size_t octets, Time now) {
    if (bucket_) {
        bucket_->charge(octets, now);
        ++passed_;
    }
}

void Limiter::refuse() {
    ++dropped_;
}

bool Limiter::charge_bucket(size_t octets, Time now) {
    if (!has_room(octets, now)) {
        refuse();
        return false;
    }
    pass(octets, now);
    return true;
}

std::optional<TokenBucket> Limiter::bucket_at(Time now) const {
    std::optional<TokenBucket> bucket = bucket_;
    if (bucket) {
        bucket->fill(now);
    }
    return bucket;
}

}  // namespace vdevice::chip
