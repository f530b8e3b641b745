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

TEST_F(ReservedMacsTest, FramesToAListedAddressGoToTheCpuOnly) {
    ASSERT_EQ(list(63, kListed), Status::kOk);
    EXPECT_EQ(send(kA, kListed + station(1) + kPayload),
              (std::vector<Sent>{{kCpu, kListed + station(1) + test::receive_tag(kA) + test::vlan_tag(1) + kPayload}}));
    EXPECT_EQ(chip_.macs().size(), 0U);
    ASSERT_EQ(list(63, Octets(6, 0)), Status::kOk);
    EXPECT_EQ(copies(kListed), kFlooded);
}

TEST_F(ReservedMacsTest, OtherEntriesAreNotThere) {
    EXPECT_EQ(list(64, kListed), Status::kReservedIndex);
    EXPECT_EQ(list(0xFFFFFFFF, kListed), Status::kReservedIndex);
    EXPECT_FALSE(chip_.reserved_macs().get(64));
    EXPECT_EQ(copies(kListed), kFlooded);
}

}  // namespace reserved_macs_test
}  // namespace vdevice::chip
