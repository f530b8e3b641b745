// Frames on a bad cable: loss, duplicate, corrupt, rate, delay, in this order.
#include "vdevice/cable/bad_cable.h"

#include <algorithm>

namespace vdevice::cable {

OneWay::OneWay(const Conditions &conditions, int user_port, Direction direction)
    : conditions_{conditions}, fates_{conditions.seed, user_port, direction} {
    if (conditions.rate != 0) {
        line_.emplace(static_cast<uint32_t>(conditions.rate));
    }
}

void OneWay::take(const chip::Frame &frame, chip::Time now) {
    const uint64_t number = next_number_++;
    ++counts_.frames;
    if (fates_.happens(conditions_.loss, Question::kLoss, number)) {
        ++counts_.lost;
        return;
    }
    send(frame, now, number, 0);
    if (fates_.happens(conditions_.duplicate, Question::kDuplicate, number)) {
        ++counts_.duplicated;
        send(frame, now, number, 1);
    }
}

void OneWay::send(const chip::Frame &frame, chip::Time now, uint64_t number, unsigned copy) {
    if (waiting_.size() == kMostFrames || frame.size() > kMostOctets - waiting_octets_) {
        ++counts_.no_room;
        return;
    }
    std::vector<uint8_t> octets(frame.size());
    frame.copy_to(octets.data());
    corrupt(octets, number, copy);
    waiting_octets_ += octets.size();
    last_due_ = std::max(last_due_, due_of(octets.size(), now, number, copy));
    waiting_.push_back({last_due_, std::move(octets)});
}

void OneWay::corrupt(std::vector<uint8_t> &octets, uint64_t number, unsigned copy) {
    constexpr uint64_t kBits = 8;
    if (octets.empty() || !fates_.happens(conditions_.corrupt, Question::kCorrupt, number, copy)) {
        return;
    }
    const uint64_t bit = fates_.draw(Question::kBit, number, copy) % (octets.size() * kBits);
    octets[static_cast<size_t>(bit / kBits)] ^= static_cast<uint8_t>(1U << (bit % kBits));
    ++counts_.corrupted;
}

chip::Time OneWay::due_of(size_t octets, chip::Time now, uint64_t number, unsigned copy) {
    if (line_) {
        line_->send(octets, now);
        now = line_->free_at();
    }
    const uint64_t least = conditions_.delay - conditions_.jitter;
    const uint64_t drawn = fates_.draw(Question::kJitter, number, copy) % (2 * conditions_.jitter + 1);
    return now + chip::Time{static_cast<chip::Time::rep>(least + drawn)};
}

std::optional<chip::Time> OneWay::next() const {
    return waiting_.empty() ? std::nullopt : std::optional{waiting_.front().due};
}

void OneWay::cut() {
    counts_.cut += waiting_.size();
    waiting_.clear();
    waiting_octets_ = 0;
}

std::optional<chip::Time> BadCable::next() const {
    const std::optional<chip::Time> first = in.next();
    const std::optional<chip::Time> second = out.next();
    return first && second ? std::min(first, second) : (first ? first : second);
}

}  // namespace vdevice::cable
