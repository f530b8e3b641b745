// Random numbers by counting: the generator SplitMix64, at any place of its sequence.
#include "vdevice/cable/fates.h"

#include "vdevice/cable/conditions.h"

namespace vdevice::cable {
namespace {

constexpr uint64_t kStep = 0x9E3779B97F4A7C15;
constexpr uint64_t kCopies = 2;
constexpr uint64_t kQuestions = 8;  // with room for more, so that those of today keep their answers

constexpr uint64_t mixed(uint64_t bits) {
    bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9;
    bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EB;
    return bits ^ (bits >> 31);
}

constexpr uint64_t extended(uint64_t key, uint64_t part) {
    return mixed(key + kStep * (part + 1));
}

}  // namespace

Fates::Fates(uint64_t seed, int user_port, Direction direction)
    : key_{extended(extended(extended(0, seed), static_cast<uint64_t>(user_port)), static_cast<uint64_t>(direction))} {}

uint64_t Fates::draw(Question question, uint64_t frame, unsigned copy) const {
    return extended(key_, (frame * kCopies + copy) * kQuestions + static_cast<uint64_t>(question));
}

bool Fates::happens(uint64_t share, Question question, uint64_t frame, unsigned copy) const {
    constexpr unsigned kHalf = 32;
    return share != 0 && ((draw(question, frame, copy) >> kHalf) * Conditions::kWhole) >> kHalf < share;
}

}  // namespace vdevice::cable
