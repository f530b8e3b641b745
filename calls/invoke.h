/**
 * @file invoke.h
 * Makes calls of arguments whose addresses were collected: the inverse of the stubs.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <type_traits>
#include <utility>

#include "generated/call_id.h"

namespace calls {

/** The result as a number; a text result as its address. */
template <typename F>
int64_t result_of(F &&function) {
    using R = decltype(function());
    if constexpr (std::is_void_v<R>) {
        function();
        return 0;
    } else if constexpr (std::is_pointer_v<R>) {
        return static_cast<int64_t>(reinterpret_cast<intptr_t>(function()));
    } else {
        return static_cast<int64_t>(function());
    }
}

template <auto Method, typename Object, typename R, typename... P, size_t... Index>
int64_t invoke_method(Object &object, R (Object::*)(P...), [[maybe_unused]] const void *const *arguments,
                      std::index_sequence<Index...>) {
    return result_of([&]() -> R { return (object.*Method)(*static_cast<const P *>(arguments[Index])...); });
}

/** Calls @p Method of the object with the arguments whose addresses are given. */
template <auto Method, typename Object>
int64_t invoke(Object &object, const void *const *arguments) {
    const auto unpack = [&]<typename R, typename... P>(R (Object::*method)(P...)) {
        return invoke_method<Method>(object, method, arguments, std::index_sequence_for<P...>{});
    };
    return unpack(Method);
}

/** Calls the function at an address; @p Function is a pointer to its type. */
template <typename Function>
int64_t invoke_function(void *function, [[maybe_unused]] const void *const *arguments) {
    const auto unpack = [&]<typename R, typename... P>(R (*typed)(P...)) {
        const auto call = [&]<size_t... Index>(std::index_sequence<Index...>) {
            return result_of([&]() -> R { return typed(*static_cast<const P *>(arguments[Index])...); });
        };
        return call(std::index_sequence_for<P...>{});
    };
    return unpack(reinterpret_cast<Function>(function));
}

/** invoke_function() for some type of function. */
using Invoker = int64_t (*)(void *function, const void *const *arguments);

/** Calls @p function, which must have the type of the imported call @p id; that call must not be variadic. */
int64_t call_function(void *function, CallId id, const void *const *arguments);

}  // namespace calls
