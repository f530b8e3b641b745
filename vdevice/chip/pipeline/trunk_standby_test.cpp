// Ports that the software counts among a trunk's members, and that wait to be some.
#include <gtest/gtest.h>

#include <vector>

#include "vdevice/chip/testing/trunk_fixture.h"

namespace vdevice::chip {
namespace trunk_standby_test {

using namespace std::chrono_literals;
using namespace test;

class Standby : public test::TrunkTest {
  protected:
    // What the software does when member 13 loses its link: the chip's members are those with a link, and no more.
    void lose_one() {
        make_trunk();
        ASSERT_EQ(chip_.set_trunk_configured(kTrunk, kMembers), Status::kOk);
        chip_.set_link(13, false);
        ASSERT_EQ(chip_.set_trunk(kTrunk, {10, 11, 12}), Status::kOk);
        chip_.set_link(13, true);
    }
};

TEST_F(Standby, AnEmptiedTrunkKeepsItsPorts) {
    lose_one();
    for (const int port : kMembers) {
        chip_.set_link(port, false);
    }
    ASSERT_EQ(chip_.destroy_trunk(kTrunk), Status::kOk);
    ASSERT_EQ(chip_.create_trunk(kTrunk), Status::kOk);
    chip_.set_link(10, true);
    EXPECT_EQ(outputs(kA, kBroadcast + station(1) + kPayload), (std::vector<int>{kCpu, kB, kC}));
    EXPECT_EQ(chip_.trunk_of(10), kTrunk);
}

TEST_F(Standby, ADestroyedTrunkFreesItsPorts) {
    lose_one();
    ASSERT_EQ(chip_.destroy_trunk(kTrunk), Status::kOk);
    EXPECT_EQ(outputs(kA, kBroadcast + station(1) + kPayload).size(), 7U);
    ASSERT_EQ(chip_.create_trunk(kTrunk), Status::kOk);
    EXPECT_EQ(outputs(kA, kBroadcast + station(1) + kPayload).size(), 7U) << "the new one has no members";
}

TEST_F(Standby, APortThatLeavesTakesItsAddressesAlong) {
    make_trunk();
    ASSERT_EQ(chip_.set_trunk_configured(kTrunk, kMembers), Status::kOk);
    send(13, kBroadcast + station(1) + kPayload);
    send(12, kBroadcast + station(2) + kPayload);
    ASSERT_EQ(chip_.set_trunk(kTrunk, {10, 11, 12}), Status::kOk);
    ASSERT_NE(find(1), nullptr);
    ASSERT_EQ(chip_.set_trunk_configured(kTrunk, {10, 11, 12}), Status::kOk);
    EXPECT_EQ(find(1), nullptr);
    EXPECT_EQ(find(2)->trunk, kTrunk);
    EXPECT_EQ(chip_.trunk_of(13), TrunkTable::kNone);
    EXPECT_EQ(outputs(13, kBroadcast + station(3) + kPayload).size(), 5U) << "a port of its own again";
}

}  // namespace trunk_standby_test
}  // namespace vdevice::chip
