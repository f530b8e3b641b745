// Random arguments and outputs, made by the call table.
#include "tests/support/random_call.h"

#include <adp/pkt.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "calls/exported.h"

namespace random_call {

using calls::CallId;
using calls::Element;
using calls::Kind;
using calls::Param;
using calls::Shape;

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
                if (!field.is_pointer) {
                    fill_random(random, field.element, to + field.offset, field.count);
                }
            }
            continue;
        }
        if (element.octets != calls::Octets::kPlain && index % sizeof(uint32_t) != 0) {
            *to = *(to - 1);  // octets that may be words: the same number on every machine
            continue;
        }
        if (element.kind == Kind::kCallback) {
            void (*const function)() = random.below(2) == 0 ? nullptr : element.callback->report;
            std::memcpy(to, &function, sizeof function);
            continue;
        }
        uint64_t value = random.next();
        if (element.kind == Kind::kU64) {
            value = value << kHighBits | random.next();
        }
        calls::store(element.kind, to, static_cast<int64_t>(value));
    }
}

RandomCall::RandomCall(std::span<const Param> params, Source &random) : params_(params), arguments_(params.size()) {
    fill(random);
}

RandomCall::RandomCall(CallId id, Source &random) : RandomCall(calls::call(id).params, random) {}

RandomCall::RandomCall(CallId id, uint64_t seed)
    : params_(calls::call(id).params), arguments_(params_.size(), nullptr) {
    Random random(seed);
    fill(random);
}

void RandomCall::fill(Source &random) {
    for (size_t index = 0; index < params_.size(); ++index) {
        if (!params_[index].is_pointer()) {
            add_value(index, random);
        }
    }
    for (const bool is_set_by_call : {false, true}) {
        for (size_t index = 0; index < params_.size(); ++index) {
            if (params_[index].is_pointer() && (params_[index].shape == Shape::kOutPointer) == is_set_by_call) {
                add_pointer(index, random);
            }
        }
    }
}

void RandomCall::add_value(size_t index, Source &random) {
    const Param &param = params_[index];
    void *value = allocate(param.element.size);
    arguments_[index] = value;
    if (param.shape == Shape::kPortsWord) {
        auto *words = static_cast<uint32_t *>(allocate(calls::kPortsWords * sizeof(uint32_t)));
        fill_random(random, calls::kWord32, words, calls::kPortsWords);
        *static_cast<uintptr_t *>(value) = random.below(kNullOneIn) == 0 ? 0 : reinterpret_cast<uintptr_t>(words);
        return;
    }
    fill_random(random, param.element, value, 1);
    const auto is_counted = [&](const Param &each) { return each.counted_by == static_cast<int32_t>(index); };
    if (std::any_of(params_.begin(), params_.end(), is_counted)) {
        constexpr uint32_t kLongestCount = 9;
        calls::store(param.element.kind, value, random.below(kLongestCount));
    }
}

void *RandomCall::allocate(size_t size) {
    return memory_.emplace_back((size + sizeof(uint64_t)) / sizeof(uint64_t)).data();
}

void RandomCall::add_pointer(size_t index, Source &random) {
    auto *slot = static_cast<void **>(allocate(sizeof(void *)));
    arguments_[index] = slot;
    if (random.below(kNullOneIn) != 0) {
        *slot = pointed(index, random);
    }
}

void *RandomCall::pointed(size_t index, Source &random) {
    const Param &param = params_[index];
    switch (param.shape) {
        case Shape::kText:
            return text(random);
        case Shape::kList:
            return list(random);
        case Shape::kFrameRecord:
            return frame_record(*param.element.layout, random);
        case Shape::kOutPointer:
            return allocate(sizeof(void *));
        default:
            return plain(index, random);
    }
}

void *RandomCall::text(Source &random) {
    constexpr uint32_t kFirstPrintable = ' ';
    constexpr uint32_t kPrintable = 95;
    constexpr uint32_t kLongestText = 40;
    const uint32_t length = random.below(kLongestText);
    auto *text = static_cast<char *>(allocate(length + 1));
    std::generate_n(text, length, [&] { return static_cast<char>(kFirstPrintable + random.below(kPrintable)); });
    return text;
}

void *RandomCall::list(Source &random) {
    constexpr uint32_t kMostNodes = 4;
    auto *head = static_cast<adp_list_link_t *>(allocate(sizeof(adp_list_link_t)));
    *head = {head, head};
    for (uint32_t nodes = random.below(kMostNodes); nodes > 0; --nodes) {
        auto *node = static_cast<adp_tx_dest_t *>(allocate(sizeof(adp_tx_dest_t)));
        *node = {{head->next, head}, random.next()};
        head->next->prev = &node->link;
        head->next = &node->link;
    }
    return head;
}

void *RandomCall::frame_record(const calls::Struct &layout, Source &random) {
    constexpr uint32_t kLongestFrame = 80;
    void *record = allocate(layout.size);
    fill_random(random, {Kind::kStruct, layout.size, false, false, &layout}, record, 1);
    const uint32_t length = random.below(kLongestFrame);
    auto *frame = static_cast<uint8_t *>(allocate(length));
    fill_random(random, {Kind::kU8, 1}, frame, length);
    for (const calls::Field &field : layout.fields) {
        auto *to = static_cast<uint8_t *>(record) + field.offset;
        if (std::string_view(field.name) == "length") {
            calls::store(field.element.kind, to, length);
        } else if (field.is_pointer) {
            const bool is_frame = std::string_view(field.name) == "frame";
            const uint8_t *address = is_frame               ? frame
                                     : random.below(2) == 0 ? nullptr
                                                            : frame + random.below(length + 1);
            std::memcpy(to, &address, sizeof address);
        }
    }
    return record;
}

void *RandomCall::plain(size_t index, Source &random) {
    const Param &param = params_[index];
    const size_t count = calls::extent(params_, index, arguments_.data());
    void *block = allocate(count * param.element.size);
    fill_random(random, param.element, block, count);
    if (param.shape == Shape::kMessage) {
        void *record = allocate(calls::kEventRecordNumbers * sizeof(uint16_t));
        fill_random(random, calls::kEventRecordNumber, record, calls::kEventRecordNumbers);
        static_cast<uintptr_t *>(block)[count - 1] = random.below(2) == 0 ? 0 : reinterpret_cast<uintptr_t>(record);
    }
    return block;
}

void write_outputs(std::span<const Param> params, const void *const *arguments, uint64_t seed) {
    Random random(seed);
    for (size_t index = 0; index < params.size(); ++index) {
        const Param &param = params[index];
        void *to = param.is_written() ? *static_cast<void *const *>(arguments[index]) : nullptr;
        if (to == nullptr) {
            continue;
        }
        if (param.shape == Shape::kOutPointer) {
            std::memset(to, 0, sizeof(void *));
        } else {
            fill_random(random, param.element, to, calls::extent(params, index, arguments));
        }
    }
}

void write_outputs(CallId id, const void *const *arguments, uint64_t seed) {
    write_outputs(calls::call(id).params, arguments, seed);
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
