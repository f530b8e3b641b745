// Look-ups in the call table and access to the elements that it describes.
#include "calls/call_table.h"

#include <algorithm>
#include <cstring>

namespace calls {
namespace {

template <typename T>
int64_t load_as(const void *from) {
    T value;
    std::memcpy(&value, from, sizeof value);
    return static_cast<int64_t>(value);
}

template <typename T>
void store_as(void *to, int64_t value) {
    const T cut = static_cast<T>(value);
    std::memcpy(to, &cut, sizeof cut);
}

}  // namespace

std::optional<CallId> find_call(std::string_view name) {
    const auto table = calls();
    const auto found = std::lower_bound(table.begin(), table.end(), name,
                                        [](const Call &call, std::string_view wanted) { return call.name < wanted; });
    if (found == table.end() || found->name != name) {
        return std::nullopt;
    }
    return static_cast<CallId>(found - table.begin());
}

std::optional<size_t> find_param(const Call &call, std::string_view name) {
    for (size_t index = 0; index < call.params.size(); ++index) {
        if (call.params[index].name == name) {
            return index;
        }
    }
    return std::nullopt;
}

size_t element_size(const Element &element) {
    switch (element.kind) {
        case Kind::U8:
        case Kind::Char:
            return sizeof(uint8_t);
        case Kind::U16:
            return sizeof(uint16_t);
        case Kind::U32:
        case Kind::I32:
            return sizeof(uint32_t);
        case Kind::U64:
            return sizeof(uint64_t);
        case Kind::Word:
            return sizeof(uintptr_t);
        case Kind::Struct:
            return element.layout->size;
    }
    return 0;
}

const void *target(const Param &param, const void *argument) {
    return param.is_pointer() ? *static_cast<const void *const *>(argument) : argument;
}

size_t extent(const Call &call, size_t index, const void *const *arguments) {
    const Param &param = call.params[index];
    if (param.counted_by == kNotCounted) {
        return param.extent;
    }
    const auto counter = static_cast<size_t>(param.counted_by);
    const void *number = target(call.params[counter], arguments[counter]);
    const int64_t count = number == nullptr ? 0 : load(call.params[counter].element.kind, number);
    return count < 0 ? 0 : static_cast<size_t>(count);
}

bool is_event_message(const Call &call, const Param &param) {
    return &call == &calls::call(CallId::equeue_send_ucast) && param.is_pointer() && param.element.kind == Kind::Word;
}

int64_t load(Kind kind, const void *from) {
    switch (kind) {
        case Kind::U8:
        case Kind::Char:
            return load_as<uint8_t>(from);
        case Kind::U16:
            return load_as<uint16_t>(from);
        case Kind::U32:
            return load_as<uint32_t>(from);
        case Kind::I32:
            return load_as<int32_t>(from);
        case Kind::U64:
            return load_as<uint64_t>(from);
        case Kind::Word:
            return load_as<uintptr_t>(from);
        case Kind::Struct:
            break;
    }
    return 0;
}

void store(Kind kind, void *to, int64_t value) {
    switch (kind) {
        case Kind::U8:
        case Kind::Char:
            return store_as<uint8_t>(to, value);
        case Kind::U16:
            return store_as<uint16_t>(to, value);
        case Kind::U32:
        case Kind::I32:
            return store_as<uint32_t>(to, value);
        case Kind::U64:
            return store_as<uint64_t>(to, value);
        case Kind::Word:
            return store_as<uintptr_t>(to, value);
        case Kind::Struct:
            return;
    }
}

}  // namespace calls
