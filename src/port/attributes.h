// The steps that set an attribute of one port: the driver calls of a selector, in order, until one fails.
#pragma once

#include <adp/types.h>

#include "core/number.h"

namespace adp {

/** An attribute as adp_get_phy_port_attr() reads it, 0 when that wrote nothing. */
uint32_t attribute_or_zero(Intf intf, uint32_t selector);

/** Maximum speeds in Mb/s; how speed and advertisement are set depends on them. */
inline constexpr uint32_t kGigabit = 1000;
inline constexpr uint32_t kTenGigabit = 10000;

/** A step takes value and mode of the set call; its result is 0 or that of the driver call that failed. */
using AttrStep = int32_t (*)(PhyPort, uint32_t, uint32_t);

int32_t step_gigabit_speed(PhyPort port, uint32_t value, uint32_t mode);
int32_t step_ten_gigabit_speed(PhyPort port, uint32_t value, uint32_t mode);
int32_t step_duplex(PhyPort port, uint32_t value, uint32_t mode);
int32_t step_autoneg(PhyPort port, uint32_t value, uint32_t mode);
int32_t step_pause(PhyPort port, uint32_t value, uint32_t mode);
int32_t step_gigabit_advert_duplex(PhyPort port, uint32_t value, uint32_t mode);
int32_t step_gigabit_advert_speed(PhyPort port, uint32_t value, uint32_t mode);
int32_t step_ten_gigabit_advert_duplex(PhyPort handed, uint32_t value, uint32_t mode);
int32_t step_ten_gigabit_advert_speed(PhyPort handed, uint32_t value, uint32_t mode);

}  // namespace adp
