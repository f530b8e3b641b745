// Memory as JSON for programs: numbers as numbers, bytes as hexadecimal text, records as objects.
#include "tools/adpsh/show.h"

#include <cstring>

namespace adpsh {

namespace {

Json record_json(const Record &record, const uint8_t *from) {
    Json object = Json::object();
    for (const Field &field : record.fields) {
        if (field.is_pointer) {
            const void *address = nullptr;
            std::memcpy(&address, from + field.offset, sizeof address);
            object[field.name] = address == nullptr ? Json() : Json("set");
        } else {
            object[field.name] = json_of(field.type, from + field.offset, field.count);
        }
    }
    return object;
}

Json number_json(const Type &type, const void *from) {
    const int64_t number = load_number(type, from);
    if (type.kind == Kind::kI16 || type.kind == Kind::kI32) {
        return number;
    }
    return static_cast<uint64_t>(number);
}

/** A block that only the driver knows: as the 64-bit counter or the words that it most likely holds. */
Json opaque_json(const uint8_t *from, size_t count) {
    if (count == kCounter.size) {
        return number_json(kCounter, from);
    }
    if (count % kWord32.size != 0) {
        return hex_of(from, count);
    }
    Json words = Json::array();
    for (size_t i = 0; i < count; i += kWord32.size) {
        words.push_back(number_json(kWord32, from + i));
    }
    return words;
}

/** The offset of an address inside the memory of another argument, or null. */
Json pointer_json(const Slot &slot, const Arguments &arguments) {
    const uint8_t *address = nullptr;
    std::memcpy(&address, slot.storage.data(), sizeof address);
    for (const Slot &other : arguments.slots()) {
        const uint8_t *const begin = other.storage.data();
        if (&other != &slot && address >= begin && address < begin + other.storage.size()) {
            return address - begin;
        }
    }
    return nullptr;
}

Json frame_record_json(const Slot &slot) {
    Json object = record_json(*slot.parameter->type.record, slot.storage.data());
    for (const Field &field : slot.parameter->type.record->fields) {
        const uint8_t *address = nullptr;
        if (!field.is_pointer || slot.pointed == nullptr) {
            continue;
        }
        std::memcpy(&address, slot.storage.data() + field.offset, sizeof address);
        if (std::string_view(field.name) == "frame") {
            object[field.name] = hex_of(slot.pointed->data(), slot.pointed->size());
        } else if (address != nullptr) {
            object[field.name] = address - slot.pointed->data();
        }
    }
    return object;
}

}  // namespace

Json json_of(const Type &type, const void *from, size_t count) {
    const auto *const bytes = static_cast<const uint8_t *>(from);
    if (type.kind == Kind::kText) {
        return std::string(static_cast<const char *>(from));
    }
    if (type.kind == Kind::kOpaque) {
        return opaque_json(bytes, count);
    }
    if (type.kind == Kind::kU8 && count != 1) {
        return hex_of(bytes, count);
    }
    if (count != 1) {
        Json list = Json::array();
        for (size_t i = 0; i < count; ++i) {
            list.push_back(json_of(type, bytes + i * type.size, 1));
        }
        return list;
    }
    if (type.kind == Kind::kRecord) {
        return record_json(*type.record, bytes);
    }
    return type.kind == Kind::kCallback ? Json(text_of(type, from, 1)) : number_json(type, from);
}

Json json_of(const Slot &slot, const Arguments &arguments) {
    const Parameter &parameter = *slot.parameter;
    if (!slot.before.empty()) {
        return json_of(kWord32, slot.pointed->data(), slot.pointed->size() / kWord32.size);
    }
    switch (parameter.shape) {
        case Shape::kOutPointer:
            return pointer_json(slot, arguments);
        case Shape::kFrameRecord:
            return frame_record_json(slot);
        default:
            break;
    }
    if (parameter.counter != kNoCounter && parameter.type.kind == Kind::kU8) {
        return hex_of(slot.storage.data(), slot.elements);
    }
    if (parameter.counter != kNoCounter && slot.elements == 1 && parameter.type.kind != Kind::kOpaque) {
        return Json::array({json_of(parameter.type, slot.storage.data(), 1)});
    }
    return json_of(parameter.type, slot.storage.data(), slot.elements);
}

Json json_of(const Call &call, const Result &result) {
    switch (call.result) {
        case ResultKind::kNone:
            return nullptr;
        case ResultKind::kRecord:
            return result.address == nullptr ? Json()
                                             : record_json(*call.record, static_cast<const uint8_t *>(result.address));
        case ResultKind::kText:
            return result.address == nullptr ? Json() : Json(std::string(static_cast<const char *>(result.address)));
        default:
            return static_cast<int32_t>(result.number);
    }
}

}  // namespace adpsh
