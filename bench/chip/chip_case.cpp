// The cases: a chip with its tables, and the frames that it switches.
#include "bench/chip/chip_case.h"

#include <cstdio>
#include <cstdlib>

#include "bench/chip/rules.h"
#include "vdevice/chip/testing/packet_builder.h"

namespace bench {
namespace {

using namespace vdevice::chip;
using namespace vdevice::chip::test;

constexpr size_t kShort = 64;
constexpr size_t kLong = 1514;
constexpr size_t kFlows = 256;
constexpr size_t kAddresses = 8000;
constexpr size_t kRules = 900;
constexpr int kFloodPorts = 8;
constexpr int kTrunk = 1;
constexpr uint16_t kTagged = 0x6001;  // priority 3 in VLAN 1
constexpr uint8_t kSourceSide = 1;
constexpr uint8_t kDestinationSide = 2;

/** The station of a number on one side of the chip. */
Octets station(uint8_t side, size_t number) {
    constexpr unsigned kByteBits = 8;
    return {0x02, 0, side, 0, static_cast<uint8_t>(number >> kByteBits), static_cast<uint8_t>(number)};
}

Octets datagram(size_t octets, const Octets &destination, const Octets &source, const Octets &tag = {}) {
    Octets frame =
        destination + source + tag + ipv4({kUdp}, octets16(1000) + octets16(2000) + Octets(kPortBytes * 2, 0));
    frame.resize(octets, 0);
    return frame;
}

/** Stations behind kIn; the numbers are chosen so that none meets a full bucket in the chip's table. */
Octets near_station(size_t flow) {
    constexpr size_t kFirst = 100;
    return station(kSourceSide, kFirst + flow);
}

Octets far_station(size_t flow) {
    return station(kDestinationSide, flow);
}

/** The chip learns the stations behind kOut. */
void learn_far(Bench &bench, size_t flows) {
    for (size_t i = 0; i < flows; ++i) {
        bench.chip.receive(Time{}, kOut, datagram(kShort, near_station(i), far_station(i)));
    }
}

/** A frame for each of so many stations behind kOut; the chip knows them all. */
void add_flows(Bench &bench, size_t octets, size_t flows) {
    learn_far(bench, flows);
    for (size_t i = 0; i < flows; ++i) {
        bench.frames.push_back(datagram(octets, far_station(i), near_station(i)));
    }
}

template <size_t octets, size_t flows>
void prepare_flows(Bench &bench) {
    add_flows(bench, octets, flows);
}

/** One flow among the addresses of many others. */
void prepare_addresses(Bench &bench) {
    add_flows(bench, kShort, 1);
    bench.chip.receive(Time{}, kIn, bench.frames.front());
    learn_far(bench, kAddresses - 1);
    if (bench.chip.macs().size() != kAddresses) {
        std::fprintf(stderr, "the chip has learned %zu addresses only\n", bench.chip.macs().size());
        std::exit(EXIT_FAILURE);
    }
}

void prepare_all_addresses(Bench &bench) {
    add_flows(bench, kShort, kAddresses / 2);
}

template <void (*add_rules)(FieldTable &table, size_t count)>
void prepare_rules(Bench &bench) {
    add_flows(bench, kShort, 1);
    add_rules(bench.chip.fields().table(), kRules);
}

void prepare_flood(Bench &bench) {
    for (int port = kOut + 1; port < kOut + kFloodPorts; ++port) {
        bench.chip.set_link(port, true);
    }
    bench.frames.push_back(datagram(kShort, kBroadcast, near_station(0)));
}

void prepare_tagged(Bench &bench) {
    bench.chip.vlans().set_ports(1, Switch::all_ports(), PortSet{});
    add_flows(bench, kShort, 1);
    bench.frames = {datagram(kShort, far_station(0), near_station(0), vlan_tag(kTagged))};
}

void prepare_trunk(Bench &bench) {
    bench.chip.set_link(kOut + 1, true);
    bench.chip.create_trunk(kTrunk);
    bench.chip.set_trunk(kTrunk, {kOut, kOut + 1});
    add_flows(bench, kShort, kFlows);
}

constexpr ChipCase kCases[] = {
    {"unicast_64", prepare_flows<kShort, 1>, 1},
    {"unicast_1514", prepare_flows<kLong, 1>, 1},
    {"flows_256", prepare_flows<kShort, kFlows>, 1},
    {"addresses_8000", prepare_addresses, 1},
    {"flows_4000", prepare_all_addresses, 1},
    {"rules_1", prepare_rules<add_first_rule>, 1},
    {"rules_900_alike", prepare_rules<add_rules_alike>, 1},
    {"rules_900_mixed", prepare_rules<add_rules_mixed>, 1},
    {"rules_900_met", prepare_rules<add_rules_met>, 1},
    {"flood_8", prepare_flood, kFloodPorts},
    {"tagged", prepare_tagged, 1},
    {"trunk", prepare_trunk, 1},
};

}  // namespace

std::span<const ChipCase> chip_cases() {
    return kCases;
}

}  // namespace bench
