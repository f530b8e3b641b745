// The Ethernet addresses of multicast groups.
#include "switchd/kernel/kernel_state.h"

#include <linux/if_ether.h>

#include <algorithm>

namespace switchd {

Mac mac_of(const GroupKey &group) {
    const auto &address = group.address;
    if (group.protocol == ETH_P_IP) {
        constexpr uint8_t kLowBits = 0x7F;
        return {0x01, 0x00, 0x5E, static_cast<uint8_t>(address[1] & kLowBits), address[2], address[3]};
    }
    if (group.protocol == ETH_P_IPV6) {
        return {0x33, 0x33, address[12], address[13], address[14], address[15]};
    }
    Mac mac{};
    std::copy_n(address.begin(), mac.size(), mac.begin());
    return mac;
}

}  // namespace switchd
