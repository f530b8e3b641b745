// VLAN port sets in interface numbers.
#include "tests/support/library_test.h"

namespace {

using ::testing::ElementsAre;

struct Set {
    adp_ports_t word = {};
    explicit Set(std::initializer_list<uint32_t> numbers) {
        for (const uint32_t n : numbers) {
            word[n / 32] |= 1u << n % 32;
        }
    }
    bool operator==(const Set &other) const { return std::equal(word, word + 8, other.word); }
};

class VlanPortSets : public library_test::LibraryTest {
  protected:
    static std::string set_trace(const Set &members, const Set &untagged, uint32_t vlan = 100) {
        EXPECT_EQ(adp_vlan_port_set(vlan, members.word, untagged.word), 0);
        const std::vector<std::string> trace = driver().take();
        return trace.size() == 1 ? trace[0] : "not one call";
    }
};

TEST_F(VlanPortSets, SetTranslatesInterfacesToPorts) {
    EXPECT_EQ(set_trace(Set{1, 2, 26}, Set{2}),
              "user_vlan_port_set(unit=0, zero=0, vid=100, members={4,5,29}, untagged={5})");
}

TEST_F(VlanPortSets, SetCutsTheVlanId) {
    EXPECT_EQ(set_trace(Set{}, Set{}, 0x50064), "user_vlan_port_set(unit=0, zero=0, vid=100, members={}, untagged={})");
}

TEST_F(VlanPortSets, SetBitZeroIsTheCpuPortOnceItsRowExists) {
    ASSERT_EQ(adp_add_cpu_port(0, 0, 0, 30, 0), 0);
    EXPECT_EQ(set_trace(Set{0, 1}, Set{}), "user_vlan_port_set(unit=0, zero=0, vid=100, members={4,30}, untagged={})");
}

TEST_F(VlanPortSets, SetDropsInterfacesWithoutAPort) {
    ASSERT_EQ(adp_add_phy_port(3, 0, 0, 256, 0), 0);
    ASSERT_EQ(adp_add_phy_port(4, 0, 0, 0xFFFFFFFF, 0), 0);
    ASSERT_EQ(adp_add_phy_port(5, 0, 0, 255, 0), 0);
    EXPECT_EQ(set_trace(Set{3, 4, 5, 27, 100, 255}, Set{27}),
              "user_vlan_port_set(unit=0, zero=0, vid=100, members={255}, untagged={})");
    library_test::drop_map();
    EXPECT_EQ(set_trace(Set{0, 1}, Set{1}), "user_vlan_port_set(unit=0, zero=0, vid=100, members={}, untagged={})");
}

TEST_F(VlanPortSets, SetReachesAllOfALargeMap) {
    library_test::make_default_map(255);
    EXPECT_EQ(set_trace(Set{252, 253, 255}, Set{}),
              "user_vlan_port_set(unit=0, zero=0, vid=100, members={255}, untagged={})");
}

TEST_F(VlanPortSets, SetReturnsTheDriversResult) {
    driver().fail_every("user_vlan_port_set", -9);
    const Set none{};
    EXPECT_EQ(adp_vlan_port_set(1, none.word, none.word), -9);
}

TEST_F(VlanPortSets, GetTranslatesPortsToInterfacesInPlace) {
    driver().on("user_vlan_port_get").sets("members", {1u << 4 | 1u << 29 | 1u}).sets("untagged", {1u << 29});
    Set members{};
    Set untagged{};
    EXPECT_EQ(adp_vlan_port_get(0x10007, members.word, untagged.word), 0);
    EXPECT_EQ(members, (Set{0, 1, 26}));
    EXPECT_EQ(untagged, (Set{26}));
    EXPECT_THAT(driver().trace(), ElementsAre("user_vlan_port_get(unit=0, zero=0, vid=7, members={}, untagged={})"));
}

TEST_F(VlanPortSets, GetDropsPortsThatNoRowNames) {
    driver().on("user_vlan_port_get").sets("members", {1u << 1 | 1u << 4, 1u << 3, 0, 0, 0, 0, 0, 1u << 31});
    Set members{};
    Set untagged{9};
    EXPECT_EQ(adp_vlan_port_get(7, members.word, untagged.word), 0);
    EXPECT_EQ(members, (Set{1}));
    EXPECT_EQ(untagged, (Set{6}));  // the driver has not written it: the previous content is translated
}

TEST_F(VlanPortSets, GetTranslatesEvenWhenTheDriverFails) {
    driver().fail_every("user_vlan_port_get", -4);
    Set members{4, 29, 30};
    Set untagged{5};
    EXPECT_EQ(adp_vlan_port_get(7, members.word, untagged.word), -4);
    EXPECT_EQ(members, (Set{1, 26}));
    EXPECT_EQ(untagged, (Set{2}));
}

TEST_F(VlanPortSets, GetDropsInterfacesBeyondTheSet) {
    library_test::make_default_map(300);
    ASSERT_EQ(adp_add_phy_port(1, 0, 0, 1000, 0), 0);  // port 4 now belongs to interface 300 only
    ASSERT_EQ(adp_add_phy_port(300, 0, 0, 4, 0), 0);
    Set members{4};
    Set untagged{};
    EXPECT_EQ(adp_vlan_port_get(7, members.word, untagged.word), 0);
    EXPECT_EQ(members, (Set{}));
}

}  // namespace
