// Names of ports, both ways.
#include "switchd/ports/port_name.h"

#include <adp/types.h>
#include <gtest/gtest.h>

namespace switchd {
namespace port_name_test {

TEST(PortName, EveryPortAndGroupIsFoundByItsName) {
    for (uint32_t port = 1; port <= ADP_USER_PORTS; ++port) {
        EXPECT_EQ(name_of({port, 0}), "swp" + std::to_string(port));
        EXPECT_EQ(port_of_name("swp" + std::to_string(port)), (PortName{port, 0}));
    }
    for (uint32_t group = 1; group <= ADP_AGG_GROUPS; ++group) {
        EXPECT_EQ(name_of({ADP_AGG_INTF(group), 0}), "agg" + std::to_string(group));
        EXPECT_EQ(port_of_name("agg" + std::to_string(group)), (PortName{ADP_AGG_INTF(group), 0}));
    }
}

TEST(PortName, ATagStandsBehindAPoint) {
    EXPECT_EQ(port_of_name("swp3.100"), (PortName{3, 100}));
    EXPECT_EQ(port_of_name("agg8.4094"), (PortName{ADP_AGG_INTF(8), 4094}));
    EXPECT_EQ(name_of({26, 4094}), "swp26.4094");
    EXPECT_EQ(name_of({ADP_AGG_INTF(1), 1}), "agg1.1");
}

TEST(PortName, WhatIsNoPortHasNone) {
    for (const char *name : {"",
                             "swp",
                             "swp0",
                             "swp27",
                             "swp01",
                             "swp+1",
                             "swp-1",
                             "swp 1",
                             "swp1 ",
                             "swp1x",
                             "Swp1",
                             "swp1.",
                             "swp1.0",
                             "swp1.4095",
                             "swp1.0100",
                             "swp1.1.1",
                             "swp1.x",
                             "swp.1",
                             "agg",
                             "agg0",
                             "agg9",
                             "agg1.",
                             "agg01",
                             "eth0",
                             "br100",
                             ".1",
                             "swp4294967297",
                             "swp99999999999999999999",
                             "swp1.99999999999999999999"}) {
        EXPECT_EQ(port_of_name(name), std::nullopt) << name;
    }
}

TEST(PortName, TheNextPortIsBehindAllTagsOfTheOneBefore) {
    EXPECT_LT((PortName{1, 0}), (PortName{1, 1}));
    EXPECT_LT((PortName{1, 4094}), (PortName{2, 0}));
    EXPECT_LT((PortName{26, 0}), (PortName{ADP_AGG_INTF(1), 0}));
}

}  // namespace port_name_test
}  // namespace switchd
