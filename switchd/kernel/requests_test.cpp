// Requests, as the kernel answers them.
#include "switchd/kernel/requests.h"

#include <fcntl.h>
#include <linux/if_tun.h>
#include <sys/ioctl.h>

#include <cerrno>

#include "switchd/kernel/testing/live_fixture.h"
#include "vdevice/io/testing/processor_time.h"

namespace switchd {
namespace requests_test {

using namespace test;
using testing::IsEmpty;
using testing::SizeIs;

using RequestsTest = LiveTest;

constexpr int kNoInterface = 99999;

TEST_F(RequestsTest, SettingsOfAnInterface) {
    ASSERT_EQ(requests_.make_veth_pair("swp1", "swp1-cpu"), 0);
    const int index = index_of("swp1");
    LinkSettings settings;
    settings.up = true;
    settings.mtu = 2000;
    settings.mac = Mac{2, 0, 0, 0, 0, 7};
    settings.alias = "a port";
    settings.name = "swp2";
    ASSERT_EQ(requests_.set_link(index, settings), 0);
    Link link = KernelMonitor{}.state().links.at(index);
    EXPECT_EQ(link.name, "swp2");
    EXPECT_EQ(link.alias, "a port");
    EXPECT_EQ(link.mtu, 2000U);
    EXPECT_EQ(link.mac, (Mac{2, 0, 0, 0, 0, 7}));
    EXPECT_EQ(link.kind, "veth");
    EXPECT_EQ(link.parent, index_of("swp1-cpu"));
    EXPECT_TRUE(link.up);
    EXPECT_FALSE(link.carrier);
    EXPECT_EQ(requests_.set_link(index_of("swp1-cpu"), {.up = true}), 0);
    EXPECT_TRUE(KernelMonitor{}.state().links.at(index).carrier);

    EXPECT_EQ(requests_.set_link(index, {.up = false, .alias = ""}), 0);
    link = KernelMonitor{}.state().links.at(index);
    EXPECT_FALSE(link.up);
    EXPECT_EQ(link.alias, "");
    EXPECT_EQ(link.mtu, 2000U) << "what is not given stays";
    EXPECT_EQ(requests_.remove_link(index), 0);
    EXPECT_EQ(index_of("swp2"), 0);
    EXPECT_EQ(index_of("swp1-cpu"), 0);
}

TEST_F(RequestsTest, ARefusalHasItsReason) {
    ASSERT_EQ(requests_.make_veth_pair("swp1", "swp1-cpu"), 0);
    EXPECT_EQ(requests_.make_veth_pair("swp1", "other"), EEXIST);
    EXPECT_EQ(requests_.make_veth_pair("other", "swp1-cpu"), EEXIST);
    EXPECT_EQ(index_of("other"), 0);
    EXPECT_EQ(requests_.set_link(kNoInterface, {.up = true}), ENODEV);
    EXPECT_EQ(requests_.remove_link(kNoInterface), ENODEV);
    EXPECT_EQ(requests_.set_link(index_of("swp1"), {.carrier = false}), EOPNOTSUPP);
    EXPECT_EQ(requests_.set_link(index_of("swp1"), {.name = "swp1-cpu"}), EEXIST);
    EXPECT_EQ(requests_.set_link(index_of("swp1"), {.up = true}), 0) << "after refusals";
}

TEST_F(RequestsTest, TheCarrierOfATap) {
    const vdevice::UniqueFd fd{open("/dev/net/tun", O_RDWR | O_CLOEXEC)};
    ifreq request{};
    request.ifr_flags = IFF_TAP | IFF_NO_PI;
    if (!fd || ioctl(fd.get(), TUNSETIFF, &request) != 0) {
        GTEST_SKIP() << "there is no /dev/net/tun";
    }
    const int index = index_of(request.ifr_name);
    ASSERT_EQ(requests_.set_link(index, {.up = true, .carrier = false}), 0);
    EXPECT_FALSE(KernelMonitor{}.state().links.at(index).carrier);
    ASSERT_EQ(requests_.set_link(index, {.carrier = true}), 0);
    EXPECT_TRUE(KernelMonitor{}.state().links.at(index).carrier);
}

TEST_F(RequestsTest, AddressChangeesComeMoveAndGo) {
    make_bridge("br1", 2);
    std::vector<AddressChange> some = addresses(index_of("p1"), 300);
    EXPECT_THAT(requests_.change_addresses(some), IsEmpty());
    const auto at = [&](const AddressChange &address) {
        const KernelMonitor monitor;
        const auto found = monitor.state().addresses.find({index_of("br1"), 0, address.mac});
        EXPECT_TRUE(found == monitor.state().addresses.end() || found->second.kind == Address::Kind::kHardware);
        return found == monitor.state().addresses.end() ? 0 : found->second.interface;
    };
    EXPECT_EQ(at(some.front()), index_of("p1"));
    EXPECT_EQ(at(some.back()), index_of("p1"));
    some.back().interface = index_of("p2");
    some.front().learned = false;
    EXPECT_THAT(requests_.change_addresses(some), IsEmpty());
    EXPECT_THAT(requests_.change_addresses(some), IsEmpty()) << "the first one is gone already";
    EXPECT_EQ(at(some.front()), 0);
    EXPECT_EQ(at(some.back()), index_of("p2"));
}

TEST_F(RequestsTest, RefusedAddressesAreNamed) {
    make_bridge("br1", 1);
    std::vector<AddressChange> some = addresses(index_of("p1"), 300);
    some[5].interface = kNoInterface;
    some[127].mac = {};
    some[128].interface = index_of("h1");
    some[299].interface = kNoInterface;
    const auto refused = requests_.change_addresses(some);
    ASSERT_THAT(refused, SizeIs(4));
    EXPECT_EQ(refused[0].index, 5U);
    EXPECT_EQ(refused[0].error, ENODEV);
    EXPECT_EQ(refused[1].index, 127U);
    EXPECT_EQ(refused[1].error, EINVAL);
    EXPECT_EQ(refused[2].index, 128U);
    EXPECT_EQ(refused[3].index, 299U);
    EXPECT_THAT(requests_.change_addresses({}), IsEmpty());
    for (AddressChange &address : some) {
        address.interface = kNoInterface;
    }
    EXPECT_THAT(requests_.change_addresses(some), SizeIs(300)) << "all are refused";
}

TEST_F(RequestsTest, TenThousandAddressesTakeLessThanASecondOfProcessorTime) {
    make_bridge("br1", 1);
    const double before = vdevice::io::processor_seconds();
    EXPECT_THAT(requests_.change_addresses(addresses(index_of("p1"), 10000)), IsEmpty());
    EXPECT_LT(vdevice::io::processor_seconds() - before, 1.0);
}

}  // namespace requests_test
}  // namespace switchd
