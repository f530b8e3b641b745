/**
 * @file readable.h
 * What of a call's arguments is in memory. A call may refuse an address, or a number beside it, without looking; then
 * the program goes on, and so must the recording.
 */
#pragma once

#include <stddef.h>
#include <span>

#include "calls/element.h"
#include "calls/json_text.h"

namespace adptrace::record {

/** The octets from the beginning that are in memory of the process; all of them where the kernel does not say. */
size_t readable_octets(const void *at, size_t octets);

/** Cuts what a number counts to what there is. What cannot be read otherwise becomes an address of nothing. */
void limit_to_readable(std::span<const calls::Param> params, const void *const *arguments, calls::Blocks &blocks);

}  // namespace adptrace::record
