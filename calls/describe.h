/**
 * @file describe.h
 * Calls as text that people read and tests compare, the same on every machine.
 *
 * `user_vlan_port_set(unit=0, zero=0, vid=100, members={4,5}, untagged={})`: port sets are {n,n-n}, bytes are hex pairs
 * aa:bb, other arrays [1, 2], structs {flags=8, mac=..}, text is quoted, a null address is null. Words are cut to 32
 * bits. A block of more than 16 elements ends in `..` where only zeros follow.
 */
#pragma once

#include <stdint.h>
#include <string>
#include <string_view>

#include "calls/call_table.h"

namespace calls {

/** The call with everything it reads; what it only writes is left out. */
std::string describe_call(CallId id, const void *const *arguments);

/**
 * The result with a name for it if there is one, and, once the call has returned, everything it wrote:
 * `-3 (bad_argument) {rate=5, burst=6}`, or just `0`.
 */
std::string describe_result(CallId id, const void *const *arguments, int64_t result, std::string_view name = {});

/** A call of the variadic logger, with its format and the formatted text. */
std::string describe_log(int32_t level, int32_t module, const char *word, const char *format, const char *text);

/** A number as the kind of its element has it. */
std::string number_text(Kind kind, const void *at);

/** A port set: `{4,5,10-26}`. */
std::string ports_text(const void *at, size_t words);

/** Two hexadecimal digits for each byte. */
std::string hex_text(const void *bytes, size_t count);

/** Text in double quotes with C escapes, or null. */
std::string quoted(const char *text);

}  // namespace calls
