// __adp_receive_frame(): every field of the descriptor against a simple parser.
//
// Input: flags, the aggregation interface of the ingress port, the VLAN's members, the place of the VLAN tag that is
// checked, the upper half of the length, and the frame.
#include <algorithm>
#include <optional>

#include "tests/fuzz/fuzz.h"
#include "tests/support/library_state.h"

namespace {

using fuzz::Bytes;
using fuzz::expect;
using Place = std::optional<size_t>;

constexpr size_t kTagStart = 12;
constexpr size_t kTagLength = 6;
constexpr uint32_t kHalf = 32;
constexpr uint32_t kRecordWords = 16;
constexpr uint32_t kMembersWord = 2;

struct Situation {
    bool checks = false;
    bool has_tag = false;
    bool service_fails = false;
    uint32_t group = 0;
    uint64_t members = 0;
    size_t tag_place = 0;
    uint32_t upper = 0;
    Bytes frame;
};

/** The result of parsing: offsets in the stripped frame. */
struct Parsed {
    bool good = false;
    Place vlan, ipv4, ipv6, l4, udp;
};

Situation read(const uint8_t *data, size_t size) {
    constexpr uint32_t kGroupNumbers = 16;
    fuzz::Input input(data, size);
    Situation s;
    s.checks = input.flag();
    s.has_tag = input.flag();
    s.service_fails = input.flag();
    const uint32_t group = input.u8() % kGroupNumbers;
    s.group = group == 0 ? 0 : ADP_AGG_INTF(group);
    s.members = uint64_t{input.u32()} << kHalf;
    s.members |= input.u32();
    s.tag_place = input.u8();
    s.upper = input.u16();
    s.frame = input.rest();
    s.frame.resize(std::min<size_t>(s.frame.size(), UINT16_MAX));
    return s;
}

std::optional<uint32_t> number_at(const Bytes &frame, size_t place, size_t width) {
    if (place + width > frame.size()) {
        return std::nullopt;
    }
    return width == 1 ? frame[place] : frame[place] * 256u + frame[place + 1];
}

void parse_ipv4(const Bytes &frame, size_t header, Parsed *out) {
    out->ipv4 = header;
    const auto first = number_at(frame, header, 1);
    if (!first) {
        return;
    }
    out->l4 = header + 4 * (*first % 16);
    const auto protocol = number_at(frame, header + 9, 1);
    if (protocol && *protocol == 17) {
        out->udp = out->l4;
    }
    out->good = protocol.has_value();
}

void parse_ipv6(const Bytes &frame, size_t header, Parsed *out) {
    out->ipv6 = header;
    const auto next = number_at(frame, header + 6, 1);
    if (next && *next != 0) {
        out->l4 = header + 40;
        if (*next == 17) {
            out->udp = out->l4;
        }
        out->good = true;
    } else if (next) {
        const auto units = number_at(frame, header + 41, 1);
        if (units) {
            out->l4 = header + 40 + 8 * *units + 8;
            out->good = true;
        }
    }
}

Parsed parse(const Bytes &frame) {
    Parsed out;
    size_t place = 12;
    auto type = number_at(frame, place, 2);
    int tags_left = 2;
    if (type && *type == 0x9100) {
        place = 16;
        type = number_at(frame, place, 2);
        tags_left = 1;
    } else if (!type || *type != 0x8100) {
        return out;
    }
    while (type && *type == 0x8100) {
        if (tags_left-- == 0) {
            return out;
        }
        out.vlan = place;
        place += 4;
        type = number_at(frame, place, 2);
    }
    if (!type) {
        return out;
    }
    if (*type == 0x0800) {
        parse_ipv4(frame, place + 2, &out);
    } else if (*type == 0x86DD) {
        parse_ipv6(frame, place + 2, &out);
    } else {
        out.good = true;
    }
    return out;
}

void set_up(const Situation &s) {
    expect(library_test::fill_default_map(), "the map is filled");
    std::fill_n(intf_map_trunk, ADP_USER_PORTS + 1, s.group);
    recording::driver().reset();
    recording::driver().record(false);
    uint32_t record[kRecordWords] = {};
    record[kMembersWord] = static_cast<uint32_t>(s.members >> kHalf);
    record[kMembersWord + 1] = static_cast<uint32_t>(s.members);
    recording::driver().on("get_vlan_info").sets_object("record", record);
    if (s.service_fails) {
        recording::driver().fail_every("get_vlan_info");
    }
}

uint32_t interface_of(uint32_t port, uint32_t group) {
    const bool is_user_port = port > library_test::kPortOffset && port <= library_test::kPortOffset + ADP_USER_PORTS;
    if (!is_user_port && port != 0) {
        return UINT32_MAX;
    }
    return group != 0 ? group : (is_user_port ? port - library_test::kPortOffset : 0);
}

bool is_member(const Situation &s, uint32_t intf) {
    const uint32_t type = intf >> ADP_INTF_TYPE_SHIFT;
    const uint32_t bit = (intf & ADP_INTF_INDEX_MASK) + (type == ADP_INTF_TYPE_AGG ? ADP_USER_PORTS : 0);
    return !s.service_fails && type <= ADP_INTF_TYPE_AGG && bit < 64 && (s.members >> bit & 1) != 0;
}

/** The VLAN tag must not reach beyond the end of the frame that it begins in. */
bool is_let_in(const Situation &s, uint32_t intf) {
    return s.has_tag && (s.tag_place >= s.frame.size() || s.tag_place + 4 <= s.frame.size()) && is_member(s, intf);
}

void expect_place(const uint8_t *field, const Bytes &frame, const Place &place, const char *what) {
    expect(field == (place ? frame.data() + *place : nullptr), what);
}

void expect_parsed(const adp_rx_frame_t &desc, const Bytes &frame, const Situation &s, const uint8_t *given_tag,
                   adp_status_t status) {
    Bytes stripped = s.frame;
    stripped.erase(stripped.begin() + kTagStart, stripped.begin() + kTagStart + kTagLength);
    expect(std::equal(stripped.begin(), stripped.end(), frame.begin()), "the frame without its tag");
    const Parsed parsed = parse(stripped);
    expect((status == ADP_OK) == parsed.good, "the status");
    expect(desc.length == ((s.frame.size() - 10) & UINT16_MAX), "a length that is ten less");
    expect(desc.ethernet_header == frame.data(), "the Ethernet header");
    expect(desc.vlan_tag == (parsed.vlan ? frame.data() + *parsed.vlan : given_tag), "the VLAN tag");
    expect_place(desc.ipv4_header, frame, parsed.ipv4, "the IPv4 header");
    expect_place(desc.ipv6_header, frame, parsed.ipv6, "the IPv6 header");
    expect_place(desc.l4_header, frame, parsed.l4, "what follows the IP header");
    expect_place(desc.udp_header, frame, parsed.udp, "the UDP header");
}

void expect_unchanged(const adp_rx_frame_t &desc, const adp_rx_frame_t &before) {
    expect(desc.length == before.length && desc.ethernet_header == nullptr && desc.ipv4_header == nullptr &&
               desc.ipv6_header == nullptr && desc.l4_header == nullptr && desc.udp_header == nullptr &&
               desc.vlan_tag == before.vlan_tag,
           "a rejected frame does not change the other fields");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const Situation s = read(data, size);
    set_up(s);
    Bytes frame = s.frame;
    Bytes apart(4, 1);  // a tag outside the frame
    adp_rx_frame_t desc = {};
    desc.frame = frame.data();
    desc.length = static_cast<uint32_t>(s.upper << 16 | frame.size());
    if (s.has_tag) {
        desc.vlan_tag = s.tag_place < frame.size() ? frame.data() + s.tag_place : apart.data();
    }
    const adp_rx_frame_t before = desc;
    const adp_status_t status = __adp_receive_frame(&desc, s.checks ? 1 : 0);
    if (s.frame.size() < kTagStart + kTagLength) {
        expect(status == ADP_FAIL && frame == s.frame && desc.intf == 0 && desc.phy == 0, "a short frame is rejected");
        expect_unchanged(desc, before);
    } else {
        const uint32_t port = s.frame[kTagStart + kTagLength - 1] & 63;
        const uint32_t intf = interface_of(port, s.group);
        expect(desc.phy == static_cast<int32_t>(port) && desc.intf == intf, "ingress port and interface");
        if (s.checks && !is_let_in(s, intf)) {
            expect(status == ADP_FAIL && frame == s.frame, "a frame from outside the VLAN is rejected");
            expect_unchanged(desc, before);
        } else {
            expect_parsed(desc, frame, s, before.vlan_tag, status);
        }
    }
    library_test::drop_map();
    return 0;
}
