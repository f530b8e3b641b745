// What the stubs have in common.
#pragma once

#include "tools/adptrace/record/loaded.h"

namespace adptrace::record {

/** Where a call is made. Without it the program ends, as it does at a call that no library has. */
void *function_behind(Symbol &symbol, const char *name);

}  // namespace adptrace::record
