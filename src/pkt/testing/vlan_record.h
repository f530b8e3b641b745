// Shared by the tests of VLAN membership: the record that the device's service gives for a VLAN.
#pragma once

#include "tests/support/recording_driver.h"

namespace pkt_test {

/** The members of every VLAN, from now on: bits of user ports, and bit 26 + n of group n. */
inline void set_vlan_members(uint64_t members) {
    uint32_t record[16] = {};
    record[2] = static_cast<uint32_t>(members >> 32);
    record[3] = static_cast<uint32_t>(members);
    recording::driver().on("get_vlan_info").sets_object("record", record);
}

}  // namespace pkt_test
