// The receive machine of IEEE 802.1AX: what is known of the partner, and for how long.
#pragma once

#include "switchd/lacp/port.h"

namespace switchd::lacp {

/** The link has changed. */
void change_link(Port &port, bool is_up, bool is_full_duplex, Time now);
void take_lacpdu(Port &port, const Lacpdu &pdu, Time now);
/** What is known of the partner grows old. */
void expire_partner(Port &port, Time now);
/** Another port has heard the partner of this one, whose link is down: it was moved there. */
void forget_partner(Port &port);
/** Whether both say the same about an end's identity; its state counts as far as it may aggregate at all. */
bool is_same_end(const Info &a, const Info &b);

}  // namespace switchd::lacp
