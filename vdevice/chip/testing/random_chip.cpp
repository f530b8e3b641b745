// Random settings, a function for each kind, and random frames.
#include "vdevice/chip/testing/random_chip.h"

namespace vdevice::chip::test {
namespace {

constexpr int kPorts = 8;
constexpr uint32_t kMicroseconds = 700;
constexpr RateLimit kTight{500, 16};

}  // namespace

RandomChip::RandomChip(unsigned seed) : random_{seed} {
    for (int port = 0; port < kPorts; ++port) {
        chip_.set_link(port, true);
    }
    chip_.vlans().create({2, 3});
    chip_.vlans().add_ports({2, 3}, PortSet::range(0, kPorts - 1), PortSet::range(4, kPorts - 1));
    chip_.stp().create(1);
    chip_.set_attack_filter(true);
    chip_.mirrors().set_enabled(true);
}

PortSet RandomChip::ports() {
    PortSet set;
    for (int port = 0; port < kPorts; ++port) {
        set.put(port, !is_one_in(4));
    }
    return set;
}

Mac RandomChip::mac() {
    return Mac::at(station(static_cast<uint8_t>(pick(1, 12))), 0);
}

TagChange RandomChip::tag_change() {
    return {vid(), is_one_in(2) ? TagChange::kKeepPriority : number(0, 7)};
}

template <typename Change>
void RandomChip::change_port(Change change) {
    chip_.change_port(port(), [&](Port &port) {
        change(port);
        return Status::kOk;
    });
}

void RandomChip::change() {
    constexpr void (RandomChip::*kChanges[])() = {
        &RandomChip::change_link,    &RandomChip::change_port_rules, &RandomChip::change_port_tags,
        &RandomChip::change_vlan,    &RandomChip::change_addresses,  &RandomChip::change_port_limits,
        &RandomChip::change_groups,  &RandomChip::change_learning,   &RandomChip::change_spanning_tree,
        &RandomChip::change_tags,    &RandomChip::change_traps,      &RandomChip::change_trunk,
        &RandomChip::change_mirrors, &RandomChip::change_rule,       &RandomChip::change_priorities,
        &RandomChip::change_queues,
    };
    (this->*kChanges[pick(0, static_cast<int>(std::size(kChanges)) - 1)])();
}

void RandomChip::receive() {
    now_ += std::chrono::microseconds{number(0, kMicroseconds)};
    if (is_one_in(100)) {
        now_ += std::chrono::seconds{100};
        chip_.tick(now_);
    }
    const Arrival next = arrival();
    chip_.receive(now_, next.port, next.frame);
}

void RandomChip::live(int frames) {
    for (int frame = 0; frame < frames; ++frame) {
        if (is_one_in(3)) {
            change();
        }
        receive();
    }
}

void RandomChip::change_link() {
    chip_.set_link(port(), !is_one_in(5));
    chip_.set_enabled(port(), !is_one_in(10));
    chip_.gpio().drive(pick(0, 31), is_one_in(2));
}

void RandomChip::change_port_rules() {
    chip_.set_egress(port(), is_one_in(3) ? ports() : kAllPorts);
    chip_.set_pvid(port(), vid());
    change_port([&](Port &port) {
        port.jumbo = !is_one_in(4);
        port.loopback = is_one_in(6) ? 1 : 0;
        port.learning = is_one_in(4) ? kLearnModes[pick(0, 4)] : kNormalLearning;
        port.groups.uses_entries = !is_one_in(4);
        port.groups.ipv4_miss = static_cast<GroupMiss>(pick(0, 2));
    });
}

void RandomChip::change_port_tags() {
    change_port([&](Port &port) {
        port.tags.mode = is_one_in(4) ? static_cast<DoubleTag>(pick(0, 2)) : DoubleTag::kOff;
        port.tags.tpid = is_one_in(4) ? 0x88A8 : kVlanTpid;
        port.trust = static_cast<Trust>(pick(0, 3));
        port.untagged_priority = number(0, 7);
    });
}

void RandomChip::change_port_limits() {
    const RateLimit limit = is_one_in(3) ? kTight : RateLimit{};
    change_port([&](Port &port) {
        port.storm.of(kStormTypeTable[number(0, 3)].type).limiter.set(limit, now_);
        if (is_one_in(4)) {
            port.policer.set(limit, now_);
        }
    });
}

void RandomChip::change_vlan() {
    const PortSet members = ports();
    chip_.vlans().set_ports(vid(), members, members & ports());
    if (is_one_in(8)) {
        chip_.destroy_vlans({3, 3});
    } else {
        chip_.vlans().create({3, 3});
    }
}

void RandomChip::change_addresses() {
    MacEntry entry;
    entry.mac = mac();
    entry.port = port();
    entry.is_static = is_one_in(2);
    entry.last_seen = now_;
    entry.drops_to = is_one_in(8);
    entry.drops_from = is_one_in(8);
    entry.is_given_to_trunk = is_one_in(6);
    entry.trunk = entry.is_given_to_trunk ? pick(0, 1) : MacEntry::kNoTrunk;
    chip_.add_mac(entry, vid());
    chip_.macs().remove(mac(), static_cast<Vid>(vid()));
}

void RandomChip::change_groups() {
    const Mac group = Mac::at(Octets{0x01, 0, 0x5E, 1, 0, static_cast<uint8_t>(pick(1, 3))}, 0);
    if (is_one_in(3)) {
        chip_.remove_group(group, vid());
    } else {
        chip_.add_group(group, vid(), ports());
    }
    chip_.group_rules().knows_ipv4 = !is_one_in(4);
}

void RandomChip::change_learning() {
    constexpr LearnLimits::Limit kFew = 4;
    chip_.limits().of_port(port()) = is_one_in(2) ? kFew : LearnLimits::kNoLimit;
    change_port([&](Port &port) {
        if (is_one_in(4)) {
            port.violations.forget();
        }
    });
    chip_.limits().of_vlan(static_cast<Vid>(vid())) = is_one_in(4) ? kFew : LearnLimits::kNoLimit;
}

void RandomChip::change_trunk() {
    const int trunk = pick(0, 1);
    const std::vector<int> members = trunk == 0 ? std::vector{1, 2, 3} : std::vector{6, 7};
    chip_.create_trunk(trunk);
    if (is_one_in(4)) {
        chip_.set_trunk(trunk, {});
        chip_.destroy_trunk(trunk);
        return;
    }
    chip_.set_trunk_configured(trunk, members);
    chip_.set_trunk(trunk, is_one_in(2) ? members : std::vector{members.front()});
    chip_.set_trunk_balance(trunk, number(1, 6));
    chip_.set_hash_sides({is_one_in(2), true});
}

void RandomChip::change_spanning_tree() {
    chip_.stp().add_vlan(pick(0, 1), vid());
    chip_.stp().set_state(pick(0, 1), port(), is_one_in(4) ? number(0, 4) : 4);
}

void RandomChip::change_tags() {
    TagRules &rules = chip_.tag_rules();
    const int on = port();
    const uint32_t from = vid();
    for (VidMap *map : {&rules.ingress, &rules.egress, &rules.double_tags}) {
        map->remove(on, from);
        if (is_one_in(3)) {
            map->add(on, from, tag_change());
        }
    }
    rules.subnets.clear();
    if (is_one_in(2)) {
        rules.subnets.add({on, 0x0A000000, 0xFFFFFF00, tag_change()});
    }
}

void RandomChip::change_traps() {
    chip_.traps().lldp = is_one_in(2);
    chip_.snooping() = {is_one_in(2), is_one_in(2), is_one_in(2)};
    chip_.reserved_macs().set(number(20, 22), is_one_in(4) ? mac() : ReservedMacs::kFree);
}

/** A rule of one of three groups for what comes in on a port, with one or two actions. */
void RandomChip::change_rule() {
    constexpr struct {
        int group;
        uint32_t entry;
    } kRules[] = {{3, 768}, {4, 640}, {9, 10}, {9, 11}};
    constexpr uint32_t kActions[] = {1, 11, 30, 33, 53, 200, 201, 202, 203, 204, 205, 206};
    const auto &[group, entry] = kRules[pick(0, 3)];
    FieldTable &table = chip_.fields().table();
    table.destroy(entry);
    chip_.fields().meters().set(number(1, 3), 200, now_);
    chip_.set_miss_action(port(), is_one_in(6) ? static_cast<MissAction>(pick(0, 3)) : MissAction::kNone);
    if (is_one_in(2)) {
        return;
    }
    table.create(group, entry);
    table.qualify(entry, qualifier(Field::kInPorts, 1U << number(0, kPorts - 1), ~uint32_t{0}));
    for (int count = pick(1, 2); count > 0; --count) {
        Action action;
        make_action(kActions[pick(0, 11)], {{number(1, 3)}, number(1, 3)}, action);
        table.add_action(entry, action);
    }
    table.set_priority(entry, pick(1, 9));
    table.install(entry);
}

void RandomChip::change_mirrors() {
    constexpr uint32_t kModes[] = {0, 2, 4, 6};
    const uint32_t session = number(0, 1);
    chip_.mirrors().set_port(session, port(), pick(4, 5), kModes[pick(0, 3)]);
    chip_.mirrors().set_flow_destination(number(1, 3), port());
    chip_.mirrors().set_disabled(session, is_one_in(3));
}

void RandomChip::change_priorities() {
    PriorityRules &rules = chip_.priority_rules();
    const DscpRow row{static_cast<uint8_t>(pick(0, 63)), static_cast<uint8_t>(pick(0, 7))};
    if (is_one_in(2)) {
        rules.dscps.set(number(0, 3), row);
    } else {
        rules.dscps.set(port(), number(0, 3), row);
    }
    rules.defaults_to_port = is_one_in(2);
}

void RandomChip::change_queues() {
    chip_.queue_map().set(port(), number(0, 7), number(0, 7));
    chip_.set_shaper(now_, port(), is_one_in(2) ? RateLimit{} : RateLimit{400, 16});
    chip_.set_scheduler(now_, port(), {static_cast<SchedulerMode>(pick(0, 2)), {1, 2, 3, 4, 5, 6, 7, 0}});
}

Octets RandomChip::cpu_tag() {
    const unsigned opcode = is_one_in(2) ? 1 : number(0, 7);
    return transmit_tag(opcode, opcode == 4 || opcode == 7 ? number(0, 255) : number(0, kPorts), 0);
}

Arrival RandomChip::arrival() {
    const Octets groups[] = {kBroadcast,
                             {0x01, 0, 0x5E, 1, 0, 1},
                             {0x01, 0, 0x5E, 1, 0, 2},
                             {0x01, 0, 0x5E, 0, 0, 5},
                             {0x01, 0x80, 0xC2, 0, 0, 0x0E},
                             {0x01, 0x80, 0xC2, 0, 0, 0x10}};
    const Octets destination = is_one_in(3) ? groups[pick(0, 5)] : station(static_cast<uint8_t>(pick(1, 12)));
    const int in = port();
    const Octets tag =
        is_one_in(2) ? vlan_tag(static_cast<uint16_t>(number(0, 7) << kPcpShift | number(0, 3))) : Octets{};
    const Octets payloads[] = {
        octets16(0x88CC) + Octets(46, 0), kPayload, ipv4({.protocol = 2, .tos = 4}, Octets(30, 1)),
        ipv4({.protocol = kUdp, .destination = {224, 0, 0, 5}, .tos = 8}, octets16(7) + octets16(8) + Octets(30, 2)),
        ipv4({.protocol = kUdp}, octets16(9) + octets16(8) + Octets(is_one_in(8) ? 1500 : 60, 3))};
    return {in, destination + station(static_cast<uint8_t>(pick(1, 12))) + (in == kCpuPort ? cpu_tag() : Octets{}) +
                    tag + payloads[pick(0, 4)]};
}

}  // namespace vdevice::chip::test
