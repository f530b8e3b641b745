// The CPU's interface, with the chip's end of its cable in the test's hands; and the relay between it and the kernel.
#include "switchd/frames/cpu_port.h"

#include <adp/adp.h>
#include <sys/epoll.h>

#include <fstream>
#include <utility>

#include "switchd/frames/relay.h"
#include "switchd/ports/testing/interface_fixture.h"
#include "vdevice/chip/testing/frame_builder.h"
#include "vdevice/io/error.h"

namespace switchd {
namespace cpu_port_test {

using namespace test;
using vdevice::chip::Bytes;
using vdevice::chip::test::kBroadcast;
using vdevice::chip::test::octets16;
using vdevice::chip::test::octets32;
using vdevice::chip::test::receive_tag;
using vdevice::chip::test::station;
using vdevice::chip::test::transmit_tag;
using vdevice::chip::test::vlan_tag;
using vdevice::chip::test::operator+;

constexpr uint32_t kFirstChipPort = 4;
constexpr unsigned kAsGiven = 6;  // the opcode that the library uses for one port
constexpr uint32_t kFlags = 0xDU << 25;
constexpr uint16_t kVid = 100;
const Octets kAddresses = kBroadcast + station(7);
const Octets kText = octets16(0x88B5) + Octets(46, 0x44);

/** Once: the library never frees its map. */
void set_up_port_map() {
    static bool is_done = false;
    if (std::exchange(is_done, true)) {
        return;
    }
    ASSERT_EQ(adp_set_max_phy_port_num(ADP_USER_PORTS), ADP_OK);
    ASSERT_EQ(adp_add_cpu_port(0, 0, 0, 0, 0), ADP_OK);
    for (uint32_t port = 1; port <= ADP_USER_PORTS; ++port) {
        ASSERT_EQ(adp_add_phy_port(port, 0, 0, port + kFirstChipPort - 1, 0), ADP_OK);
    }
}

Octets to_chip(uint32_t port, const Octets &rest) {
    return kAddresses + transmit_tag(kAsGiven, kFlags | (port + kFirstChipPort - 1)) + rest;
}

Octets from_chip(uint32_t port, uint16_t vid, const Octets &rest) {
    return kAddresses + receive_tag(port + kFirstChipPort - 1) + vlan_tag(vid) + rest;
}

/** "eth0", and the chip at the other end. */
class CpuCable : public InterfaceTest {
  protected:
    void SetUp() override {
        InterfaceTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        set_up_port_map();
        ip("link add eth0 type veth peer name chip0");
        for (const char *name : {"eth0", "chip0"}) {
            vdevice::io::make_transparent(name);
            vdevice::io::set_interface_up(name, true);
        }
        cpu_port_.open();
        chip_ = std::make_unique<Program>("chip0");
        EXPECT_TRUE(comes_true([&] {
            chip_->send(from_chip(1, kVid, kText));
            return !receive().empty();
        }));
        while (!receive().empty()) {
        }
    }
    void TearDown() override {
        InterfaceTest::TearDown();
        if (find_link("eth0")) {
            ip("link del eth0");
        }
    }
    std::vector<std::pair<uint32_t, Octets>> receive() {
        std::vector<std::pair<uint32_t, Octets>> frames;
        cpu_port_.receive([&](uint32_t port, Bytes frame) { frames.emplace_back(port, octets_of(frame)); });
        return frames;
    }
    std::pair<uint32_t, Octets> receive_one() {
        std::vector<std::pair<uint32_t, Octets>> frames;
        EXPECT_TRUE(comes_true([&] { return !(frames = receive()).empty(); }));
        return frames.empty() ? std::pair<uint32_t, Octets>{} : frames.front();
    }

    CpuPort cpu_port_;
    std::unique_ptr<Program> chip_;
};

using CpuPortTest = CpuCable;

TEST_P(CpuPortTest, FramesComeWithTheirPortAndTheirVlan) {
    for (const uint32_t port : {1U, 2U, 26U}) {
        chip_->send(from_chip(port, kVid, kText));
        EXPECT_EQ(receive_one(), (std::pair{port, kAddresses + vlan_tag(kVid) + kText}));
    }
    const Octets jumbo = octets16(0x88B5) + Octets(9000, 0x55);
    chip_->send(from_chip(3, kVid, jumbo));
    EXPECT_EQ(receive_one(), (std::pair{3U, kAddresses + vlan_tag(kVid) + jumbo}));
}

TEST_P(CpuPortTest, WhatTheSwitchDidNotSendIsCounted) {
    const uint64_t before = cpu_port_.foreign_frames();
    chip_->send(kAddresses + kText);
    chip_->send(kAddresses + vlan_tag(5) + receive_tag(4) + kText);
    chip_->send(kAddresses + octets16(0x8874));
    chip_->send(from_chip(1, kVid, kText));
    EXPECT_EQ(receive_one().first, 1U);
    EXPECT_EQ(cpu_port_.foreign_frames() - before, 3U);
}

TEST_P(CpuPortTest, AnUnknownChipPortIsNoUserPort) {
    chip_->send(kAddresses + receive_tag(63) + vlan_tag(kVid) + kText);
    EXPECT_EQ(receive_one().first, 0xFFFFFFFF);
}

TEST_P(CpuPortTest, FramesAreSentAsGivenOrWithATag) {
    EXPECT_TRUE(cpu_port_.send(3, 0, kAddresses + kText));
    cpu_port_.flush();
    EXPECT_TRUE(chip_->receives(to_chip(3, kText)));
    EXPECT_TRUE(cpu_port_.send(26, 4094, kAddresses + kText));
    cpu_port_.flush();
    EXPECT_TRUE(chip_->receives(to_chip(26, vlan_tag(4094) + kText)));
    EXPECT_TRUE(cpu_port_.send(1, kVid, kAddresses + vlan_tag(7) + kText));
    cpu_port_.flush();
    EXPECT_TRUE(chip_->receives(to_chip(1, vlan_tag(kVid) + vlan_tag(7) + kText)));
}

TEST_P(CpuPortTest, WhatIsTooShortOrTooLongIsNotSent) {
    EXPECT_FALSE(cpu_port_.send(1, 0, Octets(11)));
    EXPECT_FALSE(cpu_port_.send(1, 0, Octets(vdevice::chip::kMaxFrameBytes + 1)));
    EXPECT_FALSE(CpuPort{}.send(1, 0, kAddresses + kText)) << "it is not open";
}

TEST_P(CpuPortTest, AnInterfaceThatWasReplacedIsOpenedAgain) {
    EXPECT_TRUE(cpu_port_.is_current());
    ip("link del eth0");
    EXPECT_FALSE(cpu_port_.is_current());
    EXPECT_THROW(cpu_port_.open(), vdevice::io::Error);
    EXPECT_FALSE(cpu_port_.is_open());
    ip("link add eth0 type veth peer name chip0");
    for (const char *name : {"eth0", "chip0"}) {
        vdevice::io::make_transparent(name);
        vdevice::io::set_interface_up(name, true);
    }
    cpu_port_.open();
    EXPECT_TRUE(cpu_port_.is_current());
}

TEST_P(CpuPortTest, AGroupIsReachedByItsManager) {
    EXPECT_FALSE(cpu_port_.send(ADP_AGG_INTF(2), 0, kAddresses + kText)) << "it has none";
    ASSERT_EQ(SET_AGG_MANAGE_INTF(ADP_AGG_INTF(2), 5), ADP_OK);
    EXPECT_TRUE(cpu_port_.send(ADP_AGG_INTF(2), 0, kAddresses + kText));
    cpu_port_.flush();
    EXPECT_TRUE(chip_->receives(to_chip(5, kText)));
    ASSERT_EQ(SET_AGG_MANAGE_INTF(ADP_AGG_INTF(2), 0), ADP_OK);
}

INSTANTIATE_TEST_SUITE_P(Kinds, CpuPortTest, testing::Values(InterfaceKind::kVeth), kind_name);

/** Chip, relay and interfaces, as in the daemon. */
class RelayTest : public CpuCable {
  protected:
    void SetUp() override {
        CpuCable::SetUp();
        if (IsSkipped()) {
            return;
        }
        interfaces_ =
            std::make_unique<Interfaces>(loop_, InterfaceSettings{GetParam(), {2, 0, 0, 0, 1, 0}, 1500}, "",
                                         [this](Interface &interface) { relay().from_interface(interface, now_); });
        relay_ = std::make_unique<Relay>(
            path_, cpu_port_, *interfaces_,
            [this](uint32_t port, const vdevice::chip::Frame &) { lacp_ports_.push_back(port); });
        want({{1, 0}, {1, 200}, {2, 0}});
        PathTable table;
        table.ports[1].untagged_vid = kVid;
        table.ports[1].runs_lacp = true;
        table.ports[2].untagged_vid = kVid;
        table.interfaces = {{1, 0}, {1, 200}, {2, 0}};
        path_.set_table(table);
        for (const char *name : {"swp1", "swp1.200"}) {
            std::ofstream{"/proc/sys/net/ipv6/conf/" + std::string{name} + "/disable_ipv6"} << "1";
            ip("link set " + std::string{name} + " up");
        }
        interfaces_->set_carrier(1, true);
        loop_.add(cpu_port_.fd(), EPOLLIN, [this](uint32_t) { relay().from_chip(now_); });
    }
    void TearDown() override {
        if (relay_) {
            loop_.remove(cpu_port_.fd());
        }
        CpuCable::TearDown();
    }
    Relay &relay() { return *relay_; }
    /** Whether the frame arrives, while the daemon goes on. */
    bool passes(Program &to, const Octets &frame) {
        for (int i = 0; i < 20; ++i) {
            loop_.run_once(5);
        }
        return to.receives(frame);
    }

    Time now_ = std::chrono::seconds{1};
    FramePath path_{{1, 2}, {}, now_};
    std::unique_ptr<Relay> relay_;
    std::vector<uint32_t> lacp_ports_;
};

TEST_P(RelayTest, FramesReachTheirInterfaceAndTheirPort) {
    Program plain{"swp1"};
    Program tagged{"swp1.200"};
    chip_->send(from_chip(1, kVid, kText));
    EXPECT_TRUE(passes(plain, kAddresses + kText));
    chip_->send(from_chip(1, 200, kText));
    EXPECT_TRUE(passes(tagged, kAddresses + kText));
    chip_->send(from_chip(1, 300, kText));
    EXPECT_TRUE(passes(plain, kAddresses + vlan_tag(300) + kText));
    const Octets answer = octets16(0x88B5) + Octets(46, 0x66);
    plain.send(kAddresses + answer);
    EXPECT_TRUE(passes(*chip_, to_chip(1, answer)));
    tagged.send(kAddresses + answer);
    EXPECT_TRUE(passes(*chip_, to_chip(1, vlan_tag(200) + answer)));
    EXPECT_EQ(path_.counters(1).to_kernel, 3U);
    EXPECT_EQ(path_.counters(1).from_kernel, 2U);
}

TEST_P(RelayTest, LacpIsHandedOver) {
    const Octets slow = Octets{0x01, 0x80, 0xC2, 0, 0, 2} + station(7);
    chip_->send(slow + receive_tag(kFirstChipPort) + vlan_tag(kVid) + octets16(0x8809) + Octets(110, 1));
    EXPECT_TRUE(run_until([&] { return !lacp_ports_.empty(); }));
    EXPECT_EQ(lacp_ports_, (std::vector<uint32_t>{1}));
}

TEST_P(RelayTest, LossesAreCounted) {
    if (GetParam() == InterfaceKind::kTap) {
        chip_->send(from_chip(2, kVid, kText));  // its interface is down
        EXPECT_TRUE(run_until([&] { return path_.counters(2).of(Drop::kNotTaken) == 1; }));
    }
    vdevice::io::set_interface_up("eth0", false);
    Program program{"swp1"};
    EXPECT_TRUE(run_until([&] {
        program.send(kAddresses + octets16(0x88B5) + Octets(46, 0x66));
        return cpu_port_.unsent_frames() != 0;
    }));
}

INSTANTIATE_TEST_SUITE_P(Kinds, RelayTest, testing::Values(InterfaceKind::kTap, InterfaceKind::kVeth), kind_name);

}  // namespace cpu_port_test
}  // namespace switchd
