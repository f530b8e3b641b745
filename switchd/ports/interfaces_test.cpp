// Interfaces of both kinds with the kernel: made, adopted, refused, removed.
#include "switchd/ports/interfaces.h"

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "switchd/ports/testing/interface_fixture.h"

namespace switchd {
namespace interfaces_test {

using namespace test;
using ::testing::HasSubstr;

constexpr PortName kOne{1, 0};
constexpr PortName kTwo{2, 0};
constexpr PortName kTagged{2, 100};
constexpr PortName kGroup{0x10000001, 0};

using InterfacesTest = InterfaceTest;

TEST_P(InterfacesTest, EachHasItsNameAddressAndMtuAndNoCarrier) {
    want({kOne, kTwo, kTagged, kGroup});
    for (const PortName &port : {kOne, kTwo, kTagged, kGroup}) {
        const auto link = find_link(name_of(port));
        ASSERT_TRUE(link) << name_of(port);
        EXPECT_EQ(link->index, at(port).index());
        EXPECT_EQ(interfaces_->find(link->index), &at(port));
        EXPECT_FALSE(link->up);
        ip("link set " + name_of(port) + " up");
        EXPECT_FALSE(find_link(name_of(port))->carrier);
    }
    const auto shows = [](const std::string &name, const std::string &text) {
        return std::system(("ip link show " + name + " | grep -q '" + text + "'").c_str()) == 0;
    };
    EXPECT_TRUE(shows("swp1", "02:00:00:00:01:01"));
    EXPECT_TRUE(shows("swp2", "02:00:00:00:01:02"));
    EXPECT_TRUE(shows("swp2.100", "02:00:00:00:01:02"));
    EXPECT_TRUE(shows("agg1", "02:00:00:00:01:1b"));
    EXPECT_TRUE(shows("swp1", "mtu 1500"));
    EXPECT_EQ(interfaces_->find(0), nullptr);
    EXPECT_EQ(interfaces_->find(PortName{3, 0}), nullptr);
}

TEST_P(InterfacesTest, CarrierFollowsTheLinkBothWays) {
    want({kTwo, kTagged});
    ip("link set swp2 up");
    ip("link set swp2.100 up");
    const auto has_carrier = [](const char *name, bool wanted) {
        return comes_true([&] { return find_link(name)->carrier == wanted; });
    };
    for (int i = 0; i < 3; ++i) {
        interfaces_->set_carrier(2, true);
        EXPECT_TRUE(has_carrier("swp2", true));
        EXPECT_TRUE(has_carrier("swp2.100", true));
        interfaces_->set_carrier(2, false);
        EXPECT_TRUE(has_carrier("swp2", false));
        EXPECT_TRUE(has_carrier("swp2.100", false));
    }
    interfaces_->set_carrier(1, true);
    want({kOne, kTwo});
    ip("link set swp1 up");
    EXPECT_TRUE(has_carrier("swp1", true)) << "it was said before there was one";
    EXPECT_TRUE(has_carrier("swp2", false));
}

TEST_P(InterfacesTest, TheNextDaemonAdoptsThemAsTheyAre) {
    want({kOne, kTwo});
    const int index = at(kOne).index();
    ip("link set swp1 name uplink");
    ip("link set uplink mtu 1400 address 02:00:00:00:07:07 up");
    interfaces_->set_carrier(1, true);
    EXPECT_TRUE(comes_true([] { return find_link("uplink")->carrier; }));
    kill();
    start();
    if (GetParam() == InterfaceKind::kVeth) {
        EXPECT_TRUE(find_link("uplink")->carrier) << "the far end is still up; a TAP interface needs the keeper";
    }
    want({kOne, kTwo});
    EXPECT_EQ(at(kOne).index(), index);
    EXPECT_FALSE(find_link("swp1"));
    ASSERT_TRUE(find_link("uplink"));
    EXPECT_TRUE(find_link("uplink")->up);
    EXPECT_EQ(std::system("ip link show uplink | grep -q 'mtu 1400'"), 0);
    EXPECT_EQ(std::system("ip link show uplink | grep -q '02:00:00:00:07:07'"), 0);
    interfaces_->set_carrier(1, true);
    Program program{"uplink"};
    EXPECT_TRUE(run_until([&] {
        program.send(frame(3));
        return has_received(kOne, frame(3));
    }));
    EXPECT_TRUE(at(kOne).write(vdevice::chip::split_frame(frame(4))));
    at(kOne).flush();
    EXPECT_TRUE(program.receives(frame(4)));
}

TEST_P(InterfacesTest, WhatAPredecessorLeftAndNobodyWantsIsRemoved) {
    want({kOne, kTwo, kTagged});
    ip("link set swp2 name other");
    kill();
    start();
    want({kOne});
    EXPECT_TRUE(find_link("swp1"));
    EXPECT_FALSE(find_link("other"));
    EXPECT_FALSE(find_link("swp2.100"));
    want({});
    EXPECT_FALSE(find_link("swp1"));
    EXPECT_EQ(find_links().size(), 1U) << "nothing is left but lo";
}

TEST_P(InterfacesTest, AStrangersInterfaceIsLeftAlone) {
    ip("link add swp2 type veth peer name stranger");
    const std::vector<std::string> refusals = interfaces_->set_wanted({kOne, kTwo});
    ASSERT_EQ(refusals.size(), 1U);
    EXPECT_THAT(refusals[0], HasSubstr("cannot make interface swp2: there is one of that name"));
    EXPECT_NE(interfaces_->find(kOne), nullptr);
    EXPECT_EQ(interfaces_->find(kTwo), nullptr);
    interfaces_->remove_all();
    EXPECT_TRUE(find_link("swp2"));
    ip("link del swp2");
    want({kTwo});
}

TEST_P(InterfacesTest, OneThatAPersonRemovesIsForgottenAndMadeAnew) {
    want({kOne, kTwo});
    interfaces_->set_carrier(1, true);
    ip("link del swp1");
    if (GetParam() == InterfaceKind::kTap) {
        EXPECT_TRUE(run_until([&] { return interfaces_->find(kOne) == nullptr; }));
    }
    want({kOne, kTwo});
    ip("link set swp1 up");
    EXPECT_TRUE(comes_true([] { return find_link("swp1")->carrier; }));
    Program program{"swp1"};
    EXPECT_TRUE(run_until([&] {
        program.send(frame(5));
        return has_received(kOne, frame(5));
    }));
}

/** A process with a network namespace of its own, for as long as the object lives. */
class OtherNamespace {
  public:
    OtherNamespace() {
        int ready[2] = {-1, -1};
        EXPECT_EQ(pipe(ready), 0);
        process_ = fork();
        if (process_ == 0) {
            const bool is_done = unshare(CLONE_NEWNET) == 0 && write(ready[1], "", 1) == 1;
            pause();
            _exit(is_done ? 0 : 1);
        }
        char octet = 0;
        EXPECT_EQ(read(ready[0], &octet, 1), 1);
        close(ready[0]);
        close(ready[1]);
    }
    ~OtherNamespace() {
        ::kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    OtherNamespace(const OtherNamespace &) = delete;
    OtherNamespace &operator=(const OtherNamespace &) = delete;

    std::string process() const { return std::to_string(process_); }
    /** Whether a shell's command there succeeds. */
    bool run(const std::string &command) const {
        return std::system(("exec nsenter -t " + process() + " -n " + command + " > /dev/null 2>&1").c_str()) == 0;
    }

  private:
    pid_t process_ = -1;
};

TEST_P(InterfacesTest, OneInAnotherNamespaceGoesOn) {
    const OtherNamespace other;
    want({kOne});
    ip("link set swp1 netns " + other.process());
    EXPECT_TRUE(other.run("ip link set swp1 up"));
    interfaces_->set_carrier(1, true);
    want({kOne});
    EXPECT_FALSE(find_link("swp1")) << "it is not made anew";
    EXPECT_TRUE(comes_true([&] { return other.run("sh -c 'ip link show swp1 | grep -q LOWER_UP'"); }));
    interfaces_->remove_all();
    EXPECT_FALSE(other.run("ip link show swp1"));
}

INSTANTIATE_TEST_SUITE_P(Kinds, InterfacesTest, testing::Values(InterfaceKind::kTap, InterfaceKind::kVeth), kind_name);

TEST(InterfaceKinds, AnotherKindTakesThePlaceOfTheOneBefore) {
    if (best_interface_kind() != InterfaceKind::kTap) {
        GTEST_SKIP() << "this user may have no TAP interface here";
    }
    vdevice::io::EventLoop loop;
    for (const InterfaceKind kind :
         {InterfaceKind::kTap, InterfaceKind::kVeth, InterfaceKind::kTap, InterfaceKind::kVeth}) {
        InterfaceSettings settings;
        settings.kind = kind;
        Interfaces interfaces{loop, settings, "", [](Interface &) {}};
        EXPECT_TRUE(interfaces.set_wanted({kOne}).empty());
        EXPECT_EQ(find_link("swp1")->kind, kind == InterfaceKind::kTap ? "tun" : "veth");
        EXPECT_EQ(find_links().size(), kind == InterfaceKind::kTap ? 2U : 3U);
    }
    Interfaces{loop, {}, "", [](Interface &) {}}.remove_all();
    EXPECT_EQ(find_links().size(), 1U);
}

}  // namespace interfaces_test
}  // namespace switchd
