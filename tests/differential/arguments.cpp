#include "tests/differential/arguments.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "tests/differential/plausible.h"

namespace lives {

using calls::Direction;
using calls::Kind;
using calls::Param;
using calls::Shape;

namespace {

constexpr uint8_t kUntouched = 0xA5;
constexpr size_t kSetBytes = sizeof(adp_ports_t);

void store(const calls::Element &type, uint64_t number, uint8_t *to) {
    calls::store(type.kind, to, static_cast<int64_t>(number));
}

bool is_named(const Param &parameter, std::string_view name) {
    return parameter.name == name;
}

/** Bytes that are the same number in either byte order: each word has four equal ones. */
void fill_equal_bytes(Random &random, uint8_t *to, size_t size) {
    for (size_t n = 0; n < size; ++n) {
        to[n] = n % sizeof(uint32_t) == 0 ? static_cast<uint8_t>(random.next()) : to[n - 1];
    }
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

bool Arguments::is_appended_to() const {
    const std::string_view name = call_.name;
    return name == "adp_fp_add_entity_qualify" || name == "adp_fp_add_entity_action";
}

void Arguments::fill_value(Slot &slot) {
    const Param &parameter = *slot.parameter;
    constexpr uint32_t kLongFrame = 90;
    constexpr int32_t kLengths[] = {0, 1, 2, 2, 4, 4, 4, 6, 16, 32, 63, 64, 65, 255, 256, 257, -1};
    const std::string_view name = parameter.name;
    switch (parameter.element.kind) {
        case Kind::kStruct:
            fill_element(parameter.element, parameter.name, slot.data());
            return;
        case Kind::kCallback: {
            void (*const receiver)() = random_.one_in(4) ? nullptr : parameter.element.callback->report;
            std::memcpy(slot.data(), &receiver, sizeof receiver);
            return;
        }
        case Kind::kWord:
            // These two are addresses of sets; all others are numbers as far as the library knows.
            if (name == "ports" || name == "untagged") {
                slot.pointed.resize(kSetBytes);
                for (size_t n = 0; n < kSetBytes; n += sizeof(uint32_t)) {
                    store(calls::kWord32, random_.sparse(), &slot.pointed[n]);
                }
                const auto address = reinterpret_cast<uintptr_t>(random_.one_in(4) ? nullptr : slot.pointed.data());
                std::memcpy(slot.data(), &address, sizeof address);
                return;
            }
            store(parameter.element, any_number(random_), slot.data());
            return;
        case Kind::kU64:
            store(parameter.element, uint64_t{random_.sparse()} << 32 | random_.next(), slot.data());
            return;
        default:
            break;
    }
    if (name == "length") {
        // The low 16 bits count; a dump takes them all.
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
        fill_list(slot);
    } else if (parameter.shape == Shape::kFrameRecord) {
        fill_frame_record(slot);
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
    } else if (is_named(parameter, "frame")) {
        std::vector<uint8_t> frame(slot.elements);
        fill_frame(frame);
        std::copy(frame.begin(), frame.end(), slot.data());
    } else {
        for (size_t n = 0; n < slot.elements; ++n) {
            fill_element(parameter.element, parameter.name, slot.data() + n * parameter.element.size);
        }
    }
}

void Arguments::fill_element(const calls::Element &type, const char *name, uint8_t *to) {
    const std::string_view what = name;
    if (type.kind == Kind::kStruct) {
        fill_record(*type.layout, to);
    } else if (type.is_interface) {
        store(type, any_interface(random_), to);
    } else if (what == "members" || what == "untagged" || what == "bitmap" || what == "word") {
        store(type, random_.one_in(3) ? random_.next() : random_.sparse(), to);
    } else if (type.size == 1) {
        store(type, random_.next(), to);
    } else {
        store(type, number_for(random_, what), to);
    }
}

void Arguments::fill_record(const calls::Struct &record, uint8_t *to) {
    const std::string_view type = record.name;
    if (type == "FpEntity") {
        FpEntity entity{};
        fill_entity(entity, is_appended_to());
        std::memcpy(to, &entity, sizeof entity);
        return;
    }
    for (const calls::Field &field : record.fields) {
        for (size_t n = 0; n < field.count; ++n) {
            fill_element(field.element, field.name, to + field.offset + n * field.element.size);
        }
    }
    if (type == "RemarkRule") {
        RemarkRule rule;
        std::memcpy(&rule, to, sizeof rule);
        constexpr uint8_t kForms[] = {1, 1, 1, 7, 3};
        rule.rule_form = random_.one_of(kForms);
        rule.rule_id = static_cast<uint16_t>(random_.below(5));
        rule.remark_kind = static_cast<uint8_t>(random_.below(4));
        rule.match_field = static_cast<uint8_t>(random_.below(14));
        fill_equal_bytes(random_, rule.match_value, sizeof rule.match_value);
        std::memcpy(to, &rule, sizeof rule);
    } else if (type == "FpInfo") {
        const FpInfo info = {
            static_cast<int32_t>(1 + random_.below(45)), static_cast<int32_t>(random_.below(11)), 0, -1, -1,
            static_cast<int32_t>(random_.below(130)) - 9};
        std::memcpy(to, &info, sizeof info);
    }
}

/** Scalars are words of this machine, addresses are bytes: both read the same on every machine. */
void Arguments::fill_entity(FpEntity &entity, bool as_equal_bytes) {
    constexpr uint32_t kQualifiers[] = {0,  1,  6,  7,  9,  10, 13, 13, 18, 19,  21,
                                        22, 23, 27, 28, 29, 30, 31, 61, 89, 332, 5};
    constexpr uint32_t kActions[] = {30, 30, 33, 33, 53, 53, 1, 11, 77};
    constexpr int32_t kOddCounts[] = {-1, 8, 9, 15, 16, 17};
    const auto count = [&](uint32_t few) {
        return random_.one_in(10) ? random_.one_of(kOddCounts) : static_cast<int32_t>(random_.below(few));
    };
    const auto fill_words = [&](uint8_t *to, size_t size) {
        for (size_t n = 0; n < size; n += sizeof(uint32_t)) {
            store(calls::kWord32, n == 0 ? any_number(random_) : random_.sparse(), to + n);
        }
    };
    entity.submodule_type = number_for(random_, "submodule_type");
    entity.unit = random_.one_in(10) ? 1 : 0;
    entity.entity_id = number_for(random_, "entity_id");
    entity.true_entry = random_.next();
    entity.priority = random_.below(8);
    entity.qualify_num = count(4);
    entity.action_num = count(3);
    for (int32_t n = 0; n < entity.qualify_num && n < ADP_FP_QUALIFIERS; ++n) {
        FpQualify &qualify = entity.qualifies[n];
        qualify.type = random_.one_of(kQualifiers);
        if (as_equal_bytes || qualify.type < 9) {
            fill_equal_bytes(random_, qualify.data, sizeof qualify.data);
            fill_equal_bytes(random_, qualify.mask, sizeof qualify.mask);
        } else {
            fill_words(qualify.data, sizeof(adp_ports_t));
            fill_words(qualify.mask, sizeof(adp_ports_t));
        }
    }
    for (int32_t n = 0; n < entity.action_num && n < ADP_FP_ACTIONS; ++n) {
        FpAction &action = entity.actions[n];
        action.type = random_.one_of(kActions);
        fill_words(action.param, sizeof(adp_ports_t));
        store(calls::kWord32, random_.below(20), action.param2);
    }
}

void Arguments::fill_list(Slot &slot) {
    constexpr uint32_t kLongest = 5;
    slot.elements = 1;
    auto *const head = new (slot.storage.data()) adp_list_link_t{};
    head->next = head->prev = head;
    slot.nodes.resize(random_.below(kLongest));
    for (adp_tx_dest_t &node : slot.nodes) {
        node = {{head, head->prev}, any_interface(random_)};
        head->prev->next = &node.link;
        head->prev = &node.link;
    }
}

/** Ethernet with what the receiver looks for, mostly. */
void Arguments::fill_frame(std::vector<uint8_t> &frame) {
    constexpr uint16_t kTypes[] = {0x8100, 0x8100, 0x8100, 0x9100, 0x0800, 0x86DD, 0x0806};
    constexpr size_t kFirstType = 18;
    constexpr size_t kTypeStep = 4;
    constexpr size_t kTypes_ = 4;
    constexpr size_t kPort = 17;
    for (uint8_t &byte : frame) {
        byte = static_cast<uint8_t>(random_.next());
    }
    if (frame.size() > kPort) {
        frame[kPort] = static_cast<uint8_t>(random_.below(32) | (frame[kPort] & 0xC0));
    }
    for (size_t n = 0; n < kTypes_; ++n) {
        const size_t at = kFirstType + n * kTypeStep;
        if (at + 2 <= frame.size()) {
            const uint16_t type = random_.one_of(kTypes);
            frame[at] = static_cast<uint8_t>(type >> 8);
            frame[at + 1] = static_cast<uint8_t>(type);
        }
    }
    // Now and then the protocol byte of a header behind one, two or no tags is UDP's, or the options' 0.
    constexpr size_t kProtocols[] = {14 + 9, 18 + 9, 22 + 9, 14 + 6, 18 + 6, 22 + 6};
    constexpr size_t kTagBytes = 6;
    for (const size_t offset : kProtocols) {
        if (offset + kTagBytes < frame.size() && random_.one_in(3)) {
            frame[offset + kTagBytes] = random_.one_in(2) ? 17 : 0;
        }
    }
}

void Arguments::fill_frame_record(Slot &slot) {
    constexpr uint32_t kLongest = 100;
    std::memset(slot.data(), 0, slot.bytes());
    slot.pointed.resize(random_.below(kLongest));
    fill_frame(slot.pointed);
    slot.pointed.reserve(1);
    const auto length = static_cast<uint32_t>(slot.pointed.size());
    if (is_receive()) {
        auto *const record = new (slot.storage.data()) adp_rx_frame_t{};
        record->frame = slot.pointed.data();
        record->length = length | (random_.one_in(8) ? 0x30000 : 0);
        if (length > kLongest / 4 && random_.one_in(2)) {
            record->vlan_tag = slot.pointed.data() + 18;
        }
        return;
    }
    auto *const record = new (slot.storage.data()) adp_tx_frame_t{};
    record->frame = random_.one_in(16) ? nullptr : slot.pointed.data();
    record->length = length;
    record->source = any_interface(random_);
}

/** A parameter's memory, addresses into the call's own frame as offsets. */
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

}  // namespace lives
