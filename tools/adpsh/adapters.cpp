// Parameters that are more than an array: lists of destinations, and records that hold a frame.
#include "tools/adpsh/arguments.h"
#include "tools/adpsh/line_error.h"

#include <adp/adp.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace adpsh {

namespace {

constexpr std::string_view kFrame = "frame";
constexpr std::string_view kLength = "length";
// A frame field that addresses a tag lets the call read the tag.
constexpr int64_t kTagBytes = 4;

void store_address(uint8_t *to, const void *address) {
    std::memcpy(to, &address, sizeof address);
}

const calls::Field &field_named(const calls::Struct &record, std::string_view name) {
    return *std::find_if(record.fields.begin(), record.fields.end(),
                         [name](const calls::Field &field) { return field.name == name; });
}

const Value *find(const Value &record, std::string_view name) {
    const auto found = std::find_if(record.items.begin(), record.items.end(),
                                    [name](const Argument &item) { return item.name == name; });
    return found == record.items.end() ? nullptr : &found->value;
}

/** The address of a byte of the frame, written as its offset. */
const uint8_t *address_in(const Bytes *frame, const Argument &item) {
    if (is_null(item.value)) {
        return nullptr;
    }
    const int64_t offset = number_of(item.value, calls::Kind::kU32);
    const int64_t end = frame == nullptr ? 0 : static_cast<int64_t>(frame->size());
    if (offset < 0 || offset + kTagBytes > end) {
        throw LineError("field '" + item.name + "': offset " + written(item.value) + " is outside the frame");
    }
    return frame->data() + offset;
}

}  // namespace

/** A head and its nodes, in the line's order. `[]` is an empty list, `null` no list. */
void Arguments::fill_list(Slot &slot, const Value &value) {
    if (value.form != Value::Form::kList) {
        throw LineError("expected a list [1, 2, agg1] or null, not " + written(value));
    }
    if (value.items.size() > kMaxElements) {
        throw LineError("the list is too long");
    }
    slot.elements = value.items.size();
    slot.storage.resize(sizeof(adp_list_link_t));
    auto *const head = new (slot.storage.data()) adp_list_link_t{};
    head->next = head->prev = head;
    for (const Argument &item : value.items) {
        const auto intf = static_cast<adp_intf_t>(number_of(item.value, calls::Kind::kU32));
        Bytes &storage = blocks_.emplace_back(sizeof(adp_tx_dest_t));
        auto *const node = new (storage.data()) adp_tx_dest_t{{head, head->prev}, intf};
        head->prev->next = &node->link;
        head->prev = &node->link;
    }
}

/**
 * {frame=HEX field=value ...}. The length is the frame's unless it is given; it must not exceed it. Other addresses
 * are written as offsets into the frame.
 */
void Arguments::fill_frame_record(Slot &slot, const Value &value) {
    const calls::Struct &record = *slot.parameter->element.layout;
    Value others = value;
    Value addresses{Value::Form::kBraces, {}, {}};
    others.items.clear();
    for (const Argument &item : value.items) {
        const auto field = std::find_if(record.fields.begin(), record.fields.end(),
                                        [&item](const calls::Field &each) { return each.name == item.name; });
        (field != record.fields.end() && field->is_pointer ? addresses : others).items.push_back(item);
    }
    Context context{variables_, blocks_};
    slot.elements = 1;
    slot.storage.resize(record.size);
    store_element(slot.parameter->element, others, slot.storage.data(), context);

    const Value *const frame = find(addresses, kFrame);
    if (frame != nullptr && !is_null(*frame)) {
        blocks_.push_back(bytes_of(*frame, variables_));
        blocks_.back().reserve(1);  // an empty frame has an address too
        slot.pointed = &blocks_.back();
        store_address(slot.storage.data() + field_named(record, kFrame).offset, slot.pointed->data());
        const calls::Field &length = field_named(record, kLength);
        uint8_t *const at = slot.storage.data() + length.offset;
        if (find(others, kLength) == nullptr) {
            calls::store(length.element.kind, at, static_cast<int64_t>(slot.pointed->size()));
        }
        if (calls::load(length.element.kind, at) > static_cast<int64_t>(slot.pointed->size())) {
            throw LineError("the length exceeds the " + std::to_string(slot.pointed->size()) + " bytes of the frame");
        }
    }
    for (const Argument &item : addresses.items) {
        if (item.name != kFrame) {
            store_address(slot.storage.data() + field_named(record, item.name).offset, address_in(slot.pointed, item));
        }
    }
}

}  // namespace adpsh
