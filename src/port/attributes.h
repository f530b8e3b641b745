// What a port can do, and the steps that set an attribute of one port. Each step is the driver calls of one selector,
// in order, and stops at the first that fails.
#pragma once

#include <adp/types.h>

#include "core/number.h"

namespace adp {

/** An attribute as adp_get_phy_port_attr() reads it, 0 when that wrote nothing. */
uint32_t attribute_or_zero(Intf intf, uint32_t selector);

/** Maximum speeds that choose how speed and advertisement are set, in Mb/s. */
inline constexpr uint32_t kGigabit = 1000;
inline constexpr uint32_t kTenGigabit = 10000;

/** A step takes what a set call asks for, value and mode, and gives 0 or the failing driver call's result. */
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
