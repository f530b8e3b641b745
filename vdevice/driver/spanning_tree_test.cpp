// The calls on spanning-tree groups: VLANs, states, counts, chunks and list handles.
#include "vdevice/driver/list_handles.h"
#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace spanning_tree_test {

using chip::Status;
using namespace test;

constexpr int32_t kStgMissing = chip::code(Status::kStgMissing);
constexpr int32_t kListUnknown = chip::code(Status::kListUnknown);
constexpr int32_t kVids = 4094;

class DriverStg : public test::DriverTest {
  protected:
    uint32_t state(int32_t stg, int32_t port) {
        uint32_t value = 99;
        EXPECT_EQ(driver_.user_stg_stp_get(0, 0, stg, port, &value), kOk);
        return value;
    }
    uint32_t vlan_count(int32_t stg) {
        uint32_t count = 99;
        EXPECT_EQ(driver_.user_stg_vlan_count_get(0, 0, stg, &count), kOk);
        return count;
    }
    void make(int32_t stg, std::initializer_list<uint32_t> vids) {
        ASSERT_EQ(driver_.user_stg_create_id(0, 0, stg), kOk);
        for (const uint32_t vid : vids) {
            ASSERT_EQ(driver_.user_stg_vlan_add(0, 0, stg, vid), kOk);
        }
    }
};

TEST_F(DriverStg, VlansMoveBetweenGroups) {
    make(2, {100, 200});
    make(3, {200});
    EXPECT_EQ(vlan_count(2), 1U);
    EXPECT_EQ(vlan_count(3), 1U);
    EXPECT_EQ(vlan_count(0), kVids - 2U);
    EXPECT_EQ(driver_.user_stg_vlan_remove(0, 0, 2, 200), chip::code(Status::kStgNotMember));
    EXPECT_EQ(driver_.user_stg_vlan_remove(0, 0, 3, 200), kOk);
    EXPECT_EQ(vlan_count(3), 0U);
    EXPECT_EQ(driver_.user_stg_destroy(0, 0, 2), kOk);
    EXPECT_EQ(vlan_count(0), static_cast<uint32_t>(kVids));
    EXPECT_EQ(driver_.user_stg_destroy(0, 0, 2), kStgMissing);
    EXPECT_EQ(driver_.user_stg_vlan_add(0, 0, 2, 100), kStgMissing);
    EXPECT_EQ(driver_.user_stg_create_id(0, 0, 16), chip::code(Status::kStgRange));
    EXPECT_EQ(driver_.user_stg_create_id(0, 0, 3), chip::code(Status::kStgExists));
    EXPECT_EQ(driver_.user_stg_destroy(0, 0, 0), chip::code(Status::kStgIsDefault));
}

TEST_F(DriverStg, StatesAreReadAsTheyWereSet) {
    make(2, {});
    for (uint32_t value = 0; value <= 4; ++value) {
        EXPECT_EQ(driver_.user_stg_stp_set(0, 0, 2, 4, value), kOk);
        EXPECT_EQ(state(2, 4), value);
        EXPECT_EQ(state(0, 4), 4U);
        EXPECT_EQ(state(2, 5), 4U);
    }
    EXPECT_EQ(state(2, 0), 4U) << "the CPU port forwards";
    uint32_t value = 99;
    EXPECT_EQ(driver_.user_stg_stp_set(0, 0, 2, 4, 5), chip::code(Status::kStgState));
    EXPECT_EQ(driver_.user_stg_stp_set(0, 0, 2, 0, 1), chip::code(Status::kCpuPort));
    EXPECT_EQ(driver_.user_stg_stp_set(0, 0, 2, -1, 1), chip::code(Status::kNoPort));
    EXPECT_EQ(driver_.user_stg_stp_set(0, 0, 3, 4, 1), kStgMissing);
    EXPECT_EQ(driver_.user_stg_stp_get(0, 0, 2, 32, &value), chip::code(Status::kNoPort));
    EXPECT_EQ(driver_.user_stg_stp_get(0, 0, 2, -1, &value), chip::code(Status::kNoPort));
    EXPECT_EQ(driver_.user_stg_stp_get(0, 0, 3, 4, &value), kStgMissing);
    EXPECT_EQ(driver_.user_stg_stp_get(0, 0, -1, 4, &value), chip::code(Status::kStgRange));
    EXPECT_EQ(value, 99U);
}

TEST_F(DriverStg, InitialisingBeginsAnew) {
    make(2, {100});
    ASSERT_EQ(driver_.user_stg_stp_set(0, 0, 0, 4, 1), kOk);
    EXPECT_EQ(driver_.user_stg_init(0, 0), kOk);
    EXPECT_TRUE(chip_.traps().bpdu);
    EXPECT_EQ(state(0, 4), 4U);
    EXPECT_EQ(vlan_count(0), static_cast<uint32_t>(kVids));
    EXPECT_EQ(driver_.user_stg_destroy(0, 0, 2), kStgMissing);
}

TEST_F(DriverStg, TellsItsSize) {
    make(7, {});
    uint32_t value = 99;
    EXPECT_EQ(driver_.user_stg_default_get(0, 0, &value), kOk);
    EXPECT_EQ(value, 0U);
    EXPECT_EQ(driver_.user_stg_max_support_count_get(0, 0, &value), kOk);
    EXPECT_EQ(value, 16U);
    EXPECT_EQ(driver_.user_stg_stg_count_get(0, 0, &value), kOk);
    EXPECT_EQ(value, 2U);
    EXPECT_EQ(driver_.user_stg_vlan_count_get(0, 0, 8, &value), kStgMissing);
}

TEST_F(DriverStg, GroupsComeInChunks) {
    make(3, {});
    make(15, {});
    std::array<int32_t, 4> groups{-7, -7, -7, -7};
    EXPECT_EQ(driver_.user_stg_each_time_list(0, 0, groups.data(), 0, 2), kOk);
    EXPECT_EQ(groups, (std::array<int32_t, 4>{0, 3, -7, -7}));
    EXPECT_EQ(driver_.user_stg_each_time_list(0, 0, groups.data(), 1, 2), kOk);
    EXPECT_EQ(groups, (std::array<int32_t, 4>{15, 3, -7, -7})) << "the last chunk has one group";
    EXPECT_EQ(driver_.user_stg_each_time_list(0, 0, groups.data(), 2, 2), kOk);
    EXPECT_EQ(driver_.user_stg_each_time_list(0, 0, groups.data(), 0xFFFFFFFF, 0xFFFFFFFF), kOk);
    EXPECT_EQ(groups, (std::array<int32_t, 4>{15, 3, -7, -7}));
    EXPECT_EQ(driver_.user_stg_each_time_list(0, 0, groups.data(), 0, 0), kBadArgument);
}

TEST_F(DriverStg, VlansComeInChunks) {
    constexpr uint32_t kChunk = 1024;
    make(2, {4, 4094});
    std::vector<uint16_t> all;
    for (uint32_t index = 0; index * kChunk < kVids; ++index) {
        std::array<uint16_t, kChunk> chunk{};
        ASSERT_EQ(driver_.user_stg_vlan_each_time_list(0, 0, 0, chunk.data(), index, kChunk), kOk);
        all.insert(all.end(), chunk.begin(), chunk.end());
    }
    EXPECT_EQ(all[2], 3);
    EXPECT_EQ(all[3], 5);
    EXPECT_EQ(all[vlan_count(0) - 1], 4093);
    EXPECT_EQ(all[vlan_count(0)], 0);
    std::array<uint16_t, 3> few{};
    EXPECT_EQ(driver_.user_stg_vlan_each_time_list(0, 0, 2, few.data(), 0, 3), kOk);
    EXPECT_EQ(few, (std::array<uint16_t, 3>{4, 4094, 0}));
    EXPECT_EQ(driver_.user_stg_vlan_each_time_list(0, 0, 9, few.data(), 0, 3), kStgMissing);
}

TEST_F(DriverStg, ListsAreGivenBackOnceWithTheirCount) {
    make(2, {100, 200});
    adp_word_t groups = 0;
    adp_word_t vlans = 0;
    int32_t group_count = -1;
    int32_t vlan_count = -1;
    ASSERT_EQ(driver_.user_stg_list(0, 0, &groups, &group_count), kOk);
    ASSERT_EQ(driver_.user_stg_vlan_list(0, 0, 2, &vlans, &vlan_count), kOk);
    EXPECT_EQ(group_count, 2);
    EXPECT_EQ(vlan_count, 2);
    EXPECT_NE(groups, vlans);
    EXPECT_EQ(driver_.user_stg_list_destroy(0, 0, groups, 3), kListUnknown);
    EXPECT_EQ(driver_.user_stg_list_destroy(0, 0, vlans, 2), kListUnknown) << "a list of another kind";
    EXPECT_EQ(driver_.user_stg_list_destroy(0, 0, 0, 0), kListUnknown);
    EXPECT_EQ(driver_.user_stg_list_destroy(0, 0, groups, 2), kOk);
    EXPECT_EQ(driver_.user_stg_list_destroy(0, 0, groups, 2), kListUnknown);
    EXPECT_EQ(driver_.user_stg_vlan_list_destroy(0, 0, vlans, 2), kOk);
    EXPECT_EQ(driver_.user_stg_vlan_list(0, 0, 9, &vlans, &vlan_count), kStgMissing);
}

TEST_F(DriverStg, ListsThatAreNotGivenBackRunOut) {
    std::vector<adp_word_t> handles(ListHandles::kLists);
    int32_t count = 0;
    for (adp_word_t &handle : handles) {
        ASSERT_EQ(driver_.user_stg_list(0, 0, &handle, &count), kOk);
    }
    adp_word_t none = 7;
    EXPECT_EQ(driver_.user_stg_vlan_list(0, 0, 0, &none, &count), chip::code(Status::kTooManyLists));
    EXPECT_EQ(none, 7U);
    EXPECT_EQ(driver_.user_stg_list_destroy(0, 0, handles[5], 1), kOk);
    EXPECT_EQ(driver_.user_stg_vlan_list(0, 0, 0, &none, &count), kOk);
    EXPECT_EQ(count, kVids);
}

}  // namespace spanning_tree_test
}  // namespace vdevice::driver
