// Encodes and decodes a call parameter by parameter, as the call table describes them.
#include "vdevice/remote/message.h"

#include <cstring>

namespace vdevice::remote {

using calls::Call;
using calls::CallId;
using calls::Element;
using calls::extent;
using calls::Kind;
using calls::Param;

namespace {

constexpr unsigned kHalfBits = 32;

const uint8_t *byte_at(const void *base, size_t offset) {
    return static_cast<const uint8_t *>(base) + offset;
}
uint8_t *byte_at(void *base, size_t offset) {
    return static_cast<uint8_t *>(base) + offset;
}

bool is_packed(const Element &element) {
    return element.kind == Kind::kU8 || element.kind == Kind::kChar;
}

/** Bytes that a block takes in a message. */
size_t wire_size(const Element &element, size_t count) {
    if (is_packed(element)) {
        return padded(count);
    }
    if (element.kind != Kind::kStruct) {
        return count * kWordBytes * (element.kind == Kind::kU64 ? 2 : 1);
    }
    size_t size = 0;
    for (const auto &field : element.layout->fields) {
        size += wire_size(field.element, field.count);
    }
    return size * count;
}

void encode_block(Writer &writer, const Element &element, const void *from, size_t count) {
    if (is_packed(element)) {
        writer.bytes(from, count);
        return;
    }
    const size_t size = element.size;
    for (size_t index = 0; index < count; ++index) {
        const void *at = byte_at(from, index * size);
        if (element.kind == Kind::kStruct) {
            for (const auto &field : element.layout->fields) {
                encode_block(writer, field.element, byte_at(at, field.offset), field.count);
            }
            continue;
        }
        const auto value = static_cast<uint64_t>(load(element.kind, at));
        if (element.kind == Kind::kU64) {
            writer.word(static_cast<uint32_t>(value >> kHalfBits));
        }
        writer.word(static_cast<uint32_t>(value));
    }
}

void decode_block(Reader &reader, const Element &element, void *to, size_t count) {
    if (is_packed(element)) {
        reader.bytes(to, count);
        return;
    }
    const size_t size = element.size;
    for (size_t index = 0; index < count; ++index) {
        void *at = byte_at(to, index * size);
        if (element.kind == Kind::kStruct) {
            for (const auto &field : element.layout->fields) {
                decode_block(reader, field.element, byte_at(at, field.offset), field.count);
            }
            continue;
        }
        uint64_t value = reader.word();
        if (element.kind == Kind::kU64) {
            value = value << kHalfBits | reader.word();
        }
        store(element.kind, at, static_cast<int64_t>(value));
    }
}

void encode_event_message(Writer &writer, const Element &element, const void *message, size_t words) {
    encode_block(writer, element, message, words - 1);
    const auto address = static_cast<uintptr_t>(load(element.kind, byte_at(message, (words - 1) * sizeof(uintptr_t))));
    writer.word(address == 0 ? 0 : 1);
    if (address != 0) {
        encode_block(writer, calls::kEventRecordNumber, reinterpret_cast<const void *>(address),
                     calls::kEventRecordNumbers);
    }
}

bool encode_pointer(Writer &writer, const Call &call, size_t index, const void *const *arguments) {
    const Param &param = call.params[index];
    const void *from = target(param, arguments[index]);
    if (from == nullptr) {
        writer.word(0);
        return true;
    }
    if (param.is_text()) {
        const size_t length = strnlen(static_cast<const char *>(from), kMaxMessageBytes);
        writer.word(static_cast<uint32_t>(length + 1));
        writer.bytes(from, length);
        return true;
    }
    const size_t count = extent(call.params, index, arguments);
    if (count > kMaxMessageBytes) {
        return false;
    }
    writer.word(1);
    if (param.shape == calls::Shape::kMessage) {
        encode_event_message(writer, param.element, from, count);
    } else if (param.is_read()) {
        encode_block(writer, param.element, from, count);
    }
    return true;
}

/** True if the parameter's block is in the reply. */
bool is_returned(const Param &param, const void *argument) {
    return param.is_written() && target(param, argument) != nullptr;
}

}  // namespace

bool encode_inputs(Writer &writer, CallId id, const void *const *arguments) {
    const Call &call = calls::call(id);
    for (size_t index = 0; index < call.params.size(); ++index) {
        if (!call.params[index].is_pointer()) {
            encode_block(writer, call.params[index].element, arguments[index], 1);
        }
    }
    size_t reply_size = 0;
    for (size_t index = 0; index < call.params.size(); ++index) {
        if (!call.params[index].is_pointer()) {
            continue;
        }
        if (!encode_pointer(writer, call, index, arguments)) {
            return false;
        }
        if (is_returned(call.params[index], arguments[index])) {
            reply_size += wire_size(call.params[index].element, extent(call.params, index, arguments));
        }
    }
    constexpr size_t kLongestHead = 4 * kWordBytes;
    return writer.buffer().size() + kLongestHead <= kMaxMessageBytes && reply_size + kLongestHead <= kMaxMessageBytes;
}

void encode_outputs(Writer &writer, CallId id, const void *const *arguments) {
    const Call &call = calls::call(id);
    for (size_t index = 0; index < call.params.size(); ++index) {
        const Param &param = call.params[index];
        if (is_returned(param, arguments[index])) {
            encode_block(writer, param.element, target(param, arguments[index]), extent(call.params, index, arguments));
        }
    }
}

bool decode_outputs(Reader &reader, CallId id, const void *const *arguments) {
    const Call &call = calls::call(id);
    size_t expected = 0;
    for (size_t index = 0; index < call.params.size(); ++index) {
        if (is_returned(call.params[index], arguments[index])) {
            expected += wire_size(call.params[index].element, extent(call.params, index, arguments));
        }
    }
    if (reader.left() != expected) {
        return false;
    }
    for (size_t index = 0; index < call.params.size(); ++index) {
        const Param &param = call.params[index];
        if (is_returned(param, arguments[index])) {
            void *to = *static_cast<void *const *>(arguments[index]);
            decode_block(reader, param.element, to, extent(call.params, index, arguments));
        }
    }
    return reader.is_finished();
}

void *Received::allocate(size_t size) {
    const size_t given = size == 0 ? 1 : size;
    return std::memset(memory_.allocate(given, alignof(std::max_align_t)), 0, given);
}

void Received::set_pointer(size_t index, void *address) {
    auto *slot = static_cast<void **>(allocate(sizeof(void *)));
    *slot = address;
    arguments_[index] = slot;
}

bool Received::decode_text(Reader &reader, size_t index, size_t size) {
    if (size > reader.left()) {
        return false;
    }
    auto *text = static_cast<char *>(allocate(size + 1));
    reader.bytes(text, size);
    set_pointer(index, text);
    return reader.is_good();
}

void Received::decode_event_message(Reader &reader, void *words, size_t count) {
    constexpr Element kWord = {Kind::kWord, sizeof(uintptr_t)};
    decode_block(reader, kWord, words, count - 1);
    if (reader.word() != 0) {
        void *record = allocate(calls::kEventRecordNumbers * sizeof(uint16_t));
        decode_block(reader, calls::kEventRecordNumber, record, calls::kEventRecordNumbers);
        static_cast<uintptr_t *>(words)[count - 1] = reinterpret_cast<uintptr_t>(record);
    }
}

bool Received::decode_pointer(Reader &reader, const Call &call, size_t index) {
    const Param &param = call.params[index];
    const uint32_t present = reader.word();
    if (present == 0) {
        set_pointer(index, nullptr);
        return reader.is_good();
    }
    if (param.is_text()) {
        return decode_text(reader, index, present - 1);
    }
    const size_t count = extent(call.params, index, arguments_.data());
    // The sizes are checked before anything is allocated: a hostile count must not cost memory.
    if (present != 1 || count > kMaxMessageBytes || wire_size(param.element, count) > kMaxMessageBytes) {
        return false;
    }
    void *block = allocate(count * param.element.size);
    set_pointer(index, block);
    if (param.shape == calls::Shape::kMessage) {
        decode_event_message(reader, block, count);
    } else if (param.is_read()) {
        decode_block(reader, param.element, block, count);
    }
    return reader.is_good();
}

bool Received::decode(Reader &reader, CallId id) {
    const Call &call = calls::call(id);
    arguments_.assign(call.params.size(), nullptr);
    for (size_t index = 0; index < call.params.size(); ++index) {
        const Param &param = call.params[index];
        if (!param.is_pointer()) {
            void *value = allocate(param.element.size);
            decode_block(reader, param.element, value, 1);
            arguments_[index] = value;
        }
    }
    if (!reader.is_good()) {
        return false;
    }
    for (size_t index = 0; index < call.params.size(); ++index) {
        if (call.params[index].is_pointer() && !decode_pointer(reader, call, index)) {
            return false;
        }
    }
    return reader.is_finished();
}

}  // namespace vdevice::remote
