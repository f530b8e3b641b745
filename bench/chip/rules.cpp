// Conditions that no frame of the benchmark meets, spread over the groups of the field processor.
#include "bench/chip/rules.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench/chip/chip_case.h"
#include "vdevice/chip/frame/ip_header.h"

namespace bench {
namespace {

using namespace vdevice::chip;

using Conditions = std::vector<Qualifier>;

constexpr uint32_t kAll = 0xFFFFFFFF;
constexpr uint32_t kOtherNetwork = 0x0A090000;  // 10.9.0.0; the frames are from 10.0.0.0
constexpr uint32_t kPrefix24 = 0xFFFFFF00;
constexpr uint32_t kFirstOtherPort = 10000;
constexpr uint32_t kFirstOtherVid = 100;
constexpr uint32_t kPermit = 200;
constexpr uint32_t kLastPriority = 1;
constexpr uint32_t kPriority = 2;

/** Where the groups' entries begin, the wide groups' last: those are the first that frames meet least. */
constexpr struct {
    int group;
    uint32_t first;
    uint32_t size;
} kSlices[] = {{9, 0, 256},   {8, 256, 128}, {7, 384, 128},  {6, 512, 128}, {4, 640, 128},
               {3, 768, 128}, {2, 896, 128}, {5, 1024, 256}, {1, 1280, 256}};

void expect(Status status) {
    if (status != Status::kOk) {
        std::fprintf(stderr, "the chip refuses a rule: %d\n", static_cast<int>(status));
        std::exit(EXIT_FAILURE);
    }
}

void add_rule(FieldTable &table, int group, uint32_t entry, const Conditions &conditions,
              uint32_t priority = kPriority) {
    expect(table.create(group, entry));
    for (const Qualifier &condition : conditions) {
        expect(table.qualify(entry, condition));
    }
    Action permit;
    expect(make_action(kPermit, {}, permit));
    expect(table.add_action(entry, permit));
    expect(table.set_priority(entry, static_cast<int32_t>(priority)));
    expect(table.install(entry));
}

/** Fills the groups one after the other. */
template <typename MakeConditions>
void add_rules(FieldTable &table, size_t count, MakeConditions make_conditions) {
    uint32_t number = 0;
    for (const auto &slice : kSlices) {
        for (uint32_t i = 0; i < slice.size && number < count; ++i) {
            add_rule(table, slice.group, slice.first + i, make_conditions(number++));
        }
    }
}

Conditions from_station(uint32_t number) {
    return {qualifier(Field::kSourceIpv4, kOtherNetwork + number, kAll)};
}

Conditions of_several_kinds(uint32_t number) {
    const Qualifier here = qualifier(Field::kInPorts, 1U << kIn, kAll);
    switch (number % 6) {
        case 0:
            return from_station(number);
        case 1:
            return {here, qualifier(Field::kSourceMac, 0, 0),
                    Qualifier{Field::kDestinationMac, {0x0400, number}, {kAll, kAll}}};
        case 2:
            return {here, qualifier(Field::kProtocol, kUdp, kAll),
                    qualifier(Field::kDestinationPort, kFirstOtherPort + number, kAll)};
        case 3:
            return {qualifier(Field::kOuterVid, kFirstOtherVid + number, kAll), qualifier(Field::kIpKind, 4, 4)};
        case 4:
            return {qualifier(Field::kDestinationIpv4, kOtherNetwork + (number << 8), kPrefix24)};
        default:
            return {qualifier(Field::kEtherType, kFirstOtherPort + number, kAll)};
    }
}

}  // namespace

void add_first_rule(FieldTable &table, size_t /*count*/) {
    add_rules(table, 1, from_station);
}

void add_rules_alike(FieldTable &table, size_t count) {
    add_rules(table, count, from_station);
}

void add_rules_mixed(FieldTable &table, size_t count) {
    add_rules(table, count, of_several_kinds);
}

void add_rules_met(FieldTable &table, size_t count) {
    add_rules_mixed(table, count - 1);
    const auto &last = kSlices[std::size(kSlices) - 1];
    add_rule(table, last.group, last.first + last.size - 1, {qualifier(Field::kProtocol, kUdp, kAll)}, kLastPriority);
}

}  // namespace bench
