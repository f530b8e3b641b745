// The port map, the two directions of looking it up, and bitmaps translated by it.
#include <cstdlib>
#include <cstring>

#include "tests/differential/reference/tables.h"

namespace reference {

Tables tables;

bool takes_memory() {
    return std::malloc(1) != nullptr;
}

adp_status_t adp_set_max_phy_port_num(uint32_t n) {
    tables.max_port = n;
    tables.has_map = takes_memory();
    tables.map.assign(tables.has_map ? n + 1 : 0, adp_port_row_t{});
    tables.has_trunk_map = takes_memory();
    tables.trunk_map.assign(tables.has_trunk_map ? n + 1 : 0, 0);
    return tables.has_map && tables.has_trunk_map ? 0 : -1;
}

adp_status_t adp_get_max_phy_port_num(uint32_t *n) {
    *n = tables.max_port;
    return 0;
}

adp_status_t adp_add_cpu_port(uint32_t /*unused*/, uint32_t word1, uint32_t word2, uint32_t phy, uint32_t attributes) {
    return adp_add_phy_port(0, word1, word2, phy, attributes);
}

adp_status_t adp_add_phy_port(uint32_t index, uint32_t word1, uint32_t word2, uint32_t phy, uint32_t attributes) {
    if (!tables.has_map || index > tables.max_port) {
        return -1;
    }
    tables.map[index] = {word1, word2, phy, attributes};
    return 0;
}

int32_t adp_intf_2_phy_id(adp_intf_t intf) {
    if (intf > tables.max_port || type_of(intf) != 0 || !tables.has_map) {
        return -1;
    }
    return static_cast<int32_t>(tables.map[intf].phy);
}

int32_t adp_phy_2_intf_id(uint32_t phy) {
    for (uint32_t row = 0; row < tables.map.size(); ++row) {
        if (tables.map[row].phy == phy) {
            return static_cast<int32_t>(row);
        }
    }
    return -1;
}

int32_t adp_phy_2_intf_id_ex(uint32_t /*unused*/, uint32_t phy) {
    return adp_phy_2_intf_id(phy);
}

int32_t adp_intf_2_slot_id(adp_intf_t /*intf*/) {
    return 0;
}

uint32_t adp_intf_port_attributes(adp_intf_t intf) {
    return intf > tables.max_port || !tables.has_map ? 0 : tables.map[intf].attributes;
}

namespace {

template <typename LookUp>
adp_status_t translate(uint32_t *bitmap, LookUp look_up) {
    uint32_t result[2] = {0, 0};
    for (uint32_t n = 0; n <= 26; ++n) {
        if ((bitmap[0] >> n & 1) == 0) {
            continue;
        }
        int32_t to = look_up(n);
        if (to == -1) {
            to = static_cast<int32_t>(n);
        }
        if (to >= 0 && to < 64) {
            result[to / 32] |= 1u << to % 32;
        }
    }
    bitmap[0] = result[0];
    bitmap[1] = result[1];
    return 0;
}

}  // namespace

adp_status_t adp_api_xlate_port_pbmp_a2p(uint32_t *bitmap) {
    return translate(bitmap, adp_phy_2_intf_id);
}

adp_status_t adp_api_xlate_port_pbmp_p2a(uint32_t *bitmap) {
    return translate(bitmap, adp_intf_2_phy_id);
}

PortSet PortSet::from(const uint32_t *words) {
    PortSet set;
    std::memcpy(set.word.data(), words, sizeof set.word);
    return set;
}

PortSet to_physical(const PortSet &interfaces) {
    PortSet ports;
    for (uint32_t n = 0; n < 256; ++n) {
        if (interfaces.has(n)) {
            ports.add(adp_intf_2_phy_id(n));
        }
    }
    return ports;
}

PortSet to_interfaces(const PortSet &ports) {
    PortSet interfaces;
    for (uint32_t n = 0; n < 256; ++n) {
        if (ports.has(n)) {
            interfaces.add(adp_phy_2_intf_id(n));
        }
    }
    return interfaces;
}

}  // namespace reference
