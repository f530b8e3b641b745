// The arguments of a call in memory that is made for them.
#include "calls/json_memory.h"

#include <adp/pkt.h>

#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>

#include "calls/call_table.h"
#include "calls/form.h"
#include "calls/json_read.h"

namespace calls {
namespace {

using Json = nlohmann::json;

// A call may look at the octets that an offset into the frame is the address of, also behind the frame.
constexpr size_t kFrameRoom = kMostFrameOffset + sizeof(uint64_t);

/** Which arguments are made first: those that others depend on. */
enum class Turn : uint8_t { kValues, kPointers, kCounted, kIntoOthers };
constexpr Turn kTurns[] = {Turn::kValues, Turn::kPointers, Turn::kCounted, Turn::kIntoOthers};

Turn turn_of(const Param &param) {
    if (!param.is_pointer()) {
        return Turn::kValues;
    }
    if (param.shape == Shape::kOutPointer) {
        return Turn::kIntoOthers;
    }
    return param.counted_by == kNotCounted ? Turn::kPointers : Turn::kCounted;
}

void check_count(size_t elements) {
    if (elements > kMostElements) {
        throw BadValue("has " + std::to_string(elements) + " elements by its count, more than " +
                       std::to_string(kMostElements));
    }
}

}  // namespace

/** Makes arguments one by one. */
class Memory::Maker {
  public:
    explicit Maker(Memory &memory) : memory_(memory), params_(memory.params_) {}

    /** Null stands for a member that is left out. */
    void make(size_t index, const Json *value) {
        const Param &param = params_[index];
        if (param.shape == Shape::kPortsWord) {
            set_address(index, value == nullptr || value->is_null() ? nullptr : ports(index, *value));
        } else if (param.is_pointer()) {
            set_address(index, value != nullptr && value->is_null() ? nullptr : pointed(index, value));
        } else if (value != nullptr) {
            read_block(*value, form(index), slot(index));
        }
    }

  private:
    uint8_t *allocate(size_t size) { return static_cast<uint8_t *>(memory_.allocate(size)); }
    uint8_t *slot(size_t index) { return static_cast<uint8_t *>(const_cast<void *>(memory_.arguments_[index])); }
    void set_address(size_t index, const void *address) { std::memcpy(slot(index), &address, sizeof address); }
    [[nodiscard]] Form form(size_t index) const { return form_of(params_, index, memory_.blocks()); }

    const void *ports(size_t index, const Json &value) {
        uint8_t *words = allocate(kPortsWords * sizeof(uint32_t));
        read_block(value, form(index), words);
        return words;
    }

    const void *pointed(size_t index, const Json *value) {
        const Param &param = params_[index];
        switch (param.shape) {
            case Shape::kText:
                return text(value);
            case Shape::kList:
                return list(value);
            case Shape::kFrameRecord:
                return frame_record(param, value);
            case Shape::kMessage:
                return message(param, value);
            case Shape::kOutPointer:
                return out_pointer(value);
            default:
                return plain(index, value);
        }
    }

    const void *text(const Json *value) {
        const std::string characters = value == nullptr ? std::string() : read_text(*value);
        return std::memcpy(allocate(characters.size() + 1), characters.data(), characters.size());
    }

    const void *plain(size_t index, const Json *value) {
        const size_t count = extent(params_, index, memory_.arguments());
        check_count(count);
        uint8_t *block = allocate(count * params_[index].element.size);
        if (value != nullptr) {
            read_block(*value, form(index), block);
        }
        return block;
    }

    const void *list(const Json *value) {
        const size_t count = value == nullptr ? 0 : array_of(*value, kMostElements).size();
        auto *head = static_cast<adp_list_link_t *>(memory_.allocate(sizeof(adp_list_link_t)));
        auto *node = static_cast<adp_tx_dest_t *>(memory_.allocate(count * sizeof(adp_tx_dest_t)));
        *head = {head, head};
        for (size_t index = 0; index < count; ++index, ++node) {
            node->intf = static_cast<adp_intf_t>(read_unsigned((*value)[index], UINT32_MAX));
            node->link = {head, head->prev};
            head->prev->next = &node->link;
            head->prev = &node->link;
        }
        return head;
    }

    const void *frame_record(const Param &param, const Json *value) {
        const Struct &layout = *param.element.layout;
        uint8_t *record = allocate(layout.size);
        if (value == nullptr) {
            return record;
        }
        read_struct(*value, layout, record);
        const Json *octets = find_member(*value, "frame");
        uint8_t *frame = nullptr;
        if (octets != nullptr && !octets->is_null()) {
            const size_t count = frame_length(param, record);
            check_count(count);
            frame = allocate(count + kFrameRoom);
            read_octets(*octets, frame, count);
        }
        read_offsets(*value, layout, record, frame);
        return record;
    }

    const void *message(const Param &param, const Json *value) {
        const size_t size = param.element.size;
        uint8_t *words = allocate(param.extent * size);
        const size_t count = value == nullptr ? 0 : array_of(*value, param.extent).size();
        for (size_t index = 0; index < count; ++index) {
            const Json &each = (*value)[index];
            if (index + 1 < param.extent) {
                store(param.element.kind, words + index * size, static_cast<int64_t>(read_unsigned(each, UINT64_MAX)));
            } else if (!each.is_null()) {
                uint8_t *record = allocate(kEventRecordNumbers * kEventRecordNumber.size);
                read_array(each, kEventRecordNumber, record, kEventRecordNumbers);
                std::memcpy(words + index * size, &record, sizeof record);
            }
        }
        return words;
    }

    const void *out_pointer(const Json *value) {
        uint8_t *pointer = allocate(sizeof(void *));
        if (value != nullptr) {
            const Block octets = octets_beside(params_, memory_.blocks());
            const uint8_t *address = read_offset(*value, octets.at, octets.count);
            std::memcpy(pointer, &address, sizeof address);
        }
        return pointer;
    }

    Memory &memory_;
    std::span<const Param> params_;
};

Memory::Memory(std::span<const Param> params, const Json &arguments) : params_(params) {
    check_arguments(arguments);
    for (const Param &param : params) {
        arguments_.push_back(allocate(std::max(param.element.size, sizeof(void *))));
    }
    Maker maker(*this);
    for (const Turn turn : kTurns) {
        for (size_t index = 0; index < params.size(); ++index) {
            if (turn_of(params[index]) == turn) {
                naming(params[index], [&] { maker.make(index, find_member(arguments, params[index].name)); });
            }
        }
    }
}

Blocks Memory::blocks() const {
    return blocks_of(params_, arguments());
}

void *Memory::allocate(size_t size) {
    return memory_.emplace_back(size / sizeof(uint64_t) + 1).data();
}

}  // namespace calls
