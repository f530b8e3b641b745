// What a port can do, and the steps that set an attribute of one port. Each step is the driver calls of one selector,
// in order, and stops at the first that fails.
#ifndef PORT_ATTRIBUTES_H
#define PORT_ATTRIBUTES_H

#include <adp/types.h>

#include "port/number.h"

namespace adp {

/** What a set call asks for. */
struct AttrRequest {
    uint32_t value;
    uint32_t mode;
};

/** Maximum speeds that choose how speed and advertisement are set, in Mb/s. */
inline constexpr uint32_t kGigabit = 1000;
inline constexpr uint32_t kTenGigabit = 10000;

/** A step gives 0 or the failing driver call's result. */
using AttrStep = int32_t (*)(PhyPort, AttrRequest);

int32_t step_gigabit_speed(PhyPort port, AttrRequest request);
int32_t step_ten_gigabit_speed(PhyPort port, AttrRequest request);
int32_t step_duplex(PhyPort port, AttrRequest request);
int32_t step_autoneg(PhyPort port, AttrRequest request);
int32_t step_pause(PhyPort port, AttrRequest request);
int32_t step_gigabit_advert_duplex(PhyPort port, AttrRequest request);
int32_t step_gigabit_advert_speed(PhyPort port, AttrRequest request);
int32_t step_ten_gigabit_advert_duplex(PhyPort handed, AttrRequest request);
int32_t step_ten_gigabit_advert_speed(PhyPort handed, AttrRequest request);

}  // namespace adp

#endif
