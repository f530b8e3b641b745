// Start-up's calls, the reserved addresses and the controls that act on the chip.
#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace switch_controls_test {

using chip::Mac;
using chip::Status;
using namespace test;

constexpr int32_t kReservedIndex = chip::code(Status::kReservedIndex);

using Octets6 = std::array<uint8_t, chip::kMacBytes>;
constexpr Octets6 kBridges = {0x01, 0x80, 0xC2, 0x00, 0x00, 0x0F};
constexpr Octets6 kUntouched = {9, 9, 9, 9, 9, 9};

class DriverStart : public test::DriverTest {
  protected:
    Octets6 entry(uint32_t index) {
        Octets6 mac = kUntouched;
        EXPECT_EQ(driver_.user_l2_bpdu_get(0, 0, index, mac.data()), kOk);
        return mac;
    }
    void set_control(uint32_t control, uint32_t value) {
        uint32_t read = ~value;
        EXPECT_EQ(driver_.user_switch_control_set(0, 0, control, value), kOk);
        EXPECT_EQ(driver_.user_switch_control_get(0, 0, control, &read), kOk);
        EXPECT_EQ(read, value);
    }
    uint32_t control(uint32_t number) {
        uint32_t value = 99;
        EXPECT_EQ(driver_.user_switch_control_get(0, 0, number, &value), kOk);
        return value;
    }
};

TEST_F(DriverStart, ReservedAddressesAreReadAndWritten) {
    EXPECT_EQ(entry(0), (Octets6{0x01, 0x80, 0xC2, 0x00, 0x00, 0x10}));
    EXPECT_EQ(entry(9), (Octets6{0x01, 0x80, 0xC2, 0x00, 0x00, 0x28}));
    for (uint32_t index = 10; index < 64; ++index) {
        EXPECT_EQ(entry(index), Octets6{}) << index;
    }
    EXPECT_EQ(driver_.user_l2_bpdu_set(0, 0, 63, kBridges.data()), kOk);
    EXPECT_EQ(entry(63), kBridges);
    EXPECT_TRUE(chip_.reserved_macs().has(Mac::from_bytes(kBridges.data())));
    EXPECT_EQ(driver_.user_l2_bpdu_set(0, 0, 63, Octets6{}.data()), kOk);
    EXPECT_FALSE(chip_.reserved_macs().has(Mac::from_bytes(kBridges.data())));
}

TEST_F(DriverStart, EachCallTurnsItsOwnOn) {
    EXPECT_FALSE(chip_.traps().lldp || chip_.traps().bpdu || chip_.filters_attacks()) << "off at power-on";
    EXPECT_EQ(driver_.user_lldp_init(0, 0), kOk);
    EXPECT_TRUE(chip_.traps().lldp);
    EXPECT_FALSE(chip_.traps().bpdu);
    EXPECT_EQ(driver_.user_stg_init(0, 0), kOk);
    EXPECT_TRUE(chip_.traps().bpdu);
    EXPECT_FALSE(chip_.filters_attacks());
    EXPECT_EQ(driver_.user_dos_attack_prevent_init(0, 0), kOk);
    EXPECT_TRUE(chip_.filters_attacks());
    EXPECT_EQ(driver_.user_lldp_init(0, 0), kOk) << "once more is no error";
}

TEST_F(DriverStart, ControlsActOnTheChipAndReadBackAsSet) {
    for (const uint32_t number : {kMldToCpu, kIgmpToCpu, kMirroring, kReservedMulticast}) {
        EXPECT_EQ(control(number), 0U) << number;
    }
    set_control(kIgmpToCpu, 1);
    EXPECT_TRUE(chip_.snooping().igmp);
    EXPECT_FALSE(chip_.snooping().mld || chip_.snooping().reserved_multicast || chip_.mirrors().enabled());
    set_control(kMldToCpu, 7);
    EXPECT_TRUE(chip_.snooping().mld);
    set_control(kReservedMulticast, 1);
    EXPECT_TRUE(chip_.snooping().reserved_multicast);
    set_control(kMirroring, 1);
    EXPECT_TRUE(chip_.mirrors().enabled());
    for (const uint32_t number : {kMldToCpu, kIgmpToCpu, kMirroring, kReservedMulticast}) {
        set_control(number, 0);
    }
    EXPECT_FALSE(chip_.snooping().igmp || chip_.snooping().mld || chip_.snooping().reserved_multicast);
    EXPECT_FALSE(chip_.mirrors().enabled());
}

TEST_F(DriverStart, SnoopingBeginsAnew) {
    for (const uint32_t number : {kMldToCpu, kIgmpToCpu, kReservedMulticast}) {
        set_control(number, 1);
    }
    EXPECT_EQ(driver_.user_igmp_snooping_init(0, 0), kOk);
    EXPECT_EQ(control(kIgmpToCpu), 0U);
    EXPECT_FALSE(chip_.snooping().igmp);
    EXPECT_TRUE(chip_.snooping().mld && chip_.snooping().reserved_multicast);
    EXPECT_EQ(driver_.User_mcast_init(0, 0), kOk);
    EXPECT_EQ(control(kReservedMulticast), 0U);
    EXPECT_FALSE(chip_.snooping().reserved_multicast);
    EXPECT_EQ(control(kMldToCpu), 1U);
}

}  // namespace switch_controls_test
}  // namespace vdevice::driver
