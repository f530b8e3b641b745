/**
 * @file stub.h
 * What the generated stubs call. Every program that links stubs defines its own forward_call(): the recording driver
 * records the call, the remote client sends it to the daemon, the call trace forwards and describes it.
 */
#pragma once

#include <stdint.h>
#include <type_traits>

#include "generated/call_id.h"

namespace calls {

/**
 * Answers one call.
 *
 * @param id         which call
 * @param arguments  the address of each argument, in the order of the call's parameters
 * @return the call's result; a text result as the address of the text
 */
int64_t forward_call(CallId id, const void *const *arguments);

template <typename R>
R forward(CallId id, const void *const *arguments) {
    const int64_t result = forward_call(id, arguments);
    if constexpr (std::is_pointer_v<R>) {
        return reinterpret_cast<R>(static_cast<intptr_t>(result));
    } else if constexpr (!std::is_void_v<R>) {
        return static_cast<R>(result);
    }
}

}  // namespace calls
