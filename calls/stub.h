/**
 * @file stub.h
 * What the generated stubs call. Every program that links stubs defines its own forward_call(): the recording driver
 * records the call, the remote client sends it to the daemon, the call trace forwards and describes it.
 */
#pragma once

#include <stddef.h>
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

/** The result as a stub returns it. */
template <typename R>
R returned([[maybe_unused]] int64_t result) {
    if constexpr (std::is_pointer_v<R>) {
        return reinterpret_cast<R>(static_cast<intptr_t>(result));
    } else if constexpr (!std::is_void_v<R>) {
        return static_cast<R>(result);
    }
}

template <typename R>
R forward(CallId id, const void *const *arguments) {
    return returned<R>(forward_call(id, arguments));
}

}  // namespace calls

namespace exported {

/** Likewise for an exported call; @p index is its place in calls(). A struct result is the address of the struct. */
int64_t forward_call(size_t index, const void *const *arguments);

template <typename R>
R forward(size_t index, const void *const *arguments) {
    return calls::returned<R>(forward_call(index, arguments));
}

}  // namespace exported
