// Lists of rules for the field processor, as access devices have them: one for each station, of one kind or of several.
#pragma once

#include <stddef.h>

#include "vdevice/chip/fields/field_table.h"

namespace bench {

/** One rule, that the frames do not meet. */
void add_first_rule(vdevice::chip::FieldTable &table, size_t count);
/** On one IPv4 address each, and none is that of the frames. */
void add_rules_alike(vdevice::chip::FieldTable &table, size_t count);
/** On ports, VLANs, addresses and kinds of packets, in all groups; the frames meet none. */
void add_rules_mixed(vdevice::chip::FieldTable &table, size_t count);
/** The same, and the frames meet a permission that is tried after all others. */
void add_rules_met(vdevice::chip::FieldTable &table, size_t count);

}  // namespace bench
