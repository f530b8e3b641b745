// Installation of a rule record.
#ifndef FP_INSTALL_H
#define FP_INSTALL_H

#include <adp/fp.h>

namespace adp {

/** Installs the rule and records it; the record is the caller's own copy, and changed. */
adp_status_t install_rule(FpEntity &rule);

}  // namespace adp

#endif
