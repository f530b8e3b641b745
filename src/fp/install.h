// Installation of a rule record.
#pragma once

#include <adp/fp.h>

namespace adp {

/** Installs the rule and records it. The record is changed. */
adp_status_t install_rule(FpEntity &rule);

}  // namespace adp
