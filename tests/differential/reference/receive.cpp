// Frames received by the CPU, and the link scan.
#include <cstring>

#include "tests/differential/reference/tables.h"

namespace reference {
namespace {

uint32_t type_at(const uint8_t *at) {
    return uint32_t{at[0]} << 8 | at[1];
}

/** The frame after its tag is gone: what lies beyond the end cannot be read. */
struct Parse {
    adp_rx_frame_t *desc;
    uint32_t length; /**< of the stripped frame */

    [[nodiscard]] bool has(uint32_t at, uint32_t count = 1) const { return at + count <= length; }
    [[nodiscard]] uint8_t *at(uint32_t offset) const { return desc->frame + offset; }

    /** The tags from @p offset on; where the frame's own type stands, or 0. */
    [[nodiscard]] uint32_t walk(uint32_t offset, bool may_repeat) const {
        desc->vlan_tag = at(offset);
        offset += 4;
        if (!has(offset, 2)) {
            return 0;
        }
        if (type_at(at(offset)) != 0x8100) {
            return offset;
        }
        return may_repeat ? walk(offset, false) : 0;
    }

    [[nodiscard]] adp_status_t headers(uint32_t type, uint32_t h) const {
        if (type == 0x0800) {
            desc->ipv4_header = at(h);
            if (!has(h)) {
                return -1;
            }
            desc->l4_header = at(h + 4 * (*at(h) & 15u));
            if (!has(h + 9)) {
                return -1;
            }
            if (*at(h + 9) == 17) {
                desc->udp_header = desc->l4_header;
            }
        } else if (type == 0x86DD) {
            desc->ipv6_header = at(h);
            if (!has(h + 6)) {
                return -1;
            }
            if (*at(h + 6) != 0) {
                desc->l4_header = at(h + 40);
                if (*at(h + 6) == 17) {
                    desc->udp_header = at(h + 40);
                }
            } else if (!has(h + 41)) {
                return -1;
            } else {
                desc->l4_header = at(h + 40 + 8 * *at(h + 41) + 8);
            }
        }
        return 0;
    }
};

}  // namespace

adp_status_t adp_receive_frame(uint8_t *frame, uint8_t **out_frame, uint32_t length, uint16_t *out_length,
                               uint8_t *out_flag, adp_intf_t *out_intf) {
    length &= 0xFFFF;
    if (frame == nullptr || length < 18) {
        return -1;
    }
    *out_frame = frame;
    *out_intf = static_cast<uint32_t>(adp_phy_2_intf_id(frame[17] & 63u));
    std::memmove(frame + 12, frame + 18, length - 18);
    *out_length = static_cast<uint16_t>(length - 6);
    *out_flag = 0;
    return 0;
}

adp_status_t __adp_receive_frame(adp_rx_frame_t *desc, int32_t check) {
    const uint32_t length = desc->length & 0xFFFF;
    if (length < 18) {
        return -1;
    }
    desc->phy = desc->frame[17] & 63;
    const int32_t intf = adp_phy_2_intf_id(static_cast<uint32_t>(desc->phy));
    const uint32_t agg = GET_INTF_MAPPING_AGGINTF(static_cast<uint32_t>(intf));
    desc->intf = agg != 0 ? agg : static_cast<uint32_t>(intf);
    if (check == 1) {
        if (desc->vlan_tag == nullptr) {
            return -1;
        }
        const uint32_t vid = type_at(desc->vlan_tag + 2) & 0x0FFF;
        if (check_port_vlan_ability(desc->intf, static_cast<int32_t>(vid)) != 0) {
            return -1;
        }
    }
    std::memmove(desc->frame + 12, desc->frame + 18, length - 18);
    desc->length = (length - 10) & 0xFFFF;
    desc->ethernet_header = desc->frame;

    const Parse parse{desc, length - 6};
    if (!parse.has(12, 2)) {
        return -1;
    }
    uint32_t type_offset = 0;
    if (type_at(parse.at(12)) == 0x8100) {
        type_offset = parse.walk(12, true);
    } else if (type_at(parse.at(12)) == 0x9100) {
        if (!parse.has(16, 2)) {
            return -1;
        }
        type_offset = type_at(parse.at(16)) == 0x8100 ? parse.walk(16, false) : 16;
    }
    return type_offset == 0 ? -1 : parse.headers(type_at(parse.at(type_offset)), type_offset + 2);
}

adp_status_t adp_linkscan_register(adp_link_event_cb_t handler) {
    tables.link_handler = handler;
    return 0;
}

int32_t linkscan_handle_cb(uint32_t unit, uint32_t port, const uint32_t *info) {
    return tables.link_handler == nullptr ? 0 : tables.link_handler(unit, port, info[3]);
}

}  // namespace reference
