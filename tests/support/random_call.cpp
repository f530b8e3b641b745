// Random arguments and outputs, made by the call table.
#include "tests/support/random_call.h"

#include <algorithm>
#include <cstring>

namespace random_call {

using calls::Call;
using calls::CallId;
using calls::Element;
using calls::Kind;
using calls::Param;

namespace {

constexpr unsigned kHighBits = 32;
constexpr uint32_t kNullOneIn = 6;

}  // namespace

uint32_t Random::next() {
    state_ = state_ * kMultiplier + kIncrement;
    return static_cast<uint32_t>(state_ >> kHighBits);
}

void fill_random(Source &random, const Element &element, void *at, size_t count) {
    const size_t size = element.size;
    for (size_t index = 0; index < count; ++index) {
        auto *to = static_cast<uint8_t *>(at) + index * size;
        if (element.kind == Kind::kStruct) {
            for (const auto &field : element.layout->fields) {
                fill_random(random, field.element, to + field.offset, field.count);
            }
            continue;
        }
        uint64_t value = random.next();
        if (element.kind == Kind::kU64) {
            value = value << kHighBits | random.next();
        }
        calls::store(element.kind, to, static_cast<int64_t>(value));
    }
}

RandomCall::RandomCall(CallId id, uint64_t seed) : call_(calls::call(id)), arguments_(call_.params.size(), nullptr) {
    Random random(seed);
    fill(random);
}

RandomCall::RandomCall(CallId id, Source &random) : call_(calls::call(id)), arguments_(call_.params.size(), nullptr) {
    fill(random);
}

void RandomCall::fill(Source &random) {
    const auto is_counter = [&](size_t index) {
        return std::any_of(call_.params.begin(), call_.params.end(),
                           [&](const Param &param) { return param.counted_by == static_cast<int32_t>(index); });
    };
    for (size_t index = 0; index < call_.params.size(); ++index) {
        const Param &param = call_.params[index];
        if (!param.is_pointer()) {
            void *value = allocate(param.element.size);
            fill_random(random, param.element, value, 1);
            if (is_counter(index)) {
                calls::store(param.element.kind, value, random.below(kLongestCount));
            }
            arguments_[index] = value;
        }
    }
    for (size_t index = 0; index < call_.params.size(); ++index) {
        if (call_.params[index].is_pointer()) {
            add_pointer(index, random);
        }
    }
}

void *RandomCall::allocate(size_t size) {
    return memory_.emplace_back((size + sizeof(uint64_t)) / sizeof(uint64_t)).data();
}

void RandomCall::add_pointer(size_t index, Source &random) {
    const Param &param = call_.params[index];
    auto *slot = static_cast<void **>(allocate(sizeof(void *)));
    arguments_[index] = slot;
    if (random.below(kNullOneIn) == 0) {
        return;
    }
    if (param.is_text()) {
        constexpr uint32_t kFirstPrintable = ' ';
        constexpr uint32_t kPrintable = 95;
        constexpr uint32_t kLongestText = 40;
        const uint32_t length = random.below(kLongestText);
        auto *text = static_cast<char *>(allocate(length + 1));
        std::generate_n(text, length, [&] { return static_cast<char>(kFirstPrintable + random.below(kPrintable)); });
        *slot = text;
        return;
    }
    const size_t count = calls::extent(call_, index, arguments_.data());
    *slot = allocate(count * param.element.size);
    fill_random(random, param.element, *slot, count);
    if (calls::is_event_message(call_, param)) {
        void *record = allocate(calls::kEventRecordNumbers * sizeof(uint16_t));
        fill_random(random, calls::kEventRecordNumber, record, calls::kEventRecordNumbers);
        static_cast<uintptr_t *>(*slot)[count - 1] = random.below(2) == 0 ? 0 : reinterpret_cast<uintptr_t>(record);
    }
}

void write_outputs(CallId id, const void *const *arguments, uint64_t seed) {
    const Call &call = calls::call(id);
    Random random(seed);
    for (size_t index = 0; index < call.params.size(); ++index) {
        void *to = call.params[index].is_written() ? *static_cast<void *const *>(arguments[index]) : nullptr;
        if (to != nullptr) {
            fill_random(random, call.params[index].element, to, calls::extent(call, index, arguments));
        }
    }
}

int32_t random_result(CallId id, uint64_t seed) {
    constexpr uint32_t kKinds = 4;
    Random random(seed + static_cast<uint64_t>(id));
    switch (random.below(kKinds)) {
        case 0:
            return static_cast<int32_t>(random.next() | 0x80000000);
        case 1:
            return static_cast<int32_t>(random.next() >> 1);
        default:
            return 0;
    }
}

}  // namespace random_call
