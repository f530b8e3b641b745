// Arguments by the type and the name of their parameters.
#include "tests/differential/arguments.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "tests/differential/frames.h"
#include "tests/differential/records.h"
#include "tests/differential/values.h"

namespace differential {

using calls::Direction;
using calls::Kind;
using calls::Param;
using calls::Shape;

namespace {

constexpr uint8_t kUntouched = 0xA5;
constexpr size_t kSetBytes = sizeof(adp_ports_t);

bool is_named(const Param &parameter, std::string_view name) {
    return parameter.name == name;
}

}  // namespace

int64_t Slot::number() const {
    return calls::load(parameter->element.kind, data());
}

Arguments::Arguments(const exported::Call &call, uint64_t seed, const std::vector<uint32_t> &preset)
    : call_(call), random_(seed), slots_(call.params.size()), pointers_(call.params.size()) {
    for (size_t index = 0; index < slots_.size(); ++index) {
        Slot &slot = slots_[index];
        slot.parameter = &call.params[index];
        if (slot.parameter->direction != Direction::kValue) {
            continue;
        }
        slot.storage.resize(slot.parameter->element.size / sizeof(uint64_t) + 1);
        if (index < preset.size()) {
            store(slot.parameter->element, preset[index], slot.data());
        } else {
            fill_value(slot);
        }
    }
    for (size_t index = 0; index < slots_.size(); ++index) {
        if (slots_[index].parameter->direction != Direction::kValue) {
            fill_memory(index);
        }
        pointers_[index] = slots_[index].is_null ? nullptr : slots_[index].storage.data();
    }
}

bool Arguments::is_receive() const {
    return std::string_view(call_.name).find("receive") != std::string_view::npos;
}

void Arguments::fill_value(Slot &slot) {
    const Param &parameter = *slot.parameter;
    switch (parameter.element.kind) {
        case Kind::kStruct:
            return fill_element(random_, parameter.element, parameter.name, slot.data());
        case Kind::kCallback: {
            void (*const receiver)() = random_.one_in(4) ? nullptr : parameter.element.callback->report;
            std::memcpy(slot.data(), &receiver, sizeof receiver);
            return;
        }
        case Kind::kWord:
            // These two are addresses of sets. The library takes all others for numbers.
            return is_named(parameter, "ports") || is_named(parameter, "untagged")
                       ? fill_set(slot)
                       : store(parameter.element, any_number(random_), slot.data());
        case Kind::kU64:
            return store(parameter.element, uint64_t{random_.sparse()} << 32 | random_.next(), slot.data());
        default:
            return fill_number(slot);
    }
}

void Arguments::fill_set(Slot &slot) {
    slot.pointed.resize(kSetBytes);
    for (size_t n = 0; n < kSetBytes; n += sizeof(uint32_t)) {
        store(calls::kWord32, random_.sparse(), &slot.pointed[n]);
    }
    const auto address = reinterpret_cast<uintptr_t>(random_.one_in(4) ? nullptr : slot.pointed.data());
    std::memcpy(slot.data(), &address, sizeof address);
}

void Arguments::fill_number(Slot &slot) {
    constexpr uint32_t kLongFrame = 90;
    constexpr int32_t kLengths[] = {0, 1, 2, 2, 4, 4, 4, 6, 16, 32, 63, 64, 65, 255, 256, 257, -1};
    const Param &parameter = *slot.parameter;
    const std::string_view name = parameter.name;
    if (name == "length") {
        // The library uses the low 16 bits; a dump uses all of them.
        const bool is_dump = parameter.element.kind == Kind::kI32;
        const uint32_t length = is_dump && random_.one_in(8) ? static_cast<uint32_t>(-1) : random_.below(kLongFrame);
        store(parameter.element, length | (is_dump || !random_.one_in(8) ? 0 : 0x10000), slot.data());
    } else if (name.find("_len") != std::string_view::npos) {
        store(parameter.element, static_cast<uint32_t>(random_.one_of(kLengths)), slot.data());
    } else {
        store(parameter.element, number_for(random_, name), slot.data());
    }
}

size_t Arguments::extent(const Param &parameter) const {
    if (parameter.counted_by == calls::kNotCounted) {
        return parameter.extent;
    }
    const Slot &counter = slots_[static_cast<size_t>(parameter.counted_by)];
    const int64_t count = counter.number();
    if (is_named(*counter.parameter, "length")) {
        return count < 0 ? 0 : static_cast<size_t>(count & 0xFFFF);
    }
    return count < 0 || count > 4096 ? 0 : static_cast<size_t>(count);
}

bool Arguments::may_be_null(const Param &parameter) const {
    static constexpr struct {
        std::string_view call;
        std::string_view parameter;
    } kNullable[] = {
        {"adp_transmit_frame", "frame"},        {"adp_receive_frame", "frame"},
        {"adp_agg_linkscan_handle", "changed"}, {"__adp_transmit_frame", "destinations"},
        {"adp_add_remark_rule", "rule"},        {"adp_fp_add_entity_action", "param"},
        {"adp_fp_add_entity_action", "param2"},
    };
    return std::any_of(std::begin(kNullable), std::end(kNullable),
                       [&](const auto &each) { return each.call == call_.name && each.parameter == parameter.name; });
}

void Arguments::fill_memory(size_t index) {
    Slot &slot = slots_[index];
    const Param &parameter = *slot.parameter;
    constexpr uint32_t kNullOneIn = 4;
    slot.elements = extent(parameter);
    slot.storage.resize(slot.bytes() / sizeof(uint64_t) + 1);
    slot.is_null = may_be_null(parameter) && random_.one_in(kNullOneIn);
    std::memset(slot.data(), kUntouched, slot.bytes());
    if (parameter.shape == Shape::kOutPointer) {
        slot.storage.assign(1, 0);
    } else if (parameter.shape == Shape::kList) {
        fill_list(random_, slot);
    } else if (parameter.shape == Shape::kFrameRecord) {
        is_receive() ? fill_received(random_, slot) : fill_sent(random_, slot);
    } else if (parameter.is_read()) {
        fill_elements(slot);
    }
}

void Arguments::fill_elements(Slot &slot) {
    const Param &parameter = *slot.parameter;
    constexpr const char *kTexts[] = {"eth0", "eth0", "eth1", "", "a name of more than sixteen", "%s %d"};
    if (parameter.is_text()) {
        const std::string_view text = random_.one_of(kTexts);
        slot.elements = text.size() + 1;
        slot.storage.assign(slot.elements / sizeof(uint64_t) + 1, 0);
        std::memcpy(slot.data(), text.data(), text.size());
    } else if (parameter.element.kind == Kind::kOpaque) {
        fill_equal_bytes(random_, slot.data(), slot.bytes());
    } else if (parameter.element.kind == Kind::kStruct &&
               std::string_view(parameter.element.layout->name) == "FpEntity") {
        fill_rule(random_, true, slot.data());  // the calls that append to a rule take its address
    } else if (is_named(parameter, "frame")) {
        std::vector<uint8_t> frame(slot.elements);
        fill_frame(random_, frame);
        std::copy(frame.begin(), frame.end(), slot.data());
    } else {
        for (size_t n = 0; n < slot.elements; ++n) {
            fill_element(random_, parameter.element, parameter.name, slot.data() + n * parameter.element.size);
        }
    }
}

/** A parameter's memory, with offsets in place of addresses into the call's own frame. */
std::vector<uint8_t> Arguments::comparable(size_t index) const {
    const Slot &slot = slots_[index];
    std::vector<uint8_t> bytes(slot.data(), slot.data() + slot.bytes());
    const auto put_offset = [&](size_t at, const uint8_t *base) {
        const uint8_t *address = nullptr;
        std::memcpy(&address, &bytes[at], sizeof address);
        const ptrdiff_t offset = address == nullptr ? -1 : address - base;
        std::memcpy(&bytes[at], &offset, sizeof offset);
    };
    if (slot.parameter->shape == Shape::kOutPointer) {
        bytes.resize(sizeof(uint8_t *));
        std::memcpy(bytes.data(), slot.data(), bytes.size());
        put_offset(0, slots_[0].data());
    } else if (slot.parameter->shape == Shape::kFrameRecord) {
        for (const calls::Field &field : slot.parameter->element.layout->fields) {
            if (field.is_pointer) {
                put_offset(field.offset, slot.pointed.data());
            }
        }
        bytes.insert(bytes.end(), slot.pointed.begin(), slot.pointed.end());
    }
    return bytes;
}

const char *Arguments::difference(const Arguments &other) const {
    for (size_t index = 0; index < slots_.size(); ++index) {
        const Slot &slot = slots_[index];
        if (slot.parameter->direction == Direction::kValue || slot.parameter->shape == Shape::kList) {
            continue;
        }
        const bool is_plain = slot.parameter->shape == Shape::kPlain;
        if (is_plain ? std::memcmp(slot.data(), other.slots_[index].data(), slot.bytes()) != 0
                     : comparable(index) != other.comparable(index)) {
            return slot.parameter->name;
        }
    }
    return nullptr;
}

}  // namespace differential
