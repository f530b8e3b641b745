// The kernel's bridges, as notifications tell of them and as they are read anew.
#include "switchd/kernel/monitor.h"

#include <linux/if_bridge.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "switchd/kernel/testing/live_fixture.h"

namespace switchd {
namespace monitor_test {

using namespace test;
using testing::ElementsAre;
using testing::Ge;
using testing::SizeIs;

using MonitorTest = LiveTest;

constexpr Mac kMac{2, 0, 0, 0, 0, 1};

/** A process in a network namespace of its own. */
class OtherNamespace {
  public:
    OtherNamespace() {
        EXPECT_EQ(pipe(ready_), 0);
        EXPECT_EQ(pipe(end_), 0);
        child_ = fork();
        if (child_ == 0) {
            close(end_[1]);
            char octet = unshare(CLONE_NEWNET) == 0 ? 'y' : 'n';
            const bool is_told = write(ready_[1], &octet, 1) == 1;
            _exit(is_told && read(end_[0], &octet, 1) == 0 ? 0 : 1);
        }
        char answer = 'n';
        EXPECT_EQ(read(ready_[0], &answer, 1), 1);
        EXPECT_EQ(answer, 'y');
    }
    ~OtherNamespace() {
        for (const int fd : {ready_[0], ready_[1], end_[0], end_[1]}) {
            close(fd);
        }
        waitpid(child_, nullptr, 0);
    }
    OtherNamespace(const OtherNamespace &) = delete;
    OtherNamespace &operator=(const OtherNamespace &) = delete;
    std::string process() const { return std::to_string(child_); }

  private:
    int ready_[2] = {};
    int end_[2] = {};
    pid_t child_ = 0;
};

TEST_F(MonitorTest, BridgesAndTheSettingsOfTheirPorts) {
    KernelMonitor monitor;
    make_bridge("br100", 2,
                "stp_state 0 ageing_time 6000 mcast_snooping 1 mcast_querier 1 mcast_query_response_interval 500");
    run("bridge", "link set dev p1 isolated on learning off flood off mcast_flood off bcast_flood off hairpin on\n");
    read_notifications(monitor);

    const Bridge bridge = link_of(monitor, "br100").bridge.value();
    EXPECT_FALSE(bridge.stp);
    EXPECT_EQ(bridge.ageing_seconds, 60U);
    EXPECT_EQ(bridge.query_response_seconds, 5U);
    EXPECT_TRUE(bridge.multicast_snooping);
    EXPECT_TRUE(bridge.querier);
    const Link &port = link_of(monitor, "p1");
    EXPECT_EQ(port.kind, "veth");
    EXPECT_TRUE(port.up);
    EXPECT_TRUE(port.carrier);
    EXPECT_EQ(port.master, index_of("br100"));
    EXPECT_EQ(port.parent, index_of("h1"));
    BridgePort expected;
    expected.state = PortState::kForwarding;
    EXPECT_EQ(link_of(monitor, "p2").port, expected);
    expected.isolated = true;
    expected.learning = expected.unicast_flood = expected.multicast_flood = expected.broadcast_flood = false;
    expected.hairpin = true;
    EXPECT_EQ(port.port, expected);
    expect_in_step(monitor);

    run("ip", "link set br100 type bridge stp_state 1 ageing_time 10000\nlink set p1 type bridge_slave isolated off\n");
    read_notifications(monitor);
    EXPECT_TRUE(link_of(monitor, "br100").bridge->stp);
    EXPECT_EQ(link_of(monitor, "br100").bridge->ageing_seconds, 100U);
    EXPECT_FALSE(link_of(monitor, "p1").port->isolated);
    expect_in_step(monitor);
    EXPECT_EQ(monitor.counters().resyncs, 1U) << "notifications were enough";
}

TEST_F(MonitorTest, StatesOfTheSpanningTree) {
    KernelMonitor monitor;
    make_bridge("br1", 1, "stp_state 1 forward_delay 200");
    std::vector<PortState> states;
    read_until(monitor, [&] {
        const auto found = monitor.state().links.find(index_of("p1"));
        const bool is_port = found != monitor.state().links.end() && found->second.port.has_value();
        if (is_port && (states.empty() || states.back() != found->second.port->state)) {
            states.push_back(found->second.port->state);
        }
        return !states.empty() && states.back() == PortState::kForwarding;
    });
    ASSERT_THAT(states, SizeIs(Ge(3U)));
    EXPECT_THAT((std::vector<PortState>{states.end() - 3, states.end()}),
                ElementsAre(PortState::kListening, PortState::kLearning, PortState::kForwarding));
    run("ip", "link set h1 down\n");
    read_until(monitor, [&] { return link_of(monitor, "p1").port->state == PortState::kDisabled; });
    EXPECT_FALSE(link_of(monitor, "p1").carrier);
    expect_in_step(monitor);
    EXPECT_EQ(monitor.counters().resyncs, 1U);
}

TEST_F(MonitorTest, AddressesOfEveryKind) {
    KernelMonitor monitor;
    make_bridge("br1", 2);
    run("bridge",
        "fdb add 02:00:00:00:00:01 dev p1 master static\n"
        "fdb add 02:00:00:00:00:02 dev p1 master dynamic\n"
        "fdb add 02:00:00:00:00:03 dev p1 master local\n"
        "fdb add 02:00:00:00:00:04 dev p1 master extern_learn\n"
        "fdb add 02:00:00:00:00:05 dev p1 self\n"
        "fdb add 02:00:00:00:00:06 dev br1 self local\n");
    read_notifications(monitor);
    const auto kind = [&](uint8_t last) {
        return monitor.state().addresses.at({index_of("br1"), 0, {2, 0, 0, 0, 0, last}}).kind;
    };
    EXPECT_EQ(kind(1), Address::Kind::kStatic);
    EXPECT_EQ(kind(2), Address::Kind::kLearned);
    EXPECT_EQ(kind(3), Address::Kind::kLocal);
    EXPECT_EQ(kind(4), Address::Kind::kHardware);
    EXPECT_FALSE(monitor.state().addresses.contains({index_of("br1"), 0, {2, 0, 0, 0, 0, 5}}));
    EXPECT_EQ(kind(6), Address::Kind::kLocal);
    expect_in_step(monitor);

    run("bridge",
        "fdb replace 02:00:00:00:00:01 dev p2 master static\n"
        "fdb del 02:00:00:00:00:02 dev p1 master\n");
    read_notifications(monitor);
    EXPECT_EQ(monitor.state().addresses.at({index_of("br1"), 0, kMac}).interface, index_of("p2"));
    EXPECT_FALSE(monitor.state().addresses.contains({index_of("br1"), 0, {2, 0, 0, 0, 0, 2}}));
    expect_in_step(monitor);

    run("ip", "link set p1 nomaster\n");
    expect_in_step(monitor);
    run("ip", "link set br1 type bridge fdb_flush\n");
    expect_in_step(monitor);
    EXPECT_EQ(monitor.counters().resyncs, 1U);
}

TEST_F(MonitorTest, GroupsAndRouterPorts) {
    KernelMonitor monitor;
    make_bridge("br1", 3, "mcast_igmp_version 3");
    run("bridge",
        "mdb add dev br1 port p1 grp 239.1.1.1 permanent\n"
        "mdb add dev br1 port p2 grp 239.1.1.1 permanent\n"
        "mdb add dev br1 port p2 grp 239.1.1.2 src 192.0.2.1 permanent\n"
        "mdb add dev br1 port p2 grp ff12::5 permanent\n"
        "mdb add dev br1 port p3 grp 01:02:03:04:05:06 permanent\n"
        "mdb add dev br1 port br1 grp 239.1.1.3 temp\n"
        "mdb del dev br1 port p1 grp 239.1.1.1\n");
    run("ip", "link set p3 type bridge_slave mcast_router 2\n");
    read_notifications(monitor);
    const int bridge = index_of("br1");
    const auto &groups = monitor.state().groups;
    EXPECT_THAT(groups.at({bridge, 0, ETH_P_IP, {239, 1, 1, 1}}), ElementsAre(index_of("p2")));
    EXPECT_THAT(groups.at({bridge, 0, ETH_P_IP, {239, 1, 1, 2}}), ElementsAre(index_of("p2")));
    EXPECT_THAT(groups.at({bridge, 0, ETH_P_IP, {239, 1, 1, 3}}), ElementsAre(bridge));
    EXPECT_THAT(groups.at({bridge, 0, 0, {1, 2, 3, 4, 5, 6}}), ElementsAre(index_of("p3")));
    EXPECT_THAT(monitor.state().router_ports.at(bridge), ElementsAre(index_of("p3")));
    expect_in_step(monitor);

    run("ip", "link set p3 type bridge_slave mcast_router 1\nlink set p2 nomaster\n");
    read_notifications(monitor);
    EXPECT_TRUE(monitor.state().router_ports.empty());
    EXPECT_FALSE(monitor.state().groups.contains({bridge, 0, ETH_P_IP, {239, 1, 1, 1}}));
    expect_in_step(monitor);
    EXPECT_EQ(monitor.counters().resyncs, 1U);
}

TEST_F(MonitorTest, APortMovesStraightToAnotherBridge) {
    KernelMonitor monitor;
    make_bridge("br1", 2);
    run("bridge",
        "fdb add 02:00:00:00:00:01 dev p1 master static\n"
        "mdb add dev br1 port p1 grp 239.1.1.1 permanent\n");
    run("ip", "link add br2 type bridge\nlink set br2 up\nlink set p1 type bridge_slave mcast_router 2\n");
    read_notifications(monitor);
    EXPECT_TRUE(monitor.state().addresses.contains({index_of("br1"), 0, kMac}));
    run("ip", "link set p1 master br2\n");
    run("bridge", "fdb add 02:00:00:00:00:01 dev p1 master static\n");
    read_notifications(monitor);
    EXPECT_EQ(link_of(monitor, "p1").master, index_of("br2"));
    EXPECT_EQ(link_of(monitor, "p1").port->state, PortState::kForwarding);
    EXPECT_FALSE(monitor.state().addresses.contains({index_of("br1"), 0, kMac}));
    EXPECT_TRUE(monitor.state().addresses.contains({index_of("br2"), 0, kMac}));
    EXPECT_FALSE(monitor.state().groups.contains({index_of("br1"), 0, ETH_P_IP, {239, 1, 1, 1}}));
    EXPECT_FALSE(monitor.state().router_ports.contains(index_of("br1")));
    expect_in_step(monitor);
    EXPECT_EQ(monitor.counters().resyncs, 1U);
}

TEST_F(MonitorTest, SnoopingThatEndsAndBeginsAgain) {
    KernelMonitor monitor;
    make_bridge("br1", 1);
    run("bridge", "mdb add dev br1 port p1 grp 239.1.1.1 permanent\n");
    expect_in_step(monitor);
    const GroupKey group{index_of("br1"), 0, ETH_P_IP, {239, 1, 1, 1}};
    ASSERT_TRUE(monitor.state().groups.contains(group));
    run("ip", "link set br1 type bridge mcast_snooping 0\n");
    expect_in_step(monitor);
    run("ip", "link set br1 type bridge mcast_snooping 1\n");
    expect_in_step(monitor);
    EXPECT_TRUE(monitor.state().groups.contains(group));
    EXPECT_EQ(monitor.counters().resyncs, 3U) << "some kernels do not list the groups meanwhile";
}

/** An IGMP general query of 192.0.2.9, sent on the interface. */
void send_query(int interface) {
    const std::vector<uint8_t> frame = {
        0x01, 0x00, 0x5E, 0,   0, 1, 2, 0,   0, 0, 0, 9,    0x08, 0x00, 0x46, 0xC0, 0,   0x20, 0,    0, 0, 0, 1,
        2,    0x82, 0x0D, 192, 0, 2, 9, 224, 0, 0, 1, 0x94, 0x04, 0,    0,    0x11, 100, 0xEE, 0x9B, 0, 0, 0, 0};
    const vdevice::UniqueFd fd{socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0)};
    sockaddr_ll place{};
    place.sll_family = AF_PACKET;
    place.sll_ifindex = interface;
    ASSERT_EQ(
        sendto(fd.get(), frame.data(), frame.size(), 0, reinterpret_cast<const sockaddr *>(&place), sizeof(place)),
        static_cast<ssize_t>(frame.size()));
}

TEST_F(MonitorTest, AQuerierThatIsHeardMakesARouterPort) {
    KernelMonitor monitor;
    make_bridge("br1", 1);
    read_notifications(monitor);
    EXPECT_FALSE(link_of(monitor, "br1").bridge->other_querier);
    send_query(index_of("h1"));
    read_until(monitor, [&] { return monitor.state().router_ports.contains(index_of("br1")); });
    EXPECT_TRUE(monitor.refresh_bridges());
    EXPECT_FALSE(monitor.refresh_bridges());
    EXPECT_TRUE(link_of(monitor, "br1").bridge->other_querier);
    EXPECT_FALSE(link_of(monitor, "br1").bridge->other_mld_querier);
    EXPECT_THAT(monitor.state().router_ports.at(index_of("br1")), ElementsAre(index_of("p1")));
    expect_in_step(monitor);
    EXPECT_EQ(monitor.counters().resyncs, 1U);
}

TEST_F(MonitorTest, InterfacesThatAreRenamedMovedAndDeletedInUse) {
    KernelMonitor monitor;
    make_bridge("br1", 3);
    run("bridge",
        "fdb add 02:00:00:00:00:01 dev p1 master static\n"
        "fdb add 02:00:00:00:00:02 dev p2 master static\n"
        "mdb add dev br1 port p2 grp 239.1.1.1 permanent\n");
    read_notifications(monitor);
    const int renamed = index_of("p1");
    const int moved = index_of("p2");
    run("ip", "link set p1 down\nlink set p1 name uplink\nlink set br1 down\nlink set br1 name br200\n");
    read_notifications(monitor);
    EXPECT_EQ(monitor.state().links.at(renamed).name, "uplink");
    EXPECT_EQ(monitor.state().links.at(renamed).master, index_of("br200"));
    expect_in_step(monitor);

    const OtherNamespace other;
    run("ip", "link set p2 netns " + other.process() + "\n");
    read_notifications(monitor);
    EXPECT_FALSE(monitor.state().links.contains(moved));
    EXPECT_FALSE(monitor.state().addresses.contains({index_of("br200"), 0, {2, 0, 0, 0, 0, 2}}));
    // It is told of with the carrier, which its end has lost.
    read_until(monitor, [&] { return link_of(monitor, "h2").parent == 0; });
    expect_in_step(monitor);

    run("ip", "link del uplink\nlink del br200\n");
    read_notifications(monitor);
    EXPECT_TRUE(monitor.state().addresses.empty());
    EXPECT_EQ(link_of(monitor, "p3").master, 0);
    expect_in_step(monitor);
    EXPECT_EQ(monitor.counters().resyncs, 1U);
}

}  // namespace monitor_test
}  // namespace switchd
