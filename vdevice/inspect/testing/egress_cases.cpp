// Ports with a copy, and why the others have none.
#include "vdevice/inspect/testing/explained.h"

namespace vdevice::inspect::test {
namespace {

using namespace chip;
using namespace chip::test;
using namespace std::chrono_literals;

void leave_vlan(Chip &chip) {
    EXPECT_EQ(chip->vlans().remove_ports({1, 1}, PortSet::of(kB)), Status::kOk);
}
void block(Chip &chip) {
    EXPECT_EQ(chip->stp().set_state(StpGroups::kDefault, kB, static_cast<uint32_t>(StpState::kBlocking)), Status::kOk);
}
void isolate(Chip &chip) {
    EXPECT_EQ(chip->set_egress(kA, PortSet::of(kC)), Status::kOk);
}
void unlink(Chip &chip) {
    chip->set_link(kB, false);
}

std::vector<Case> flood_cases() {
    return {
        {"flooded", nothing, kA, kFlooded, {"port 1: ingress", "port 2: untagged", "port cpu: for_cpu"}},
        {"not a member", leave_vlan, kA, kFlooded, {"port 2: not_member", "port 26: sent"}},
        {"down", unlink, kA, kFlooded, {"port 2: down"}},
        {"blocked", block, kA, kFlooded, {"port 2: stp_blocked"}},
        {"isolated", isolate, kA, kFlooded, {"port 2: isolated", "port cpu: isolated"}},
        {"the same trunk",
         [](Chip &chip) {
             chip.make_trunk({kA, kB});
         },
         kA,
         kFlooded,
         {"port 2: same_trunk"}},
        {"standby",
         [](Chip &chip) {
             chip.make_trunk({kC});
             EXPECT_EQ(chip->set_trunk_configured(3, {kB, kC}), Status::kOk);
         },
         kA,
         kFlooded,
         {"port 2: standby"}},
        {"another member",
         [](Chip &chip) {
             chip.make_trunk({10, 11});
             put_two(chip, 10);
         },
         kA,
         kToTwo,
         {"port 7: other_member", "port 8: sent"}},
        {"nobody else",
         [](Chip &chip) { chip->set_egress(kA, PortSet{}); },
         kA,
         kFlooded,
         {"dropped.reason=no_destination"}},
    };
}

std::vector<Case> unicast_cases() {
    const auto two_on = [](auto also, int port = kB) {
        return [also, port](Chip &chip) {
            put_two(chip, port);
            also(chip);
        };
    };
    return {
        {"to the same port", two_on(nothing, kA), kA, kToTwo, {"dropped.reason=same_port"}},
        {"to no member", two_on(leave_vlan), kA, kToTwo, {"dropped.reason=egress_not_member", "port 2: not_member"}},
        {"to a port that is down", two_on(unlink), kA, kToTwo, {"dropped.reason=egress_down", "port 2: down"}},
        {"to a blocked port", two_on(block), kA, kToTwo, {"dropped.reason=stp_egress", "port 2: stp_blocked"}},
        {"to an isolated port", two_on(isolate), kA, kToTwo, {"dropped.reason=isolated", "port 2: isolated"}},
    };
}

void mirror(Chip &chip, int port, uint32_t mode) {
    chip->mirrors().set_enabled(true);
    EXPECT_EQ(chip->mirrors().set_port(0, port, kC, mode), Status::kOk);
}

void shape(Chip &chip) {
    EXPECT_EQ(chip->set_shaper(1s, kB, {8, 8}), Status::kOk);
    chip.send(kA, kFlooded + Octets(940, 0));
}

void loop(Chip &chip) {
    for (const int port : {kB, kC}) {
        chip.change(port, [](Port &state) { state.loopback = 1; });
    }
}

std::vector<Case> copy_cases() {
    return {
        {"tagged",
         [](Chip &chip) { EXPECT_EQ(chip->vlans().set_ports(1, Switch::all_ports(), PortSet{}), Status::kOk); },
         kA,
         kFlooded,
         {"port 2: tagged"}},
        {"a mirror of what comes in",
         [](Chip &chip) { mirror(chip, kA, 2); },
         kA,
         kFlooded,
         {"mirror 26: ingress_mirror", "mirror 26: as_it_came", "port 2: sent"}},
        {"a mirror of what leaves",
         [](Chip &chip) { mirror(chip, kB, 4); },
         kA,
         kFlooded,
         {"mirror 26: egress_mirror", "mirror 26: as_it_leaves"}},
        {"a mirror of a flow",
         [](Chip &chip) {
             chip->mirrors().set_enabled(true);
             EXPECT_EQ(chip->mirrors().set_flow_destination(2, kC), Status::kOk);
             chip.rule({{kMirror, 2}});
         },
         kA,
         kFlooded,
         {"mirror 26: flow_mirror"}},
    };
}

std::vector<Case> lost_cases() {
    return {
        {"a mirror that is down",
         [](Chip &chip) {
             mirror(chip, kA, 2);
             chip->set_link(kC, false);
         },
         kA,
         kFlooded,
         {"mirror 26: mirror_down"}},
        {"too long",
         [](Chip &chip) { chip.change(kB, [](Port &port) { port.jumbo = false; }); },
         kA,
         kFlooded + Octets(1500, 0),
         {"port 2: not", "port 2: too_long"}},
        {"queued", shape, kA, kFlooded + Octets(940, 0), {"port 2: queued"}},
        {"no room",
         [](Chip &chip) {
             shape(chip);
             for (size_t i = 0; i < PortQueues::kQueueOctets / 1000; ++i) {
                 chip.send(kA, kFlooded + Octets(940, 0));
             }
         },
         kA,
         kFlooded + Octets(940, 0),
         {"port 2: queue_full"}},
        {"looped back", loop, kA, kFlooded, {"in.looped=true", "port 2: loopback"}},
        {"directed to a port that is down",
         unlink,
         kCpu,
         kBroadcast + station(9) + transmit_tag(7, 1U << kA | 1U << kB) + kPayload,
         {"port 2: down", "port 1: sent"}},
    };
}

}  // namespace

std::vector<Case> egress_cases() {
    std::vector<Case> all = flood_cases();
    for (const auto &part : {unicast_cases(), copy_cases(), lost_cases()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

}  // namespace vdevice::inspect::test
