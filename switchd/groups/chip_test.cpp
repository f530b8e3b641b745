// Frames through a chip that libadp drives: what members let pass at every moment.
#include <adp/adp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

#include "switchd/groups/testing/chip_calls.h"
#include "switchd/groups/testing/stage.h"
#include "vdevice/chip/testing/frame_builder.h"
#include "vdevice/chip/testing/recording_sink.h"

namespace switchd {
namespace chip_test {

using namespace test;
using namespace vdevice::chip::test;
using Ports = std::set<uint32_t>;
using vdevice::chip::Switch;

constexpr uint32_t kVlan = 100;
constexpr uint32_t kHost = 20;
constexpr uint32_t kUserPorts = 26;

/** A device with a VLAN of one host and the group's members in use; the mirror is the test's. */
class GroupsOnChip : public testing::Test {
  protected:
    GroupsOnChip() {
        use_driver(&driver_);
        make_port_map();
        adp_modules_init();
        const adp_ports_t none = {};
        EXPECT_EQ(adp_vlan_port_set(1, none, none), ADP_OK);
        EXPECT_EQ(adp_vlan_create(kVlan), ADP_OK);
        for (uint32_t port = 1; port <= kUserPorts; ++port) {
            EXPECT_EQ(adp_intf_pivd_set(port, kVlan), ADP_OK);
        }
        chip_.set_link(Switch::kCpuPort, true);
        chip_.set_link(chip_port(kHost), true);
        stage_.links_by([this](uint32_t port, bool is_up) { chip_.set_link(chip_port(port), is_up); });
        stage_.mirror_by([this] { mirror(); });
    }

    ~GroupsOnChip() override {
        watch_calls({});
        use_driver(nullptr);
    }

    GroupsOnChip(const GroupsOnChip &) = delete;
    GroupsOnChip &operator=(const GroupsOnChip &) = delete;

    /** As a new process has it: libadp's tables are empty. */
    static void make_port_map() {
        std::fill_n(agg_info, ADP_AGG_GROUPS, adp_agg_record_t{});
        std::fill_n(agg_manage_intf, ADP_AGG_GROUPS, 0U);
        for (auto &members : agg_standby_members) {
            members[0] = members[1] = 0;
        }
        std::free(intf_to_phy_port);
        std::free(intf_map_trunk);
        intf_to_phy_port = nullptr;
        intf_map_trunk = nullptr;
        EXPECT_EQ(adp_set_max_phy_port_num(kUserPorts), ADP_OK);
        EXPECT_EQ(adp_add_cpu_port(0, 0, 0, 0, 0), ADP_OK);
        for (uint32_t port = 1; port <= kUserPorts; ++port) {
            EXPECT_EQ(adp_add_phy_port(port, 0, 0, static_cast<uint32_t>(chip_port(port)), 0), ADP_OK);
        }
    }

    static int chip_port(uint32_t port) { return *vdevice::driver::Board{}.chip_port(port); }

    void mirror() {
        const Ports idle = stage_.groups().idle_members();
        adp_ports_t members = {1U << kHost};
        for (const auto &[number, group] : stage_.groups().status()) {
            for (const auto &[port, status] : group.members) {
                members[0] |= idle.contains(port) ? 0 : 1U << port;
            }
        }
        EXPECT_EQ(adp_vlan_port_set(kVlan, members, members), ADP_OK);
    }

    /** The user ports that a broadcast leaves by; 0 is the CPU. */
    std::vector<uint32_t> ways(uint32_t from) {
        chip_.receive(now_, chip_port(from), kBroadcast + station(static_cast<uint8_t>(from)) + kPayload);
        std::vector<uint32_t> list;
        for (const auto &[port, frame] : sink_.take()) {
            list.push_back(static_cast<uint32_t>(vdevice::driver::Board{}.user_port(port).value_or(0)));
        }
        return list;
    }

    /** A frame leaves once at most by the group, and nothing that came from it returns to it. */
    void expect_no_loop() {
        const auto from_host = ways(kHost);
        EXPECT_LE(from_host.size(), 1U);
        for (const uint32_t port : members_) {
            for (const uint32_t way : ways(port)) {
                EXPECT_EQ(way, kHost) << "from port " << port;
            }
        }
        ++looks_;
    }

    /** Looks at the frames after each driver call, too. */
    void watch() {
        watch_calls([this] { expect_no_loop(); });
    }

    void use(const std::vector<uint32_t> &ports) {
        members_ = ports;
        stage_.plug(ports);
        stage_.configure({{1, lacp_group(ports)}});
        stage_.join_partner(ports);
        stage_.run(seconds(3));
        ASSERT_EQ(stage_.groups().idle_members(), Ports{});
    }

    Ports in_trunk() const {
        Ports ports;
        const auto *trunk = chip_.trunks().find(0);
        for (const int port : trunk == nullptr ? std::vector<int>{} : trunk->members) {
            ports.insert(static_cast<uint32_t>(*vdevice::driver::Board{}.user_port(port)));
        }
        return ports;
    }

    const lacp::Frame lacp_frame_ = lacp::frame_of(lacp::Lacpdu{}, kPartnerSystem.mac);
    RecordingSink sink_;
    Switch chip_{sink_};
    vdevice::chip::Time now_{};
    vdevice::driver::Driver driver_{chip_, vdevice::driver::Board{}, [this] { return now_; }};
    Stage stage_;
    std::vector<uint32_t> members_;
    size_t looks_ = 0;
};

TEST_F(GroupsOnChip, IdleMembersForwardNothingButHearLacp) {
    members_ = {1, 2};
    stage_.plug(members_);
    stage_.configure({{1, lacp_group(members_)}});
    EXPECT_TRUE(ways(kHost).empty());
    EXPECT_TRUE(ways(1).empty());
    chip_.receive(now_, chip_port(2), Octets(lacp_frame_.begin(), lacp_frame_.end()));
    const auto sent = sink_.take();
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(sent[0].first, Switch::kCpuPort);
}

TEST_F(GroupsOnChip, MembersInUseCarryEachFrameOnce) {
    use({1, 2, 3});
    EXPECT_EQ(in_trunk(), (Ports{1, 2, 3}));
    EXPECT_EQ(ways(kHost).size(), 1U);
    for (const uint32_t port : members_) {
        EXPECT_EQ(ways(port), std::vector<uint32_t>{kHost});
    }
}

TEST_F(GroupsOnChip, NothingLoopsWhileMembersComeAndGo) {
    watch();
    use({1, 2, 3, 4});
    std::mt19937 random(7);
    for (int i = 0; i < 400; ++i) {
        const auto port = static_cast<uint32_t>(1 + random() % 4);
        const auto number = static_cast<uint16_t>(port);
        switch (random() % 3) {
            case 0:
                stage_.set_link(port, random() % 2 == 0);
                break;
            case 1:
                stage_.partner().remove_port(number, stage_.now());
                break;
            default:
                stage_.join_partner({port}, random() % 4 == 0 ? 51 : kPartnerKey);
        }
        stage_.settle();
        expect_no_loop();
        stage_.run(milliseconds(random() % 3000));
    }
    EXPECT_GT(looks_, 1000U);
}

TEST_F(GroupsOnChip, ASuccessorDoesNotInterruptTheTrunk) {
    use({1, 2, 3});
    const auto way = ways(kHost);
    watch_calls([&] {
        EXPECT_EQ(in_trunk(), (Ports{1, 2, 3}));
        EXPECT_EQ(ways(kHost), way);
        ++looks_;
    });
    const SavedGroups saved = stage_.groups().saved();
    stage_.run(milliseconds(900));
    make_port_map();
    stage_.restart(*saved_of(text_of(saved)));
    stage_.configure({{1, lacp_group({1, 2, 3})}});
    stage_.run(seconds(20));
    EXPECT_GT(looks_, 5U);
    EXPECT_EQ(stage_.groups().idle_members(), Ports{});
}

TEST_F(GroupsOnChip, ASuccessorThatKnowsNothingMakesNoLoop) {
    use({1, 2, 3});
    watch();
    make_port_map();
    stage_.restart({});
    stage_.configure({{1, lacp_group({1, 2})}});
    stage_.run(seconds(4));
    EXPECT_EQ(in_trunk(), (Ports{1, 2}));
    EXPECT_GT(looks_, 5U);
}

TEST_F(GroupsOnChip, ASuccessorTakesPortsFromAGroupThatIsNoLongerConfigured) {
    use({1, 2, 3});
    watch();
    const SavedGroups saved = stage_.groups().saved();
    make_port_map();
    stage_.restart(saved);
    stage_.configure({{2, static_group({1, 2})}});
    EXPECT_EQ(chip_.trunks().find(0), nullptr);
    ASSERT_NE(chip_.trunks().find(1), nullptr);
    EXPECT_EQ(chip_.trunks().find(1)->members, (std::vector<int>{chip_port(1), chip_port(2)}));
    EXPECT_EQ(stage_.groups().status()[2].fault, "");
    EXPECT_EQ(ways(kHost).size(), 1U);
}

TEST_F(GroupsOnChip, BalancingOutlivesATrunkWithoutLinks) {
    members_ = {1, 2};
    auto settings = static_group({1, 2});
    settings.balance = ADP_BALANCE_SRC_DST_IP;
    stage_.plug({1, 2});
    stage_.configure({{1, settings}});
    EXPECT_EQ(chip_.trunks().find(0)->balance, 6U);
    watch();
    stage_.set_link(1, false);
    stage_.set_link(2, false);
    EXPECT_EQ(in_trunk(), Ports{});
    EXPECT_EQ(chip_.trunks().find(0)->balance, 6U);
    stage_.set_link(1, true);
    EXPECT_EQ(in_trunk(), (Ports{1, 2}));
    EXPECT_EQ(ways(kHost), std::vector<uint32_t>{1});
}

TEST_F(GroupsOnChip, NineMembersAreMoreThanTheChipTakes) {
    use({1, 2, 3, 4, 5, 6, 7, 8});
    watch();
    auto nine = lacp_group({1, 2, 3, 4, 5, 6, 7, 8, 9});
    stage_.plug({9});
    stage_.configure({{1, nine}});
    members_.push_back(9);
    stage_.join_partner({9});
    stage_.run(seconds(5));
    EXPECT_EQ(in_trunk(), (Ports{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(stage_.groups().idle_members(), Ports{9});
    nine.members[9] = 1;
    stage_.configure({{1, nine}});
    stage_.run(seconds(5));
    EXPECT_EQ(in_trunk(), (Ports{1, 2, 3, 4, 5, 6, 7, 9}));
    EXPECT_EQ(stage_.groups().status()[1].fault, "");
}

}  // namespace chip_test
}  // namespace switchd
