// Random values by the kind and the name of what they are for.
#include "tests/differential/values.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace differential {

using calls::CallId;
using calls::Element;
using calls::Kind;
using calls::Param;

uint32_t any_number(Random &random) {
    constexpr uint32_t kEdges[] = {10,     100,   1000,    10000,      4095,       4096,       0x10005,
                                   0xFFFF, 0x100, 0x188A8, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0xFFFFFFFE};
    constexpr uint32_t kTiny = 4;
    constexpr uint32_t kSmall = 34;
    switch (random.below(10)) {
        case 0:
        case 1:
        case 2:
        case 3:
            return random.below(kTiny);
        case 4:
        case 5:
        case 6:
            return random.below(kSmall);
        case 7:
        case 8:
            return random.one_of(kEdges);
        default:
            return random.next();
    }
}

uint32_t any_interface(Random &random) {
    constexpr uint32_t kAgg = 0x10000000;
    constexpr uint32_t kOdd[] = {27, 28, 30, 33, 34, 63, 64, 255, 0x0FFFFFFF, kAgg | 34, 0x1FFFFFFF, 0xFFFFFFFF};
    constexpr uint32_t kUserPorts = 26;
    constexpr uint32_t kTypeShift = 28;
    const uint32_t choice = random.below(20);
    if (choice < 9) {
        return 1 + random.below(kUserPorts);
    }
    if (choice < 16) {
        return kAgg | (1 + random.below(3));
    }
    if (choice == 16) {
        return kAgg | random.below(10);
    }
    if (choice == 17) {
        return random.one_in(2) ? 0 : random.below(10) | random.below(16) << kTypeShift;
    }
    return choice == 18 ? random.one_of(kOdd) : random.below(34);
}

namespace {

uint32_t bitmap_word(Random &random) {
    constexpr uint32_t kUserPortBits = 0x07FFFFFE;
    switch (random.below(8)) {
        case 0:
            return 0;
        case 1:
            return random.next();
        case 2:
            return kUserPortBits | (random.one_in(2) ? 1 : 0);
        case 3:
            return 1u << random.below(32);
        default:
            return random.sparse() & kUserPortBits;
    }
}

uint32_t vlan_id(Random &random) {
    constexpr uint32_t kIds[] = {0, 1, 2, 3, 4, 100, 4094, 4095, 4096, 0xFFFF, 0x10001, 0x11005, 0xFFFFFFFF};
    return random.one_in(8) ? random.next() : random.one_of(kIds);
}

uint32_t group_number(Random &random) {
    return random.one_in(10) ? any_number(random) : random.below(7);
}

uint32_t up_to(Random &random, uint32_t most) {
    return random.one_in(12) ? any_number(random) : random.below(most + 1);
}

using Give = uint32_t (*)(Random &);

/** Numbers by the parameter's name. A name that is not listed gets any number. */
constexpr struct {
    std::string_view name;
    Give give;
} kNumbers[] = {
    {"intf", any_interface},
    {"source", any_interface},
    {"destination", any_interface},
    {"agg_intf",
     [](Random &random) { return random.one_in(8) ? any_interface(random) : 0x10000000u | (1 + random.below(3)); }},
    {"vid_or_intf", any_interface},
    {"selector", [](Random &random) { return up_to(random, 15); }},
    {"mode", [](Random &random) { return up_to(random, 5); }},
    {"map_type", [](Random &random) { return up_to(random, 3); }},
    {"dev_id", [](Random &random) { return random.below(4); }},
    {"group", [](Random &random) { return up_to(random, 9); }},
    {"stg", group_number},
    {"word0", bitmap_word},
    {"word1", [](Random &random) { return random.one_in(3) ? bitmap_word(random) : 0; }},
    {"storm_code", [](Random &random) { return random.one_in(6) ? any_number(random) : random.below(18); }},
    {"submodule_type", [](Random &random) { return random.one_in(6) ? up_to(random, 45) : 1 + random.below(4); }},
    {"entity_id", [](Random &random) { return random.one_in(8) ? any_number(random) : random.below(5); }},
    {"rule_id", [](Random &random) { return random.one_in(8) ? any_number(random) : random.below(5); }},
    {"action_type", [](Random &random) { return random.one_in(3) ? 53u : random.below(60); }},
    {"qualify_type", [](Random &random) { return random.one_in(3) ? 332u : random.below(62); }},
    {"true_entry", [](Random &random) { return 1020 + random.below(520); }},
    {"port_count", [](Random &random) { return random.one_in(3) ? random.below(70) : 26u; }},
    {"index", [](Random &random) { return random.one_in(12) ? any_number(random) : random.below(28); }},
    {"phy",
     [](Random &random) {
         constexpr uint32_t kOdd[] = {0xFFFFFFFF, 57, 63, 64, 255, 256, 300, 0x80000000};
         return random.one_in(10) ? random.one_of(kOdd) : random.below(60);
     }},
    {"port", [](Random &random) { return random.one_in(10) ? any_number(random) : random.below(32); }},
    {"count", [](Random &random) { return random.one_in(4) ? random.below(14) : random.below(5); }},
    {"max", [](Random &random) { return random.one_in(3) ? random.below(12) : 26u; }},
    {"chunk_size", [](Random &random) { return random.below(70); }},
    {"chunk_index", [](Random &random) { return random.below(4); }},
    {"kind", [](Random &random) { return up_to(random, 2); }},
    {"scope", [](Random &random) { return up_to(random, 3); }},
    {"session", [](Random &random) { return up_to(random, 5); }},
    {"pin", [](Random &random) { return up_to(random, 33); }},
    {"authorised", [](Random &random) { return random.one_in(6) ? any_number(random) : random.below(2); }},
    {"is_up", [](Random &random) { return random.below(2); }},
    {"opcode", [](Random &random) { return up_to(random, 9); }},
    {"check_vlan", [](Random &random) { return random.below(3); }},
    {"unit", [](Random &random) { return random.one_in(4) ? any_number(random) : 0u; }},
};

}  // namespace

uint32_t number_for(Random &random, std::string_view name) {
    if (name.ends_with("vid")) {
        return vlan_id(random);
    }
    const auto *const found =
        std::find_if(std::begin(kNumbers), std::end(kNumbers), [name](const auto &row) { return row.name == name; });
    return found == std::end(kNumbers) ? any_number(random) : found->give(random);
}

namespace {

void fill_mac(Random &random, uint8_t *to) {
    constexpr uint8_t kReserved[] = {0x01, 0x80, 0xC2, 0x00, 0x00, 0x00};
    const uint32_t choice = random.below(8);
    std::memset(to, 0, sizeof kReserved);
    if (choice >= 3) {
        std::memcpy(to, kReserved, sizeof kReserved);
    }
    if (choice >= 5) {
        to[5] = static_cast<uint8_t>(random.below(3));
    }
}

uint32_t output_number(Random &random, CallId id) {
    constexpr uint32_t kSpeeds[] = {1000, 1000, 1000, 10000, 10000, 10000, 100, 0};
    constexpr uint32_t kVlanCounts[] = {1, 2, 5, 1023, 1024, 1025, 4095, 4096, 4097, 0x80000000};
    constexpr uint32_t kGroupCounts[] = {63, 64, 65, 0x80000000};
    switch (id) {
        case CallId::user_port_speed_max:
            return random.one_of(kSpeeds);
        case CallId::user_port_ability_advert_get:
            return random.next();
        case CallId::user_port_link_status_get:
        case CallId::user_fiberport_link_status_get:
            return random.below(8) == 0 ? 2 : random.below(2);
        case CallId::get_group_by_interface:
            return random.one_in(3) ? 0 : 0x10000000u | random.below(10);
        case CallId::user_stg_stg_count_get:
            return random.one_in(6) ? random.one_of(kGroupCounts) : random.below(8);
        case CallId::user_stg_vlan_count_get:
            return random.one_in(4) ? random.one_of(kVlanCounts) : random.below(8);
        case CallId::user_stg_each_time_list:
        case CallId::user_stg_vlan_each_time_list:
            return random.below(8);
        default:
            return any_number(random);
    }
}

void fill_element(Random &random, CallId id, const Element &element, void *to);

void fill_struct(Random &random, CallId id, const Element &element, uint8_t *to) {
    for (const auto &field : element.layout->fields) {
        const size_t size = field.element.size;
        for (uint32_t n = 0; n < field.count; ++n) {
            fill_element(random, id, field.element, to + field.offset + n * size);
        }
    }
}

void fill_element(Random &random, CallId id, const Element &element, void *to) {
    constexpr unsigned kHigh = 32;
    switch (element.kind) {
        case Kind::kStruct:
            fill_struct(random, id, element, static_cast<uint8_t *>(to));
            break;
        case Kind::kU64: {
            const uint64_t high = any_number(random);
            calls::store(Kind::kU64, to, static_cast<int64_t>(high << kHigh | random.next()));
            break;
        }
        default:
            calls::store(element.kind, to, element.is_ports ? random.sparse() : output_number(random, id));
    }
}

/** A VLAN's record: nothing but the member bitmap counts, in words of this machine's byte order. */
void fill_vlan_record(Random &random, void *to) {
    const uint32_t words[] = {random.next() & random.next(), random.next() | random.next()};
    std::memcpy(static_cast<uint8_t *>(to) + 8, words, sizeof words);
}

}  // namespace

void fill_output(Random &random, CallId id, const Param &param, void *to, size_t count) {
    if (id == CallId::user_l2_bpdu_get) {
        fill_mac(random, static_cast<uint8_t *>(to));
        return;
    }
    if (id == CallId::get_vlan_info) {
        fill_vlan_record(random, to);
        return;
    }
    const size_t size = param.element.size;
    for (size_t n = 0; n < count; ++n) {
        fill_element(random, id, param.element, static_cast<uint8_t *>(to) + n * size);
    }
}

}  // namespace differential
