// Writes calls as JSON: the shapes of arguments that are more than a block of memory, and what has changed.
#include "calls/json_text.h"

#include <adp/pkt.h>

#include <algorithm>
#include <cstring>

#include "calls/call_table.h"
#include "calls/form.h"
#include "calls/json_value.h"

namespace calls {
namespace {

const uint8_t *address_at(const void *at) {
    const uint8_t *address = nullptr;
    std::memcpy(&address, at, sizeof address);
    return address;
}

/** Whether an address is one of some octets, or the place behind them. */
bool is_within(const uint8_t *address, const void *octets, size_t count) {
    return address != nullptr && octets != nullptr &&
           reinterpret_cast<uintptr_t>(address) - reinterpret_cast<uintptr_t>(octets) <= count;
}

/** An address as its offset into octets; null elsewhere. */
void append_offset(std::string &text, const uint8_t *address, const void *octets, size_t count) {
    if (is_within(address, octets, count)) {
        append_unsigned(text, static_cast<size_t>(address - static_cast<const uint8_t *>(octets)));
    } else {
        text += "null";
    }
}

void append_list(std::string &text, const void *head) {
    text += '[';
    const auto *link = static_cast<const adp_list_link_t *>(head);
    const adp_list_link_t *each = link->next;
    for (size_t nodes = 0; each != link && each != nullptr && nodes < kMostElements; ++nodes, each = each->next) {
        if (nodes > 0) {
            text += ',';
        }
        append_unsigned(text, reinterpret_cast<const adp_tx_dest_t *>(each)->intf);
    }
    text += ']';
}

/** @p octets are those of the frame. */
void append_frame_record(std::string &text, const Struct &layout, const void *record, size_t octets) {
    const uint8_t *frame = frame_of(layout, record);
    text += '{';
    for (const Field &field : layout.fields) {
        append_name(text, &field == layout.fields.data(), field.name);
        if (!field.is_pointer) {
            append_block(text, form_of(layout, field, record), byte_at(record, field.offset));
        } else if (is_frame(field) && frame != nullptr) {
            append_octets(text, frame, octets);
        } else {
            append_offset(text, address_in(field, record), frame, kMostFrameOffset);
        }
    }
    text += '}';
}

void append_message(std::string &text, const Element &word, const void *at, size_t words) {
    text += '[';
    for (size_t index = 0; index + 1 < words; ++index) {
        append_unsigned(text, static_cast<uintptr_t>(load(word.kind, byte_at(at, index * word.size))));
        text += ',';
    }
    const void *record = nullptr;
    std::memcpy(&record, byte_at(at, (words - 1) * word.size), sizeof record);
    if (record == nullptr) {
        text += "null";
    } else {
        append_array(text, kEventRecordNumber, record, kEventRecordNumbers);
    }
    text += ']';
}

/** @p octets are those of the frame of a record. */
void append_argument(std::string &text, std::span<const Param> params, const Blocks &blocks, size_t index,
                     size_t octets) {
    const Param &param = params[index];
    const void *at = blocks[index].at;
    if (at == nullptr) {
        text += "null";
        return;
    }
    switch (param.shape) {
        case Shape::kText:
            return append_text(text, static_cast<const char *>(at));
        case Shape::kList:
            return append_list(text, at);
        case Shape::kFrameRecord:
            return append_frame_record(text, *param.element.layout, at, octets);
        case Shape::kMessage:
            return append_message(text, param.element, at, param.extent);
        case Shape::kOutPointer: {
            const Block target = octets_beside(params, blocks);
            return append_offset(text, address_at(at), target.at, target.count);
        }
        case Shape::kPlain:
        case Shape::kPortsWord:
            return append_block(text, form_of(params, index, blocks), at);
    }
}

size_t octets_of(const Param &param, const Block &block) {
    return param.shape == Shape::kFrameRecord && block.at != nullptr ? frame_octets(param, block.at) : 0;
}

size_t size_of(const Param &param, const Block &block) {
    return param.shape == Shape::kOutPointer ? sizeof(void *) : block.count * param.element.size;
}

/** Whether the memory says nothing: that a call only writes and that is zero, or an address into no argument. */
bool is_unset(std::span<const Param> params, const Blocks &blocks, size_t index) {
    const Param &param = params[index];
    const Block &block = blocks[index];
    if (param.direction != Direction::kOut || block.at == nullptr) {
        return false;
    }
    if (param.shape == Shape::kOutPointer) {
        const Block target = octets_beside(params, blocks);
        return !is_within(address_at(block.at), target.at, target.count);
    }
    return used_octets(block.at, size_of(param, block)) == 0;
}

/** @p before is followed by the frame of a record. */
bool has_changed(const Param &param, const Block &block, const Block &before) {
    const size_t size = size_of(param, block);
    if (std::memcmp(block.at, before.at, size) != 0) {
        return true;
    }
    const size_t octets = octets_of(param, before);
    return octets != 0 &&
           std::memcmp(frame_of(*param.element.layout, before.at), byte_at(before.at, size), octets) != 0;
}

Block block_of(std::span<const Param> params, size_t index, const void *const *arguments) {
    const Param &param = params[index];
    if (param.shape == Shape::kPortsWord) {
        return {address_at(arguments[index]), kPortsWords};
    }
    return {target(param, arguments[index]), std::min(extent(params, index, arguments), kMostElements)};
}

}  // namespace

Blocks blocks_of(std::span<const Param> params, const void *const *arguments) {
    Blocks blocks;
    for (size_t index = 0; index < params.size(); ++index) {
        blocks[index] = block_of(params, index, arguments);
    }
    return blocks;
}

Blocks copies_of(std::span<const Param> params, const Blocks &blocks, std::vector<uint8_t> &storage) {
    size_t size = 0;
    for (size_t index = 0; index < params.size(); ++index) {
        if (params[index].is_written() && blocks[index].at != nullptr) {
            size += size_of(params[index], blocks[index]) + octets_of(params[index], blocks[index]);
        }
    }
    storage.resize(size + 1);  // so that a copy of nothing has an address, too
    Blocks copies;
    uint8_t *to = storage.data();
    for (size_t index = 0; index < params.size(); ++index) {
        const Param &param = params[index];
        const Block &block = blocks[index];
        if (!param.is_written() || block.at == nullptr) {
            continue;
        }
        copies[index] = {to, block.count};
        to = std::copy_n(byte_at(block.at, 0), size_of(param, block), to);
        if (const size_t octets = octets_of(param, block); octets != 0) {
            to = std::copy_n(frame_of(*param.element.layout, block.at), octets, to);
        }
    }
    return copies;
}

void append_arguments(std::string &text, std::span<const Param> params, const Blocks &blocks) {
    text += '{';
    bool is_first = true;
    for (size_t index = 0; index < params.size(); ++index) {
        if (!is_unset(params, blocks, index)) {
            append_name(text, is_first, params[index].name);
            is_first = false;
            append_argument(text, params, blocks, index, octets_of(params[index], blocks[index]));
        }
    }
    text += '}';
}

void append_outputs(std::string &text, std::span<const Param> params, const Blocks &blocks, const Blocks &before) {
    text += '{';
    bool is_first = true;
    for (size_t index = 0; index < params.size(); ++index) {
        const Param &param = params[index];
        if (param.is_written() && blocks[index].at != nullptr && has_changed(param, blocks[index], before[index])) {
            append_name(text, is_first, param.name);
            is_first = false;
            append_argument(text, params, blocks, index, octets_of(param, before[index]));
        }
    }
    text += '}';
}

void append_result(std::string &text, Result kind, const Struct *layout, int64_t result) {
    const void *address = address_of(result);
    switch (kind) {
        case Result::kNothing:
            text += "null";
            return;
        case Result::kStatus:
        case Result::kI32:
            return append_signed(text, static_cast<int32_t>(result));
        case Result::kU32:
        case Result::kInterface:
            return append_unsigned(text, static_cast<uint32_t>(result));
        case Result::kText:
            return append_text(text, static_cast<const char *>(address));
        case Result::kStruct:
            return address == nullptr ? void(text += "null") : append_struct(text, *layout, address);
    }
}

void append_text(std::string &text, const char *value) {
    if (value == nullptr) {
        text += "null";
    } else {
        append_chars(text, value, SIZE_MAX);
    }
}

}  // namespace calls
