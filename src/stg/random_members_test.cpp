// The map of VLANs against a naive model, after many random operations. The driver's calls are only counted.
#include <map>
#include <random>

#include "stg/testing/support.h"

namespace {

/** A naive model of the map, which also counts the driver calls that each operation makes. */
class Model {
  public:
    struct Counts {
        size_t adds = 0;
        size_t removals = 0;
        size_t states = 0;
        size_t destroyed = 0;

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

TEST_F(RandomMembers, MatchANaiveModel) {
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
