// Where a frame of the CPU goes: a VLAN's members, lists and floods, and the words of the tag.
#include <cstring>

#include "platform/device_services.h"
#include "tests/differential/reference/destinations.h"

namespace reference {

uint32_t with_port(uint32_t word1, int32_t port) {
    return (word1 & 0xFE000000) | (static_cast<uint32_t>(port) & 0x01FFFFFF);
}

namespace {

/** A VLAN's members, or nothing when the record cannot be fetched. */
std::optional<uint64_t> members_of(uint32_t vid) {
    uint8_t record[64] = {};
    if (get_vlan_info(vid, record) != 0) {
        return std::nullopt;
    }
    uint32_t words[2];
    std::memcpy(words, record + 8, sizeof words);
    return uint64_t{words[0]} << 32 | words[1];
}

bool has(uint64_t members, uint32_t intf) {
    const uint32_t bit = is_agg(intf) ? 26 + index_of(intf) : intf;
    return bit < 64 && (members >> bit & 1) != 0;
}

std::vector<uint32_t> nodes_of(const adp_list_link_t *list) {
    std::vector<uint32_t> nodes;
    for (const adp_list_link_t *link = list->next; link != list; link = link->next) {
        nodes.push_back(reinterpret_cast<const adp_tx_dest_t *>(link)->intf);
    }
    return nodes;
}

using Answer = std::optional<Destination>;

/** Modes 2, 3 and 4: the last node decides. */
Answer one_port(uint32_t mode, uint32_t source, const adp_list_link_t *list, uint32_t vid) {
    Destination to;
    to.word1 = mode == 3 ? 0xDA000000 : 0x78000000;
    if (list == nullptr) {
        return std::nullopt;
    }
    const bool checks = mode != 3 || vid != 0xFFFFFFFF;
    const auto members = checks ? members_of(vid) : 0;
    if (!members) {
        return std::nullopt;
    }
    for (const uint32_t intf : nodes_of(list)) {
        const bool passes_source = mode == 4 && intf == source;
        if (passes_source || index_of(intf) == 0) {
            if (!passes_source && type_of(intf) > 1) {
                return std::nullopt;
            }
            continue;
        }
        if (type_of(intf) > 1 || (checks && !has(*members, intf))) {
            return std::nullopt;
        }
        const uint32_t port_intf = is_agg(intf) ? manager_of(intf) : intf;
        if (port_intf != 0) {
            to.word1 = with_port(to.word1, adp_intf_2_phy_id(port_intf));
        }
    }
    return to;
}

Answer listed_ports(uint32_t source, const adp_list_link_t *list, uint32_t vid) {
    Destination to;
    to.word1 = 0x98000000;
    const bool checks = vid != 0xFFFFFFFF;
    const auto members = checks ? members_of(vid) : 0;
    if (!members) {
        return std::nullopt;
    }
    for (const uint32_t intf : nodes_of(list)) {
        if (intf == source || index_of(intf) == 0 || type_of(intf) > 1 || (checks && !has(*members, intf))) {
            continue;
        }
        const uint32_t port_intf = is_agg(intf) ? manager_of(intf) : intf;
        if (port_intf != 0) {
            to.add(adp_intf_2_phy_id(port_intf));
        }
    }
    return to.has_port ? Answer(to) : std::nullopt;
}

Answer flooded_ports(uint32_t source, uint32_t vid) {
    Destination to;
    const bool checks = vid != 0xFFFFFFFF;
    to.word1 = checks ? 0x98000000 : 0xF8000000;
    const auto members = checks ? members_of(vid) : ~uint64_t{0};
    if (!members) {
        return std::nullopt;
    }
    for (uint32_t n = 1; n <= 26; ++n) {
        if (n != source && has(*members, n)) {
            to.add(adp_intf_2_phy_id(n));
        }
    }
    for (uint32_t g = 1; checks && g <= 8; ++g) {
        const uint32_t agg = 0x10000000u + g;
        if (agg != source && has(*members, agg) && manager_of(agg) != 0) {
            to.add(adp_intf_2_phy_id(manager_of(agg)));
        }
    }
    return to.has_port ? Answer(to) : std::nullopt;
}

}  // namespace

std::optional<Destination> destination_of(uint32_t source, const adp_list_link_t *list, uint32_t vid, uint32_t mode) {
    if (mode == 1) {
        return Destination{0x38000000, 0, true};
    }
    if (mode != 0) {
        return one_port(mode, source, list, vid);
    }
    return list != nullptr ? listed_ports(source, list, vid) : flooded_ports(source, vid);
}

void adp_bcmtag_dest_port_intf_2_phy(uint8_t *tag) {
    const auto word_at = [&](uint32_t at) {
        return uint32_t{tag[at]} << 24 | uint32_t{tag[at + 1]} << 16 | uint32_t{tag[at + 2]} << 8 | tag[at + 3];
    };
    const auto put = [&](uint32_t at, uint32_t word) {
        for (uint32_t n = 0; n < 4; ++n) {
            tag[at + n] = static_cast<uint8_t>(word >> (24 - 8 * n));
        }
    };
    const uint32_t opcode = tag[0] >> 5;
    const uint32_t word1 = word_at(0);
    const uint32_t word2 = word_at(4);
    if (opcode == 3 || opcode == 5 || opcode == 6) {
        put(0, with_port(word1, adp_intf_2_phy_id(word1 & 0x01FFFFFF)));
    }
    if (opcode != 4) {
        return;
    }
    Destination to;
    for (uint32_t i = 0; i < 25; ++i) {
        if ((word1 >> i & 1) != 0) {
            to.add(adp_intf_2_phy_id(i));
        }
    }
    for (uint32_t j = 0; j < 32; ++j) {
        const int32_t port = adp_intf_2_phy_id(25 + j);
        if ((word2 >> j & 1) != 0 && port >= 25) {
            to.add(port);
        }
    }
    put(0, (word1 & 0xFE000000) | to.word1);
    put(4, to.word2);
}

adp_status_t check_port_vlan_ability(adp_intf_t intf, int32_t vid) {
    const auto members = members_of(static_cast<uint32_t>(vid));
    if (!members || type_of(intf) > 1) {
        return -1;
    }
    return has(*members, intf) ? 0 : -1;
}

}  // namespace reference
