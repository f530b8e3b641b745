// VLANs joining and leaving groups, and the map of them.
#include <map>
#include <random>

#include "stg/test_support.h"

namespace {

using stg_test::calls;
using stg_test::releases;
using stg_test::table_bytes;
using stg_test::vlan_add;
using stg_test::vlan_remove;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr uint32_t kNoSuchVlans[] = {4096, 4097, 0x8000, 0xFFFF, 0x11000, 0xFFFFFFFF};

class MstiMember : public stg_test::StgTest {};

TEST_F(MstiMember, OfNoGroupIsJustAdded) {
    for (const uint32_t vlan : {0u, 1u, 100u, 4094u, 4095u}) {
        start_over();
        EXPECT_EQ(adp_add_msti_member(2, vlan), 0);
        EXPECT_THAT(driver().trace(), ElementsAre(vlan_add(2, vlan)));
        EXPECT_EQ(map(), map_with({{vlan, 2}}));
    }
}

TEST_F(MstiMember, MovedToAnotherGroupLeavesTheOldOneFirst) {
    ASSERT_EQ(adp_add_msti_member(2, 100), 0);
    EXPECT_EQ(driver().take(), calls(vlan_add(2, 100)));
    EXPECT_EQ(adp_add_msti_member(3, 100), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(releases(2), vlan_remove(2, 100), vlan_add(3, 100))));
    EXPECT_EQ(map(), map_with({{100, 3}}));
}

TEST_F(MstiMember, AddedToItsOwnGroupLeavesItFirst) {
    set_map({{100, 2}, {101, 2}});
    EXPECT_EQ(adp_add_msti_member(2, 100), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(releases(2), vlan_remove(2, 100), vlan_add(2, 100))));
    EXPECT_EQ(map(), map_with({{100, 2}, {101, 2}}));
}

TEST_F(MstiMember, AddedToGroupZeroLeavesItsGroup) {
    set_map({{100, 2}});
    EXPECT_EQ(adp_add_msti_member(0, 100), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(releases(2), vlan_remove(2, 100), vlan_add(0, 100))));
    EXPECT_EQ(map(), map_with({}));
}

TEST_F(MstiMember, IsAVlanIdOfSixteenBits) {
    EXPECT_EQ(adp_add_msti_member(2, 0x10064), 0);
    EXPECT_EQ(driver().take(), calls(vlan_add(2, 100)));
    EXPECT_EQ(map(), map_with({{100, 2}}));
    EXPECT_EQ(adp_del_msti_member(2, 0xFFFF0064), 0);
    EXPECT_EQ(driver().take(), calls(releases(2), vlan_remove(2, 100)));
    EXPECT_EQ(map(), map_with({}));
}

TEST_F(MstiMember, GroupIsCutInTheMapOnly) {
    EXPECT_EQ(adp_add_msti_member(0x10005, 100), 0);
    EXPECT_EQ(driver().take(), calls(vlan_add(0x10005, 100)));
    EXPECT_EQ(map(), map_with({{100, 5}}));
    EXPECT_EQ(adp_add_msti_member(6, 100), 0);
    EXPECT_EQ(driver().take(), calls(releases(5), vlan_remove(5, 100), vlan_add(6, 100)));
}

TEST_F(MstiMember, OfTheHighestGroupLeavesIt) {
    EXPECT_EQ(adp_add_msti_member(INT16_MAX, 100), 0);
    EXPECT_EQ(driver().take(), calls(vlan_add(INT16_MAX, 100)));
    EXPECT_EQ(adp_add_msti_member(6, 100), 0);
    EXPECT_EQ(driver().take(), calls(releases(INT16_MAX), vlan_remove(INT16_MAX, 100), vlan_add(6, 100)));
}

TEST_F(MstiMember, OfAGroupStoredAsNegativeOrZeroLeavesNothing) {
    const struct {
        int32_t stg;
        int16_t stored;
    } groups[] = {{-1, -1}, {0x8000, INT16_MIN}, {0xFFFF, -1}, {0x10000, 0}, {INT32_MIN, 0}, {INT32_MAX, -1}};
    for (const auto &[stg, stored] : groups) {
        start_over();
        EXPECT_EQ(adp_add_msti_member(stg, 100), 0);
        EXPECT_EQ(map(), map_with({{100, stored}}));
        EXPECT_EQ(adp_add_msti_member(6, 100), 0);
        EXPECT_THAT(driver().trace(), ElementsAre(vlan_add(stg, 100), vlan_add(6, 100)));
    }
}

TEST_F(MstiMember, RemovedIsInNoGroupWhicheverItWasIn) {
    set_map({{100, 7}, {101, 5}});
    EXPECT_EQ(adp_del_msti_member(5, 100), 0);
    EXPECT_THAT(driver().trace(), ElementsAreArray(calls(releases(5), vlan_remove(5, 100))));
    EXPECT_EQ(map(), map_with({{101, 5}}));
}

TEST_F(MstiMember, RemovedFromAnyGroupNumberTellsTheDriver) {
    for (const int32_t stg : {0, -1, 0x10005, INT32_MIN}) {
        EXPECT_EQ(adp_del_msti_member(stg, 4095), 0);
        EXPECT_EQ(driver().take(), calls(releases(stg), vlan_remove(stg, 4095)));
    }
}

TEST_F(MstiMember, ReleasesThePortsThatTheMapHas) {
    library_test::make_default_map(2);
    std::vector<int> ports(library_test::kUserPorts, -1);
    ports[0] = 4;
    ports[1] = 5;
    EXPECT_EQ(adp_del_msti_member(5, 100), 0);
    EXPECT_EQ(driver().trace(), calls(stg_test::state_sets(5, ports, 4), vlan_remove(5, 100)));
}

TEST_F(MstiMember, IsStoredEvenWhenTheDriverFails) {
    for (const int32_t failure : stg_test::kFailures) {
        start_over();
        driver().fail_every("user_stg_vlan_add", failure);
        EXPECT_EQ(adp_add_msti_member(2, 100), failure);
        EXPECT_EQ(map(), map_with({{100, 2}}));
        driver().fail_every("user_stg_vlan_remove", failure);
        EXPECT_EQ(adp_del_msti_member(2, 100), failure);
        EXPECT_EQ(map(), map_with({}));
    }
}

TEST_F(MstiMember, MoveGoesOnWhicheverCallFails) {
    const agg_test::Trace whole = calls(releases(2), vlan_remove(2, 100), vlan_add(3, 100));
    for (std::size_t failing = 0; failing < whole.size(); ++failing) {
        for (const int32_t failure : stg_test::kFailures) {
            start_over();
            set_map({{100, 2}, {101, 2}});
            driver().fail_call(failing, failure);
            EXPECT_EQ(adp_add_msti_member(3, 100), failing == whole.size() - 1 ? failure : 0);
            EXPECT_EQ(driver().trace(), whole);
            EXPECT_EQ(map(), map_with({{100, 3}, {101, 2}}));
        }
    }
}

TEST_F(MstiMember, RemovalGoesOnWhicheverCallFails) {
    const agg_test::Trace whole = calls(releases(2), vlan_remove(2, 100));
    for (std::size_t failing = 0; failing < whole.size(); ++failing) {
        start_over();
        set_map({{100, 2}, {101, 2}});
        driver().fail_call(failing, -7);
        EXPECT_EQ(adp_del_msti_member(2, 100), failing == whole.size() - 1 ? -7 : 0);
        EXPECT_EQ(driver().trace(), whole);
        EXPECT_EQ(map(), map_with({{101, 2}}));
    }
}

TEST_F(MstiMember, IsRefusedBeyondTheMap) {
    std::fill(aiVlanStg, aiVlanStg + ADP_VLANS, int16_t{7});
    const std::string before = table_bytes();
    for (const uint32_t vlan : kNoSuchVlans) {
        EXPECT_EQ(adp_add_msti_member(2, vlan), -1) << vlan;
        EXPECT_EQ(adp_del_msti_member(2, vlan), -1) << vlan;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(table_bytes(), before);
}

/** The map as its description has it, and how many calls it says the driver gets. */
class Model {
  public:
    struct Counts {
        std::size_t adds = 0;
        std::size_t removals = 0;
        std::size_t states = 0;
        std::size_t destroyed = 0;

        bool operator==(const Counts &) const = default;
    };

    void add(int32_t stg, uint32_t vlan) {
        if (group_of(vlan) > 0) {
            remove(vlan);
        }
        // The low 16 bits, read as a signed number.
        const auto low = static_cast<int32_t>(static_cast<uint32_t>(stg) % 65536);
        groups_[vlan] = low < 32768 ? low : low - 65536;
        ++counts_.adds;
    }

    void remove(uint32_t vlan) {
        groups_.erase(vlan);
        release();
        ++counts_.removals;
    }

    void remove_all(int32_t stg) {
        counts_.removals +=
            std::erase_if(groups_, [stg](const auto &row) { return row.second != 0 && row.second == stg; });
        release();
    }

    void destroy(int32_t stg, bool is_refused) {
        if (stg != 0) {
            ++counts_.destroyed;
            if (!is_refused) {
                remove_all(stg);
            }
        }
    }

    [[nodiscard]] int32_t group_of(uint32_t vlan) const {
        const auto row = groups_.find(vlan);
        return row == groups_.end() ? 0 : row->second;
    }

    [[nodiscard]] const Counts &counts() const { return counts_; }

  private:
    void release() { counts_.states += library_test::kUserPorts; }

    std::map<uint32_t, int32_t> groups_;
    Counts counts_;
};

class RandomMembers : public stg_test::StgTest {
  protected:
    static constexpr uint32_t kOperations = 100000;
    static constexpr uint32_t kBetweenWholeComparisons = 1000;

    void SetUp() override {
        StgTest::SetUp();
        driver().record(false);
        driver().on("user_stg_destroy").does([this](recording::Arguments &) { return is_refused_ ? -5 : 3; });
        driver().on("user_stg_vlan_add").does([](recording::Arguments &) { return 11; });
        driver().on("user_stg_vlan_remove").does([](recording::Arguments &) { return -12; });
    }

    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random_()) % limit; }

    /** Mostly few groups and VLANs, so that they meet often; sometimes any at all. */
    int32_t some_group() {
        static constexpr int32_t kOdd[] = {0,       -1,      INT16_MAX, INT16_MIN, 0x8000,
                                           0x10000, 0x10003, 0xFFFF,    INT32_MAX, INT32_MIN};
        return below(4) == 0 ? kOdd[below(std::size(kOdd))] : static_cast<int32_t>(below(17));
    }
    uint32_t some_vlan() {
        const uint32_t vlan = below(2) == 0 ? below(32) : below(ADP_VLANS);
        return vlan | (below(4) == 0 ? below(65536) << 16 : 0);
    }

    void operate() {
        const int32_t stg = some_group();
        const uint32_t vlan = some_vlan();
        const uint32_t choice = below(256);
        if (choice < 2) {
            is_refused_ = choice == 0;
            model_.destroy(stg, is_refused_);
            EXPECT_EQ(adp_delete_mstp_instance(stg), stg == 0 ? 0 : (is_refused_ ? -5 : 3));
        } else if (choice == 2) {
            model_.remove_all(stg);
            EXPECT_EQ(adp_del_msti_all_member(stg), 0);
        } else if (choice < 64) {
            model_.remove(vlan % 65536);
            EXPECT_EQ(adp_del_msti_member(stg, vlan), -12);
        } else {
            model_.add(stg, vlan % 65536);
            EXPECT_EQ(adp_add_msti_member(stg, vlan), 11);
        }
        EXPECT_EQ(aiVlanStg[vlan % 65536], model_.group_of(vlan % 65536));
    }

    void compare_all() const {
        for (uint32_t vlan = 0; vlan < ADP_VLANS; ++vlan) {
            ASSERT_EQ(aiVlanStg[vlan], model_.group_of(vlan)) << vlan;
        }
        const Model::Counts seen{driver().count("user_stg_vlan_add"), driver().count("user_stg_vlan_remove"),
                                 driver().count("user_stg_stp_set"), driver().count("user_stg_destroy")};
        EXPECT_EQ(seen, model_.counts());
    }

    std::mt19937 random_{20260711};
    Model model_;
    bool is_refused_ = false;
};

TEST_F(RandomMembers, AreWhereANaiveModelHasThem) {
    for (uint32_t done = 0; done < kOperations; ++done) {
        operate();
        if (done % kBetweenWholeComparisons == 0) {
            compare_all();
        }
        ASSERT_FALSE(HasFailure()) << "after operation " << done;
    }
    compare_all();
    EXPECT_GT(driver().count("user_stg_vlan_remove"), kOperations / 4);  // the members did meet
}

}  // namespace
