// Access to the elements of arguments and structs.
#include "calls/element.h"

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

const void *target(const Param &param, const void *argument) {
    return param.is_pointer() ? *static_cast<const void *const *>(argument) : argument;
}

int64_t load(Kind kind, const void *from) {
    switch (kind) {
        case Kind::kU8:
        case Kind::kChar:
        case Kind::kOpaque:
            return load_as<uint8_t>(from);
        case Kind::kU16:
            return load_as<uint16_t>(from);
        case Kind::kI16:
            return load_as<int16_t>(from);
        case Kind::kU32:
            return load_as<uint32_t>(from);
        case Kind::kI32:
            return load_as<int32_t>(from);
        case Kind::kU64:
            return load_as<uint64_t>(from);
        case Kind::kWord:
            return load_as<uintptr_t>(from);
        case Kind::kStruct:
        case Kind::kCallback:
            break;
    }
    return 0;
}

void store(Kind kind, void *to, int64_t value) {
    switch (kind) {
        case Kind::kU8:
        case Kind::kChar:
        case Kind::kOpaque:
            return store_as<uint8_t>(to, value);
        case Kind::kU16:
        case Kind::kI16:
            return store_as<uint16_t>(to, value);
        case Kind::kU32:
        case Kind::kI32:
            return store_as<uint32_t>(to, value);
        case Kind::kU64:
            return store_as<uint64_t>(to, value);
        case Kind::kWord:
            return store_as<uintptr_t>(to, value);
        case Kind::kStruct:
        case Kind::kCallback:
            return;
    }
}

}  // namespace calls
