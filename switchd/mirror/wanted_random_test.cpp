// Whatever the kernel has, the chip takes what is wanted.
#include <algorithm>
#include <random>

#include "switchd/mirror/testing/switch_fixture.h"

namespace switchd {
namespace wanted_random_test {

using testing::IsEmpty;

class RandomKernel {
  public:
    explicit RandomKernel(uint32_t seed) : random_{seed} {}

    KernelState operator()(Plan &plan) {
        KernelState kernel;
        for (int index = 1; index <= kLinks; ++index) {
            if (below(5) != 0) {
                kernel.links[index] = link(index, plan);
            }
        }
        plan.groups.clear();
        plan.groups[ADP_AGG_INTF(1)] = below(8) << 3;
        for (uint32_t i = below(20); i > 0; --i) {
            kernel.addresses[{
                some_index(), vid(), {static_cast<uint8_t>(below(4)), 0, 0, 0, 0, static_cast<uint8_t>(i)}}] = {
                some_index(), static_cast<Address::Kind>(below(4))};
            const uint16_t protocols[] = {0x0800, 0x86DD, 0};
            kernel.groups[{some_index(), vid(), protocols[below(3)], {0x01, static_cast<uint8_t>(below(256)), 2, 3}}] =
                {some_index(), some_index()};
            kernel.router_ports[some_index()].insert(some_index());
        }
        return kernel;
    }

  private:
    static constexpr int kLinks = 20;

    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random_() % limit); }
    bool maybe() { return below(2) != 0; }
    int some_index() { return static_cast<int>(below(kLinks + 3)); }
    uint16_t vid() { return static_cast<uint16_t>(maybe() ? below(6) : 3999 + below(100)); }

    Link link(int index, Plan &plan) {
        Link link;
        link.name = "br" + std::to_string(below(8));
        link.mac = {static_cast<uint8_t>(below(4)), 0, 0, 0, 1, static_cast<uint8_t>(below(4))};
        link.up = below(4) != 0;
        link.carrier = below(4) != 0;
        link.master = some_index();
        link.parent = some_index();
        link.vid = maybe() ? vid() : uint16_t{0};
        if (below(3) == 0) {
            link.bridge = {.stp = maybe(),
                           .topology_change = maybe(),
                           .vlan_filtering = below(4) == 0,
                           .ageing_seconds = below(3),
                           .multicast_snooping = maybe(),
                           .querier = maybe(),
                           .other_querier = maybe()};
        }
        if (below(5) != 0) {
            link.port = {.state = static_cast<PortState>(below(5)),
                         .learning = maybe(),
                         .isolated = maybe(),
                         .locked = maybe(),
                         .multicast_router = static_cast<uint8_t>(below(4))};
        }
        for (uint32_t i = below(3); i > 0; --i) {
            link.vlans.push_back({vid(), maybe(), maybe()});
        }
        plan.interfaces.erase(index);
        if (!link.bridge) {
            plan.interfaces[index] = {below(6) != 0 ? below(8) : ADP_AGG_INTF(below(3)), maybe() ? vid() : uint16_t{0}};
        }
        return link;
    }

    std::mt19937 random_;
};

class WantedRandom : public test::SwitchTest {};

TEST_F(WantedRandom, IsAlwaysWhatTheChipTakes) {
    RandomKernel random{5};
    Applier applier{k.plan};
    for (uint32_t i = 0; i < 20 * SWITCHD_SEEDS; ++i) {
        SCOPED_TRACE(i);
        k.kernel = random(k.plan);
        SwitchState state = wanted().state;
        // Groups that do not exist refuse addresses.
        std::erase_if(state.addresses, [](const auto &entry) { return entry.second > ADP_USER_PORTS; });
        EXPECT_THAT(applier.apply(state), IsEmpty());
        ASSERT_EQ(applier.state(), state);
        ASSERT_EQ(present(), state);
    }
}

}  // namespace wanted_random_test
}  // namespace switchd
