// A monitor among very many changes: more than it has room for, or than it reads in time.
#include <algorithm>
#include <atomic>
#include <thread>

#include "switchd/kernel/testing/live_fixture.h"

namespace switchd {
namespace storm_test {

using namespace test;
using testing::Ge;
using testing::IsEmpty;
using testing::SizeIs;

using StormTest = LiveTest;

TEST_F(StormTest, HundredsOfBridgesComeAndGo) {
    constexpr int kBridges = 300;
    KernelMonitor monitor;
    std::string make;
    for (int number = 1; number <= kBridges; ++number) {
        make.append("link add br").append(std::to_string(number)).append(" group 77 type bridge\n");
    }
    run("ip", make);
    make_bridge("last", 20);
    expect_in_step(monitor);
    const auto bridges = [&] {
        return std::count_if(monitor.state().links.begin(), monitor.state().links.end(),
                             [](const auto &entry) { return entry.second.bridge.has_value(); });
    };
    EXPECT_EQ(bridges(), kBridges + 1);
    run("ip", "link del group 77\n");
    expect_in_step(monitor);
    EXPECT_EQ(bridges(), 1);
}

TEST_F(StormTest, AStormThatTheBufferIsTooSmallFor) {
    constexpr size_t kAddresses = 10000;
    constexpr int kSmall = 4096;
    make_bridge("br1", 2);
    KernelMonitor monitor{kSmall};
    EXPECT_THAT(requests_.change_addresses(addresses(index_of("p1"), kAddresses)), IsEmpty());
    read_notifications(monitor);
    EXPECT_GE(monitor.counters().losses, 1U);
    EXPECT_GE(monitor.counters().resyncs, 2U);
    EXPECT_THAT(monitor.state().addresses, SizeIs(Ge(kAddresses)));
    EXPECT_TRUE(monitor.is_complete());
    expect_in_step(monitor);
}

/** Reads everything again and again until the addresses are gone. */
void resync_while_removing(KernelMonitor &monitor, std::vector<AddressChange> addresses) {
    for (AddressChange &address : addresses) {
        address.learned = false;
    }
    // The kernel lists the newest first: what is removed at the front makes it leave out others.
    std::reverse(addresses.begin(), addresses.end());
    std::atomic<bool> done = false;
    std::thread removal{[&] {
        KernelRequests{}.change_addresses(addresses);
        done = true;
    }};
    while (!done) {
        monitor.resync();
    }
    removal.join();
}

TEST_F(StormTest, AddressesThatGoWhileEverythingIsRead) {
    constexpr size_t kAddresses = 5000;
    constexpr int kRounds = 5;
    make_bridge("br1", 2);
    const std::vector<AddressChange> all = addresses(index_of("p1"), kAddresses);
    for (const int buffer : {4096, 8 * 1024 * 1024}) {
        KernelMonitor monitor{buffer};
        for (int round = 0; round < kRounds; ++round) {
            requests_.change_addresses(all);
            resync_while_removing(monitor, {all.begin() + kAddresses / 2, all.end()});
            expect_in_step(monitor);
        }
    }
}

TEST_F(StormTest, MoreThanTheTablesHoldIsSaidUntilThereIsRoom) {
    constexpr size_t kAddresses = 17000;
    make_bridge("br1", 2);
    KernelMonitor monitor;
    EXPECT_TRUE(monitor.is_complete());
    requests_.change_addresses(addresses(index_of("p1"), kAddresses));
    read_notifications(monitor);
    EXPECT_FALSE(monitor.is_complete());
    EXPECT_GT(monitor.counters().ignored, 0U);
    EXPECT_EQ(monitor.state().addresses.size(), Reader::Limits{}.addresses);
    monitor.refresh_bridges();
    EXPECT_FALSE(monitor.is_complete());
    std::vector<AddressChange> gone = addresses(index_of("p1"), kAddresses);
    gone.resize(kAddresses - 10);
    for (AddressChange &address : gone) {
        address.learned = false;
    }
    requests_.change_addresses(gone);
    expect_in_step(monitor);
    EXPECT_TRUE(monitor.is_complete());
}

}  // namespace storm_test
}  // namespace switchd
