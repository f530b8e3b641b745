// Frames up to their VLAN and priority: what is dropped at the port, attacks, tags, rules.
#include "vdevice/inspect/testing/explained.h"

namespace vdevice::inspect::test {
namespace {

using namespace chip;
using namespace chip::test;
using namespace std::chrono_literals;

const Octets kTagged = kAddresses + vlan_tag(0xA001) + kPayload;  // VLAN 1, priority 5
const Octets kPacket = kAddresses + ipv4({.protocol = kUdp, .tos = 0xB8}, kDatagram);

void filter_attacks(Chip &chip) {
    chip->set_attack_filter(true);
}

Octets segment(uint8_t flags) {
    return kAddresses + ipv4({.protocol = kTcp}, tcp(flags));
}

Octets from_cpu(const Octets &tag) {
    return kBroadcast + station(9) + tag + kPayload;
}

std::vector<Case> port_cases() {
    return {
        {"no link", [](Chip &chip) { chip->set_link(kA, false); }, kA, kFlooded, {"dropped.reason=port_down"}},
        {"a short frame", nothing, kA, Octets(10, 0), {"dropped.reason=runt", "in.octets=10"}},
        {"a tag and no type", nothing, kA, kAddresses + vlan_tag(1), {"dropped.reason=runt"}},
        {"a long frame", nothing, kA, kFlooded + Octets(10000, 0), {"dropped.reason=oversize"}},
        {"loopback",
         [](Chip &chip) { chip.change(kA, [](Port &port) { port.loopback = 1; }); },
         kA,
         kFlooded,
         {"dropped.reason=loopback"}},
        {"an ingress limit",
         [](Chip &chip) { chip.change(kA, [](Port &port) {
                              return port.policer.set({8, 8}, 1s);
                          }); },
         kA,
         kFlooded,
         {"ingress_limit.within=true"}},
        {"over the ingress limit",
         [](Chip &chip) {
             chip.change(kA, [](Port &port) { return port.policer.set({8, 1}, 1s); });
             chip.send(kA, kFlooded + Octets(50, 0));
         },
         kA,
         kFlooded,
         {"ingress_limit.within=false", "dropped.reason=policed"}},
    };
}

std::vector<Case> cpu_cases() {
    return {
        {"no switch tag", nothing, kCpu, kFlooded, {"dropped.reason=no_switch_tag"}},
        {"an unknown opcode", nothing, kCpu, from_cpu(transmit_tag(2, 0)), {"dropped.reason=bad_opcode"}},
        {"directed to the CPU", nothing, kCpu, from_cpu(transmit_tag(3, 0)), {"dropped.reason=directed_to_cpu"}},
        {"directed to no port", nothing, kCpu, from_cpu(transmit_tag(3, 63)), {"dropped.reason=directed_to_unknown"}},
        {"directed to two ports",
         nothing,
         kCpu,
         from_cpu(transmit_tag(7, 1U << kA | 1U << kB)),
         {"cpu_tag.opcode=7", "cpu_tag.ports=[1,2]", "way.way=directed", "port 1: as_cpu_made_it"}},
        {"switched", nothing, kCpu, from_cpu(transmit_tag(1, 0)), {"cpu_tag.opcode=1", "way.way=flooded"}},
    };
}

std::vector<Case> attack_cases() {
    const Octets to_itself = kAddresses + ipv4({.protocol = kUdp, .destination = ipv4_address(1)}, Octets(8, 0));
    const Octets tiny = kAddresses + ipv4({.protocol = kTcp, .fragment = 1}, Octets(12, 0)) + Octets(46, 0);
    return {
        {"no attack", filter_attacks, kA, kPacket, {"attack_filter.step=attack_filter"}},
        {"the same address", filter_attacks, kA, station(1) + station(1) + kPayload, {"dropped.reason=dos_same_mac"}},
        {"land", filter_attacks, kA, to_itself, {"dropped.reason=dos_land"}},
        {"no flag", filter_attacks, kA, segment(0), {"dropped.reason=dos_null_scan"}},
        {"SYN and FIN", filter_attacks, kA, segment(3), {"dropped.reason=dos_syn_fin"}},
        {"FIN, PSH and URG", filter_attacks, kA, segment(0x29), {"dropped.reason=dos_xmas_scan"}},
        {"a tiny fragment", filter_attacks, kA, tiny, {"dropped.reason=dos_fragment"}},
    };
}

void translate(Chip &chip) {
    EXPECT_EQ(chip->tag_rules().ingress.add(kA, 1, {1, 3}), Status::kOk);
}
void give_subnet(Chip &chip) {
    EXPECT_EQ(chip->tag_rules().subnets.add({kA, 0x0A000000, 0xFF000000, {1, 3}}), Status::kOk);
}
void double_tag(Chip &chip) {
    chip.change(kA, [](Port &port) { port.tags = {DoubleTag::kExternal, kVlanTpid}; });
    EXPECT_EQ(chip->tag_rules().double_tags.add(kA, 10, {1, 3}), Status::kOk);
}
void trust_dscp(Chip &chip) {
    chip.change(kA, [](Port &port) { port.trust = Trust::kDscp; });
}

std::vector<Case> tag_cases() {
    return {
        {"untagged", nothing, kA, kFlooded, {"vlan.by=port", "priority.by=port"}},
        {"tagged", nothing, kA, kTagged, {"vlan.by=tag", "priority.by=tag", "priority.priority=5"}},
        {"translated", translate, kA, kTagged, {"vlan.by=translation", "priority.by=translation"}},
        {"a subnet", give_subnet, kA, kPacket, {"vlan.by=subnet", "priority.by=subnet", "priority.priority=3"}},
        {"double-tagged",
         double_tag,
         kA,
         kAddresses + vlan_tag(10) + kPayload,
         {"vlan.by=double_tag", "priority.by=double_tag"}},
        {"a trusted DSCP", trust_dscp, kA, kPacket, {"priority.by=dscp"}},
    };
}

void miss(Chip &chip, MissAction action) {
    chip.add_rule(3, 768, {{kPermit}});
    EXPECT_EQ(chip->set_miss_action(kB, action), Status::kOk);
}

std::vector<Case> rule_cases() {
    return {
        {"a rule drops",
         [](Chip &chip) { chip.rule({{kDropIt}}); },
         kA,
         kFlooded,
         {"rule.entry=768", "dropped.reason=rule"}},
        {"a rule changes",
         [](Chip &chip) {
             chip.rule({{kSetPriority, 6}, {kSetDscp, 10}});
         },
         kA,
         kPacket,
         {"changed.priority=6", "changed.dscp=10", "priority.priority=0"}},
        {"within a meter",
         [](Chip &chip) {
             EXPECT_EQ(chip->fields().meters().set(5, 8, 1s), Status::kOk);
             chip.rule({{kMeter, 0, 5}});
         },
         kA,
         kFlooded,
         {"meter.meter=5", "meter.within=true"}},
        {"over a meter",
         [](Chip &chip) {
             EXPECT_EQ(chip->fields().meters().set(5, 8, 1s), Status::kOk);
             chip.rule({{kMeter, 0, 5}});
             for (int i = 0; i < 100; ++i) {
                 chip.send(kA, kFlooded + Octets(900, 0));
             }
         },
         kA,
         kFlooded + Octets(900, 0),
         {"meter.within=false", "dropped.reason=meter"}},
    };
}

std::vector<Case> no_rule_cases() {
    const Octets from_b = kBroadcast + station(2) + kPayload;
    const auto missed = [](MissAction action) { return [action](Chip &chip) { miss(chip, action); }; };
    return {
        {"no rule, none", missed(MissAction::kNone), kB, from_b, {"no_rule.action=none"}},
        {"no rule, drop", missed(MissAction::kDrop), kB, from_b, {"no_rule.action=drop", "dropped.reason=rule"}},
        {"no rule, copy", missed(MissAction::kCopyToCpu), kB, from_b, {"no_rule.action=copy_to_cpu"}},
        {"no rule, to the CPU",
         missed(MissAction::kToCpu),
         kB,
         from_b,
         {"no_rule.action=to_cpu", "cpu_alone.reason=rule"}},
    };
}

}  // namespace

std::vector<Case> ingress_cases() {
    std::vector<Case> all = port_cases();
    for (const auto &part : {cpu_cases(), attack_cases(), tag_cases(), rule_cases(), no_rule_cases()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

}  // namespace vdevice::inspect::test
