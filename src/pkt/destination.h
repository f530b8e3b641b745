// Which ports a frame goes to: the switch tag that each transmit mode builds.
#pragma once

#include <adp/pkt.h>

#include "pkt/switch_tag.h"

namespace adp {

/**
 * Builds the tag for a mode; false when the mode refuses its list or VLAN.
 *
 * @param mode  0..4, see enum adp_tx_mode
 */
bool build_tag(uint32_t mode, const adp_list_link_t *list, uint32_t vid, Intf source, TxTag *tag);

}  // namespace adp
