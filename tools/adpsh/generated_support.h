/**
 * @file generated_support.h
 * What the generated table of calls is written with: arguments fetched from their storage, results widened.
 */
#pragma once

#include "tools/adpsh/events.h"
#include "tools/adpsh/table.h"

#include <stdint.h>
#include <cstring>
#include <type_traits>

namespace adpsh {

/** An argument passed by value, out of its storage. */
template <typename T>
T value(const void *storage) {
    T result;
    std::memcpy(&result, storage, sizeof result);
    return result;
}

/** An argument passed by address: the storage itself. */
template <typename T>
T *address(void *storage) {
    return static_cast<T *>(storage);
}

template <typename T>
Result result_of(T result) {
    if constexpr (std::is_pointer_v<T>) {
        return {0, result};
    } else {
        return {static_cast<int64_t>(result), nullptr};
    }
}

/** A callback's receiver as it is kept in the table, without its own type. */
template <typename R, typename... Arguments>
auto as_function(R (*function)(Arguments...)) -> void (*)() {
    return reinterpret_cast<void (*)()>(function);
}

}  // namespace adpsh
