// Memory as JSON for programs: numbers as numbers, bytes as hexadecimal text, records as objects.
#include "tools/adpsh/show.h"

#include "calls/describe.h"

#include <cstring>

namespace adpsh {

using calls::Element;
using calls::Kind;

namespace {

Json record_json(const calls::Struct &record, const uint8_t *from) {
    Json object = Json::object();
    for (const calls::Field &field : record.fields) {
        if (field.is_pointer) {
            const void *address = nullptr;
            std::memcpy(&address, from + field.offset, sizeof address);
            object[field.name] = address == nullptr ? Json() : Json("set");
        } else {
            object[field.name] = json_of(field.element, from + field.offset, field.count);
        }
    }
    return object;
}

Json number_json(const Element &element, const void *from) {
    const int64_t number = calls::load(element.kind, from);
    if (element.kind == Kind::kI16 || element.kind == Kind::kI32) {
        return number;
    }
    return static_cast<uint64_t>(number);
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
    Json object = record_json(*slot.parameter->element.layout, slot.storage.data());
    for (const calls::Field &field : slot.parameter->element.layout->fields) {
        const uint8_t *address = nullptr;
        if (!field.is_pointer || slot.pointed == nullptr) {
            continue;
        }
        std::memcpy(&address, slot.storage.data() + field.offset, sizeof address);
        if (std::string_view(field.name) == "frame") {
            object[field.name] = calls::hex_text(slot.pointed->data(), slot.pointed->size());
        } else if (address != nullptr) {
            object[field.name] = address - slot.pointed->data();
        }
    }
    return object;
}

}  // namespace

Json json_of(const Element &element, const void *from, size_t count) {
    const auto *const bytes = static_cast<const uint8_t *>(from);
    if (element.kind == Kind::kChar) {
        return std::string(static_cast<const char *>(from));
    }
    if (element.kind == Kind::kU8 && count != 1) {
        return calls::hex_text(bytes, count);
    }
    if (count != 1) {
        Json list = Json::array();
        for (size_t i = 0; i < count; ++i) {
            list.push_back(json_of(element, bytes + i * element.size, 1));
        }
        return list;
    }
    if (element.kind == Kind::kStruct) {
        return record_json(*element.layout, bytes);
    }
    return element.kind == Kind::kCallback ? Json(text_of(element, from, 1)) : number_json(element, from);
}

Json json_of(const Slot &slot, const Arguments &arguments) {
    const calls::Param &parameter = *slot.parameter;
    if (!slot.before.empty()) {
        return json_of(calls::kWord32, slot.pointed->data(), slot.pointed->size() / calls::kWord32.size);
    }
    switch (parameter.shape) {
        case calls::Shape::kOutPointer:
            return pointer_json(slot, arguments);
        case calls::Shape::kFrameRecord:
            return frame_record_json(slot);
        default:
            break;
    }
    if (parameter.counted_by != calls::kNotCounted && parameter.element.kind == Kind::kU8) {
        return calls::hex_text(slot.storage.data(), slot.elements);
    }
    if (parameter.counted_by != calls::kNotCounted && slot.elements == 1) {
        return Json::array({json_of(parameter.element, slot.storage.data(), 1)});
    }
    return json_of(parameter.element, slot.storage.data(), slot.elements);
}

Json json_of(const exported::Call &call, int64_t result) {
    switch (call.result) {
        case calls::Result::kNothing:
            return nullptr;
        case calls::Result::kStruct:
            return result == 0 ? Json()
                               : record_json(*call.layout, static_cast<const uint8_t *>(calls::address_of(result)));
        case calls::Result::kText:
            return result == 0 ? Json() : Json(std::string(static_cast<const char *>(calls::address_of(result))));
        default:
            return static_cast<int32_t>(result);
    }
}

}  // namespace adpsh
