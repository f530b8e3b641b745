// Queues and storm control: the mask of an interface, and the driver's number of a storm code.
#include "tests/support/library_test.h"

namespace queues_test {

using ::testing::ElementsAre;

class Queues : public library_test::LibraryTest {};

TEST_F(Queues, AnInterfaceFrom32HasNoBitInTheMask) {
    for (const auto &[intf, mask] : {std::pair{0u, 1u}, {31u, 0x80000000u}, {32u, 0u}, {33u, 0u}, {0x0FFFFFFFu, 0u}}) {
        EXPECT_EQ(adp_set_port_queue_sch_mode(intf, 1), 0);
        EXPECT_THAT(driver().take(),
                    ElementsAre("user_cosq_port_sched_set(unit=0, zero=0, port_mask=" + std::to_string(mask) +
                                ", mode=1, weights=[0, 0, 0, 0, 0, 0, 0, 0], delay=0)"));
    }
}

TEST_F(Queues, AStormCodesLowByteIsTheDriversType) {
    for (uint32_t code = 0; code <= 0x1FF; ++code) {
        const uint32_t low = code & 0xFF;
        const int type = low == 1 ? 3 : low == 2 ? 2 : low == 4 ? 4 : low == 8 ? 1 : 0;
        EXPECT_EQ(adp_set_storm_control(0, 1, code, 5, 6), 0);
        EXPECT_EQ(adp_get_storm_exceed_flag(0, 1, code, nullptr), 0);
        EXPECT_THAT(
            driver().take(),
            ElementsAre(
                "user_rate_bandwidth_set(unit=0, zero=0, port=4, type=" + std::to_string(type) + ", rate=5, burst=6)",
                "user_rate_stormExceedFlag_get(unit=0, zero=0, port=4, storm_code=" + std::to_string(low) + ")"));
    }
}

}  // namespace queues_test
