/**
 * @file literals.h
 * Sets, octets and texts as values are written.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string>
#include <string_view>
#include <vector>

namespace adptrace {

/** Ports in ascending order: `{4,5,10-26}`. */
std::string ports_text(const std::vector<uint64_t> &ports);
/** So many octets of hexadecimal text, `aa:bb`; those after its end are zero. */
std::string octets_text(std::string_view digits, size_t count);
/** So many octets of a text, in quotation marks. */
std::string quoted_text(std::string_view text, size_t count);

}  // namespace adptrace
