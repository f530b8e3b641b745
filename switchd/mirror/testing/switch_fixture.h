// For tests: the virtual chip, and what it has been told.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "switchd/mirror/applier.h"
#include "switchd/mirror/reader.h"
#include "switchd/mirror/testing/kernel_builder.h"
#include "switchd/mirror/testing/virtual_switch.h"
#include "switchd/mirror/wanted.h"

namespace switchd::test {

class SwitchTest : public testing::Test {
  protected:
    Wanted wanted() const { return wanted_of(k.kernel, k.plan); }

    /** What the chip has; what cannot be read is taken from the chip itself. */
    SwitchState present() {
        SwitchState state = read_switch(k.plan);
        const auto &rules = chip.chip().port(VirtualSwitch::chip_port_of(1)).groups;
        state.unknown_ipv4_groups = static_cast<adp_mcast_miss>(rules.ipv4_miss);
        state.unknown_ipv6_groups = static_cast<adp_mcast_miss>(rules.ipv6_miss);
        return state;
    }

    VirtualSwitch chip;
    KernelBuilder k;
};

}  // namespace switchd::test
