// Frames in their VLAN: members, spanning tree, learning, what the CPU alone gets, look-up, storm limits.
#include "vdevice/inspect/testing/explained.h"

namespace vdevice::inspect::test {
namespace {

using namespace chip;
using namespace chip::test;
using namespace std::chrono_literals;

const Octets kGroup = {0x01, 0, 0x5E, 1, 2, 3};
const Mac kOne = Mac::at(station(1), 0);
const Mac kTwo = Mac::at(station(2), 0);

void set_state(Chip &chip, int port, StpState state) {
    EXPECT_EQ(chip->stp().set_state(StpGroups::kDefault, port, static_cast<uint32_t>(state)), Status::kOk);
}

void learn_as(Chip &chip, int64_t mode) {
    chip.change(kA, [&](Port &port) { port.learning = *find_learn_mode(mode); });
}

void fill_bucket(Chip &chip) {
    for (uint32_t number = 1; chip->macs().size() < MacTable::kBucketSlots; ++number) {
        const Mac other{uint64_t{0x040000000000} + number};
        if (MacTable::bucket_of(other, 1) == MacTable::bucket_of(kOne, 1)) {
            chip->macs().learn(other, 1, kC, 1s);
        }
    }
}

void filter(Chip &chip, Mac mac, bool from) {
    MacEntry entry{.mac = mac, .vid = 1, .port = kB, .is_static = true};
    entry.drops_from = from;
    entry.drops_to = !from;
    EXPECT_EQ(chip->add_mac(entry, 1), Status::kOk);
}

std::vector<Case> vlan_cases() {
    const auto in_state = [](StpState state) { return [state](Chip &chip) { set_state(chip, kA, state); }; };
    return {
        {"no VLAN", nothing, kA, kAddresses + vlan_tag(9) + kPayload, {"vlan.vid=9", "dropped.reason=vlan_missing"}},
        {"no member",
         [](Chip &chip) {
             EXPECT_EQ(chip->vlans().remove_ports({1, 1}, PortSet::of(kA)), Status::kOk);
         },
         kA,
         kFlooded,
         {"dropped.reason=not_member"}},
        {"disabled", in_state(StpState::kDisabled), kA, kFlooded, {"spanning_tree.state=disabled"}},
        {"blocking",
         in_state(StpState::kBlocking),
         kA,
         kFlooded,
         {"spanning_tree.state=blocking", "dropped.reason=stp_blocked"}},
        {"listening", in_state(StpState::kListening), kA, kFlooded, {"spanning_tree.state=listening"}},
        {"learning",
         in_state(StpState::kLearning),
         kA,
         kFlooded,
         {"spanning_tree.state=learning", "source.learned=new", "dropped.reason=stp_blocked"}},
        {"forwarding", nothing, kA, kFlooded, {"spanning_tree.state=forwarding", "member.vid=1"}},
    };
}

std::vector<Case> source_cases() {
    const auto limit = [](auto set) { return [set](Chip &chip) { set(chip->limits()); }; };
    const Facts over{"source.learned=over_limit", "dropped.reason=learn_limit"};
    const auto because = [&](const std::string &why) {
        Facts facts = over;
        facts.insert("source.why=" + why);
        return facts;
    };
    return {
        {"known", [](Chip &chip) { chip.send(kA, kFlooded); }, kA, kFlooded, {"source.learned=known"}},
        {"moved", [](Chip &chip) { chip.send(kB, kFlooded); }, kA, kFlooded, {"source.learned=moved"}},
        {"static",
         [](Chip &chip) { EXPECT_EQ(chip->add_static_mac(kOne, 1, kB), Status::kOk); },
         kA,
         kFlooded,
         {"source.learned=static"}},
        {"no room", fill_bucket, kA, kFlooded, {"source.learned=no_room"}},
        {"a group as source",
         nothing,
         kA,
         kBroadcast + kGroup + kPayload,
         {"source.learned=not", "source.why=group_source"}},
        {"no learning", [](Chip &chip) { learn_as(chip, 4); }, kA, kFlooded, {"source.why=port"}},
        {"device limit", limit([](LearnLimits &limits) { limits.system() = 0; }), kA, kFlooded,
         because("device_limit")},
        {"VLAN limit", limit([](LearnLimits &limits) { limits.of_vlan(1) = 0; }), kA, kFlooded, because("vlan_limit")},
        {"port limit", limit([](LearnLimits &limits) { limits.of_port(kA) = 0; }), kA, kFlooded, because("port_limit")},
        {"trunk limit",
         [](Chip &chip) {
             chip.make_trunk({kA, 10});
             chip->limits().of_trunk(3) = 0;
         },
         kA, kFlooded, because("trunk_limit")},
        {"not let in", [](Chip &chip) { learn_as(chip, 0); }, kA, kFlooded, {"dropped.reason=unknown_source"}},
        {"a filtered source", [](Chip &chip) { filter(chip, kOne, true); }, kA, kFlooded, {"dropped.reason=filtered"}},
    };
}

std::vector<Case> cpu_alone_cases() {
    const Octets lldp = Octets{0x01, 0x80, 0xC2, 0, 0, 0x0E} + station(1) + octets16(0x88CC) + Octets(46, 0);
    return {
        {"a trap", [](Chip &chip) { chip->traps().lldp = true; }, kA, lldp, {"cpu_alone.reason=trap"}},
        {"a reserved address",
         nothing,
         kA,
         Octets{0x01, 0x80, 0xC2, 0, 0, 0x10} + station(1) + kPayload,
         {"cpu_alone.reason=reserved_mac", "port cpu: sent", "port 2: not_wanted"}},
        {"an unknown source", [](Chip &chip) { learn_as(chip, 8); }, kA, kFlooded, {"cpu_alone.reason=unknown_source"}},
        {"snooped",
         [](Chip &chip) { chip->snooping().igmp = true; },
         kA,
         kGroup + station(1) + ipv4({.protocol = 2}, Octets(26, 0)),
         {"cpu_alone.reason=snooped"}},
        {"an unknown group",
         [](Chip &chip) { chip.change(kA, [](Port &port) { port.groups.ipv4_miss = GroupMiss::kToCpu; }); },
         kA,
         kGroup + station(1) + kPayload,
         {"cpu_alone.reason=unknown_group"}},
        {"an unknown group, dropped",
         [](Chip &chip) { chip.change(kA, [](Port &port) { port.groups.ipv4_miss = GroupMiss::kDrop; }); },
         kA,
         kGroup + station(1) + kPayload,
         {"dropped.reason=unknown_group", "destination.found=nothing"}},
        {"a trap, and no CPU",
         [](Chip &chip) {
             chip->traps().lldp = true;
             chip->set_link(kCpu, false);
         },
         kA,
         lldp,
         {"dropped.reason=egress_down", "port cpu: down"}},
    };
}

std::vector<Case> destination_cases() {
    return {
        {"unknown", nothing, kA, kToTwo, {"destination.found=nothing", "way.way=flooded"}},
        {"known",
         [](Chip &chip) { put_two(chip, kB); },
         kA,
         kToTwo,
         {"destination.found=port", "destination.port=2", "way.way=entry"}},
        {"behind a trunk",
         [](Chip &chip) {
             chip.make_trunk({10, 11});
             put_two(chip, 10);
         },
         kA,
         kToTwo,
         {"destination.found=trunk", "destination.trunk=3"}},
        {"a group",
         [](Chip &chip) { EXPECT_EQ(chip->add_group(Mac::at(kGroup, 0), 1, PortSet::of(kB)), Status::kOk); },
         kA,
         kGroup + station(1) + kPayload,
         {"destination.found=group", "way.way=group", "port 2: sent", "port 26: not_wanted"}},
        {"filtered",
         [](Chip &chip) { filter(chip, kTwo, false); },
         kA,
         kToTwo,
         {"destination.found=filter", "dropped.reason=filtered"}},
        {"redirected",
         [](Chip &chip) {
             chip.rule({{kRedirectPort, kC}});
         },
         kA,
         kFlooded,
         {"way.way=redirected", "port 26: sent"}},
    };
}

std::vector<Case> storm_cases() {
    const auto limit_storm = [](Chip &chip) {
        chip.change(kA, [](Port &port) { return port.storm.of(StormType::kBroadcast).limiter.set({8, 1}, 1s); });
    };
    return {
        {"within a storm limit", limit_storm, kA, kFlooded, {"storm_limit.type=broadcast", "storm_limit.within=true"}},
        {"over a storm limit",
         [limit_storm](Chip &chip) {
             limit_storm(chip);
             chip.send(kA, kFlooded + Octets(50, 0));
         },
         kA,
         kFlooded,
         {"storm_limit.within=false", "dropped.reason=storm"}},
    };
}

}  // namespace

std::vector<Case> forwarding_cases() {
    std::vector<Case> all = vlan_cases();
    for (const auto &part : {source_cases(), cpu_alone_cases(), destination_cases(), storm_cases()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

}  // namespace vdevice::inspect::test
