// The calls on mirror sessions, and the pins' registers. What mirrors copy is tested on the chip.
#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace mirroring_test {

using chip::Mirror;
using chip::Status;
using namespace test;

constexpr int32_t kMirrorSession = chip::code(Status::kMirrorSession);
constexpr int32_t kMirrorMissing = chip::code(Status::kMirrorMissing);
constexpr uint32_t kInput = 0x2000;
constexpr uint32_t kOutput = 0x2004;
constexpr uint32_t kDirection = 0x2008;

class DriverMirror : public test::DriverTest {
  protected:
    const Mirror &session(uint32_t number) { return chip_.mirrors().session(number); }
    uint32_t read(uint32_t address) {
        uint32_t value = 99;
        EXPECT_EQ(driver_.user_pci_read(0, 0, address, &value), kOk);
        return value;
    }
    int32_t write(uint32_t address, uint32_t value) { return driver_.user_pci_write(0, 0, address, &value); }
};

TEST_F(DriverMirror, PortsAreMirroredAsTheModeSays) {
    EXPECT_EQ(driver_.user_mirror_port_set(0, 0, 4, 1, 9, 6), kOk);
    EXPECT_EQ(driver_.user_mirror_port_set(0, 0, 5, 1, 9, 2), kOk);
    EXPECT_EQ(driver_.user_mirror_port_set(0, 0, 6, 1, 9, 4), kOk);
    EXPECT_EQ(session(1).destination, 9);
    EXPECT_EQ(session(1).ingress, test::ports({4, 5}));
    EXPECT_EQ(session(1).egress, test::ports({4, 6}));
    EXPECT_EQ(driver_.user_mirror_port_set(0, 0, 4, 1, 9, 0), kOk);
    EXPECT_EQ(session(1).sources(), test::ports({5, 6}));
    EXPECT_FALSE(session(0).is_used());
}

TEST_F(DriverMirror, SessionsAreDisabledAndAskedFor) {
    EXPECT_EQ(driver_.user_check_set_mirror_disable(0, 0, 2, 1), kMirrorMissing);
    EXPECT_EQ(driver_.user_set_mirror_disable(0, 0, 2, 1), kMirrorMissing);
    EXPECT_EQ(driver_.user_set_flow_mirror(0, 0, 2, 9), kOk);
    EXPECT_EQ(session(2).flow_destination, 9);
    EXPECT_EQ(driver_.user_check_set_mirror_disable(0, 0, 2, 1), kOk);
    EXPECT_FALSE(session(2).disabled);
    EXPECT_EQ(driver_.user_set_mirror_disable(0, 0, 2, 5), kOk);
    EXPECT_TRUE(session(2).disabled);
    EXPECT_EQ(driver_.user_check_set_mirror_disable(0, 0, 2, 0), kOk);
    EXPECT_TRUE(session(2).disabled);
    EXPECT_EQ(driver_.user_set_mirror_disable(0, 0, 2, 0), kOk);
    EXPECT_FALSE(session(2).disabled);
}

TEST_F(DriverMirror, InitialisingForgetsAllSessions) {
    ASSERT_EQ(driver_.user_mirror_port_set(0, 0, 4, 0, 9, 6), kOk);
    ASSERT_EQ(driver_.user_set_flow_mirror(0, 0, 3, 9), kOk);
    EXPECT_TRUE(session(0).is_used() && session(3).is_used());
    EXPECT_EQ(driver_.user_mirror_init(0, 0), kOk);
    EXPECT_FALSE(session(0).is_used() || session(3).is_used());
}

TEST_F(DriverMirror, WhatCannotBeIsRefused) {
    EXPECT_EQ(driver_.user_mirror_port_set(0, 0, -1, 0, 9, 6), chip::code(Status::kNoPort));
    EXPECT_EQ(driver_.user_mirror_port_set(0, 0, 4, 0, -1, 0), chip::code(Status::kNoPort));
    EXPECT_EQ(driver_.user_mirror_port_set(0, 0, 4, 0, 4, 2), chip::code(Status::kMirrorDestination));
    EXPECT_EQ(driver_.user_mirror_port_set(0, 0, 4, 0, 9, 1), kBadArgument);
    EXPECT_EQ(driver_.user_set_flow_mirror(0, 0, 0, -1), chip::code(Status::kNoPort));
    for (const uint32_t unknown : {4U, 0xFFFFFFFFU}) {
        EXPECT_EQ(driver_.user_mirror_port_set(0, 0, 4, unknown, 9, 6), kMirrorSession);
        EXPECT_EQ(driver_.user_set_flow_mirror(0, 0, unknown, 9), kMirrorSession);
        EXPECT_EQ(driver_.user_set_mirror_disable(0, 0, unknown, 0), kMirrorSession);
        EXPECT_EQ(driver_.user_check_set_mirror_disable(0, 0, unknown, 0), kMirrorSession);
    }
    EXPECT_FALSE(session(0).is_used());
}

TEST_F(DriverMirror, RegistersKeepWhatIsWritten) {
    for (const uint32_t address : {kInput, kOutput, kDirection}) {
        EXPECT_EQ(read(address), 0U) << address;
    }
    EXPECT_EQ(write(kDirection, 9), kOk);
    EXPECT_EQ(write(kOutput, 0xFFFF0001), kOk);
    EXPECT_EQ(read(kDirection), 9U);
    EXPECT_EQ(read(kOutput), 0xFFFF0001U);
    EXPECT_EQ(read(kInput), 0U);
}

TEST_F(DriverMirror, TheBoardDrivesTheInputsAndSoftwareDoesNot) {
    EXPECT_EQ(chip_.gpio().drive(3, true), Status::kOk);
    EXPECT_EQ(chip_.gpio().drive(31, true), Status::kOk);
    EXPECT_EQ(read(kInput), 0x80000008U);
    EXPECT_EQ(chip_.gpio().drive(31, false), Status::kOk);
    EXPECT_EQ(write(kInput, 0xFF), chip::code(Status::kRegisterReadOnly));
    EXPECT_EQ(read(kInput), 8U);
    EXPECT_EQ(chip_.gpio().drive(32, true), Status::kBadArgument);
    EXPECT_EQ(chip_.gpio().drive(-1, true), Status::kBadArgument);
    EXPECT_EQ(read(kInput), 8U);
}

TEST_F(DriverMirror, OtherRegistersAreNotThere) {
    constexpr int32_t kMissing = chip::code(Status::kRegisterMissing);
    uint32_t value = 99;
    for (const uint32_t address : {0U, 0x1FFCU, 0x2001U, 0x200CU, 0xFFFFFFFFU}) {
        EXPECT_EQ(driver_.user_pci_read(0, 0, address, &value), kMissing);
        EXPECT_EQ(write(address, 1), kMissing);
    }
    EXPECT_EQ(value, 99U);
    EXPECT_EQ(read(kOutput), 0U);
}

}  // namespace mirroring_test
}  // namespace vdevice::driver
