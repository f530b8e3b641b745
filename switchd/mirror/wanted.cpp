// What the chip should have, put together.
#include "switchd/mirror/wanted.h"

#include <utility>

#include "switchd/mirror/draft.h"

namespace switchd {

Wanted wanted_of(const KernelState &kernel, const Plan &plan) {
    Draft draft{kernel, plan};
    find_members(draft);
    choose_vids(draft);
    add_vlans(draft);
    add_port_settings(draft);
    add_addresses(draft);
    add_groups(draft);
    return std::move(draft.wanted);
}

}  // namespace switchd
