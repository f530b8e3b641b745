// The table of reserved addresses: what stands in it at power-on, and where frames to its addresses go.
#include "vdevice/chip/tables/reserved_macs.h"

#include <gtest/gtest.h>

#include "vdevice/chip/testing/chip_fixture.h"

namespace vdevice::chip {
namespace reserved_macs_test {

using namespace test;

constexpr size_t kFlooded = 3;
const Octets kListed = {0x01, 0x80, 0xC2, 0, 0, 0x00};

class ReservedMacsTest : public test::ChipTest {
  protected:
    Status list(uint32_t index, const Octets &mac) { return chip_.reserved_macs().set(index, Mac::at(mac, 0)); }
    size_t copies(const Octets &destination) { return send(kA, destination + station(1) + kPayload).size(); }
};

TEST_F(ReservedMacsTest, TheFirstTenAreInUseAtPowerOn) {
    for (uint32_t index = 0; index < ReservedMacs::kEntries; ++index) {
        const Mac mac = *chip_.reserved_macs().get(index);
        EXPECT_EQ(mac == ReservedMacs::kFree, index >= 10) << index;
        EXPECT_FALSE(mac.is_reserved()) << "left to software";
    }
    EXPECT_EQ(copies({0x01, 0x80, 0xC2, 0, 0, 0x21}), 1U);
    EXPECT_EQ(copies({0x01, 0x80, 0xC2, 0, 0, 0x2A}), kFlooded);
    EXPECT_EQ(copies(kListed), kFlooded);
}

TEST_F(ReservedMacsTest, FramesToAListedAddressGoToTheCpuOnly) {
    ASSERT_EQ(list(63, kListed), Status::kOk);
    EXPECT_EQ(send(kA, kListed + station(1) + kPayload),
              (std::vector<Sent>{{kCpu, kListed + station(1) + test::receive_tag(kA) + test::vlan_tag(1) + kPayload}}));
    EXPECT_EQ(chip_.macs().size(), 0U);
    ASSERT_EQ(list(63, Octets(6, 0)), Status::kOk);
    EXPECT_EQ(copies(kListed), kFlooded);
}

TEST_F(ReservedMacsTest, NeitherVlanNorLearningModeNorIsolationHoldThemUp) {
    ASSERT_EQ(list(10, kListed), Status::kOk);
    ASSERT_EQ(chip_.vlans().set_ports(1, PortSet{}, PortSet{}), Status::kOk);
    ASSERT_EQ(chip_.set_egress(kA, PortSet{}), Status::kOk);
    ASSERT_EQ(change(kA, [](Port &port) { port.learning = *find_learn_mode(0); }), Status::kOk);
    EXPECT_EQ(copies(kListed), 1U);
    EXPECT_EQ(send(kA, kListed + station(1) + test::vlan_tag(99) + kPayload).size(), 1U);
}

TEST_F(ReservedMacsTest, UnicastAddressesCanBeListed) {
    ASSERT_EQ(list(10, station(9)), Status::kOk);
    EXPECT_EQ(copies(station(9)), 1U);
    EXPECT_EQ(copies(station(8)), kFlooded);
}

TEST_F(ReservedMacsTest, AnAddressBetweenListedOnesIsNotListed) {
    ASSERT_EQ(list(10, station(1)), Status::kOk);
    ASSERT_EQ(list(63, station(9)), Status::kOk);
    EXPECT_EQ(copies(station(9)), 1U);
    for (uint8_t number = 2; number < 9; ++number) {
        EXPECT_EQ(copies(station(number)), kFlooded) << int{number};
    }
    ASSERT_EQ(list(63, station(5)), Status::kOk);
    EXPECT_EQ(copies(station(5)), 1U);
    EXPECT_EQ(copies(station(9)), kFlooded) << "no longer listed";
    EXPECT_EQ(copies({0x01, 0x80, 0xC2, 0, 0, 0x21}), 1U) << "still listed";
}

TEST_F(ReservedMacsTest, AFreeEntryListsNothing) {
    EXPECT_EQ(copies(Octets(6, 0)), kFlooded);
}

TEST_F(ReservedMacsTest, TheCpusOwnAreSwitched) {
    ASSERT_EQ(list(10, kListed), Status::kOk);
    EXPECT_EQ(send(kCpu, kListed + station(1) + test::transmit_tag(1, 0) + kPayload).size(), kFlooded);
}

TEST_F(ReservedMacsTest, OtherEntriesAreNotThere) {
    EXPECT_EQ(list(64, kListed), Status::kReservedIndex);
    EXPECT_EQ(list(0xFFFFFFFF, kListed), Status::kReservedIndex);
    EXPECT_FALSE(chip_.reserved_macs().get(64));
    EXPECT_EQ(copies(kListed), kFlooded);
}

}  // namespace reserved_macs_test
}  // namespace vdevice::chip
