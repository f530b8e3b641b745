/**
 * @file call_table.h
 * The imported calls as data. The code that records, describes or carries a call walks this table.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <optional>
#include <span>
#include <string_view>

#include "calls/element.h"
#include "generated/call_id.h"

namespace calls {

struct Call {
    const char *name;
    Result result;
    std::span<const Param> params;
};

/** All imported calls; the position in the table is the CallId. */
std::span<const Call> calls();

inline const Call &call(CallId id) {
    return calls()[static_cast<size_t>(id)];
}

std::optional<CallId> find_call(std::string_view name);

/** Index of the parameter with this name. */
std::optional<size_t> find_param(const Call &call, std::string_view name);

/** Elements that parameter @p index addresses in a call with these arguments; a negative count is none. */
size_t extent(std::span<const Param> params, size_t index, const void *const *arguments);

/** The parameters of the variadic logger, with the text that it formats in the place of its values. */
std::span<const Param> log_params();

/** The record that an event-queue message addresses with its last word. */
inline constexpr size_t kEventRecordNumbers = 4;
inline constexpr Element kEventRecordNumber = {Kind::kU16, sizeof(uint16_t)};

}  // namespace calls
