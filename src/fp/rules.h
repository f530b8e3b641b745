// The list of installed rules.
#pragma once

#include <adp/fp.h>

namespace adp {

/** Removes the installed rule that @p entity replaces, with a meter for each meter action of @p entity. */
uint32_t remove_replaced_rule(const FpEntity &entity);

/** Appends a copy of @p entity to the list; false without memory for it. */
bool record_rule(const FpEntity &entity);

}  // namespace adp
