// adp_get_phy_port_attr() for the maximum speed, which on a group is the largest of its members.
#include "port/testing/attribute.h"

namespace {

using namespace attribute_test;

class GetMaximumSpeed : public GetAttributeTest {
  protected:
    adp_status_t get(uint32_t intf) { return GetAttributeTest::get(intf, ADP_ATTR_MAX_SPEED); }

    /** Port 4 is a port of 10 Mb/s, port 5 of 20 ... */
    static void script() {
        driver().on("user_port_speed_max").does([](recording::Arguments &call) {
            constexpr uint32_t kStep = 10;
            *static_cast<uint32_t *>(call.pointer("speed")) = (call.u32("port") - library_test::kPortOffset) * kStep;
            return 0;
        });
    }

    void expect(uint32_t intf, uint32_t speed, const std::vector<int32_t> &ports) {
        value = kUnwritten;
        EXPECT_EQ(get(intf), 0);
        EXPECT_EQ(value, speed);
        EXPECT_EQ(driver().take(), maximum_reads(ports));
    }
};

TEST_F(GetMaximumSpeed, OfAUserPort) {
    script();
    expect(1, 10, {4});
    expect(26, 260, {29});
}

TEST_F(GetMaximumSpeed, OfAGroupIsTheLargestOfItsConfiguredMembers) {
    script();
    set_configured(kGroup, 1u << 1 | 1u << 3);
    set_active(kGroup, {29});
    agg_manage_intf[kGroup - 1] = 25;
    expect(kAgg, 30, {4, 6});
}

TEST_F(GetMaximumSpeed, OfAGroupIsTheLargestInAnyOrder) {
    script();
    set_active(kGroup, {6, 0, 4});
    expect(kAgg, 30, {6, 4});
    set_active(kGroup, {4, 29, 5});
    expect(kAgg, 260, {4, 29, 5});
    set_active(kGroup, {12, 11, 10, 9, 8, 7, 6, 5, 4});
    expect(kAgg, 90, {12, 11, 10, 9, 8, 7, 6, 5, 4});
}

TEST_F(GetMaximumSpeed, ComparesWithoutSign) {
    driver().on("user_port_speed_max").sets("speed", 1000);
    driver().once("user_port_speed_max").sets("speed", 0x80000000);
    set_active(kGroup, {4, 5});
    expect(kAgg, 0x80000000, {4, 5});
}

TEST_F(GetMaximumSpeed, OfAGroupWithoutMembersIsZero) {
    agg_manage_intf[kGroup - 1] = 25;
    expect(kAgg, 0, {});
}

TEST_F(GetMaximumSpeed, FailureIs102AndLeavesTheOutputAlone) {
    for (size_t failing = 0; failing < 3; ++failing) {
        start_over();
        script();
        set_configured(kGroup, 1u << 1 | 1u << 3 | 1u << 26);
        driver().fail_call(failing, kDriverError);
        EXPECT_EQ(get(kAgg), 102);
        EXPECT_EQ(value, kUnwritten);
        EXPECT_EQ(driver().take(), up_to_call(maximum_reads({4, 6, 29}), failing));
    }
    driver().fail_call(0, 1);
    EXPECT_EQ(get(3), 102);
    EXPECT_EQ(value, kUnwritten);
}

}  // namespace
