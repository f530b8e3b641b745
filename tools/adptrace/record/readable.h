// What of a block of memory can be read.
#pragma once

#include <stddef.h>

namespace adptrace {

/** The octets from the beginning that are in memory of the process; all of them where the kernel does not say. */
size_t readable_octets(const void *at, size_t octets);

}  // namespace adptrace
