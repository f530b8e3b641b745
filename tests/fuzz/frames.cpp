// The calls that take a frame or a tag, with any bytes: no access beyond the frame, a rejected frame is unchanged, a
// sent one is the given frame with a tag inserted, and no memory or descriptor is left. What the fields are is said by
// the reference model of tests/differential.
//
// Input: the call, a map row and its port, the call's numbers, and the frame.
#include <algorithm>
#include <cerrno>
#include <memory>

#include "tests/fuzz/fuzz.h"
#include "tests/support/fake_system.h"
#include "tests/support/library_state.h"

namespace {

using fuzz::Bytes;
using fuzz::expect;

constexpr size_t kAddresses = 12;
constexpr size_t kReceiveTag = 6;
constexpr size_t kTransmitTag = 10;
constexpr size_t kUpperHalf = 16;

/** Of exactly its size, so that the sanitizer finds every access beyond it. */
Bytes read_frame(fuzz::Input *input) {
    Bytes frame = input->rest();
    frame.resize(std::min<size_t>(frame.size(), UINT16_MAX));
    frame.shrink_to_fit();
    return frame;
}

/** A length whose upper half does not count. */
uint32_t with_upper_half(uint32_t upper, size_t length) {
    return static_cast<uint32_t>(upper << kUpperHalf | length);
}

void receive(fuzz::Input *input) {
    const size_t hidden = input->u8();
    const uint32_t upper = input->u16();
    Bytes frame = read_frame(input);
    const Bytes before = frame;
    const size_t length = frame.size() - std::min(frame.size(), hidden);
    uint8_t *out_frame = nullptr;
    uint16_t out_length = 0;
    uint8_t flag = 0;
    adp_intf_t intf = 0;
    const adp_status_t status =
        adp_receive_frame(frame.data(), &out_frame, with_upper_half(upper, length), &out_length, &flag, &intf);
    const bool has_tag = length >= kAddresses + kReceiveTag;
    expect((status == ADP_OK) == has_tag, "a frame with a tag is taken");
    expect(has_tag ? out_frame == frame.data() && out_length == length - kReceiveTag : frame == before,
           "the frame is shorter by its tag, or unchanged");
    expect(std::equal(frame.begin() + static_cast<ptrdiff_t>(length), frame.end(),
                      before.begin() + static_cast<ptrdiff_t>(length)),
           "the bytes after the frame are unchanged");
}

void parse(fuzz::Input *input) {
    const bool checks = input->flag();
    const bool has_tag = input->flag();
    const size_t tag_place = input->u8();
    const uint32_t upper = input->u16();
    Bytes frame = read_frame(input);
    const Bytes before = frame;
    const auto apart = std::make_unique<Bytes>(4, uint8_t{1});  // a tag outside the frame
    adp_rx_frame_t desc = {};
    desc.frame = frame.data();
    desc.length = with_upper_half(upper, frame.size());
    if (has_tag) {
        desc.vlan_tag = tag_place < frame.size() ? frame.data() + tag_place : apart->data();
    }
    const uint8_t *const given_tag = desc.vlan_tag;
    const adp_status_t status = __adp_receive_frame(&desc, checks ? 1 : 0);
    expect(frame.size() >= kAddresses + kReceiveTag || (status == ADP_FAIL && frame == before),
           "a short frame is rejected");
    for (const uint8_t *header : {desc.ethernet_header, desc.ipv4_header, desc.ipv6_header, desc.vlan_tag}) {
        expect(header == nullptr || header == given_tag ||
                   (header >= frame.data() && header <= frame.data() + frame.size()),
               "a header is inside the frame");
    }
}

void rewrite_tag(fuzz::Input *input) {
    constexpr size_t kTagBytes = 8;
    Bytes tag = input->bytes(kTagBytes);
    tag.resize(kTagBytes);
    tag.shrink_to_fit();
    adp_bcmtag_dest_port_intf_2_phy(tag.data());
}

void script_failures(uint8_t flags, fake_system::System &system) {
    if ((flags & 1) != 0) {
        recording::driver().fail_every("get_vlan_info");
    }
    if ((flags & 2) != 0) {
        system.fail_allocation(0);
    }
    if ((flags & 4) != 0) {
        system.fail("sendto", ENOBUFS);
    }
    if ((flags & 8) != 0) {
        system.fail("socket", EPERM);
    }
    if ((flags & 16) != 0) {
        system.send_only(1);
    }
}

/** An interface in a byte: a user port; with the top bit an aggregation interface; with the next one an unknown type.
 */
uint32_t read_interface(fuzz::Input *input) {
    const uint32_t code = input->u8();
    if ((code & 0x80) != 0) {
        return ADP_AGG_INTF(code & 15);
    }
    return (code & 0x40) != 0 ? code << ADP_INTF_TYPE_SHIFT | 1 : code;
}

adp_status_t transmit_to_list(fuzz::Input *input, uint32_t number, Bytes *frame) {
    constexpr uint32_t kMostNodes = 8;
    adp_tx_frame_t desc = {};
    desc.source = read_interface(input);
    const uint32_t vid = input->flag() ? ADP_NO_VLAN : input->u16();
    const bool has_list = input->flag();
    std::vector<adp_tx_dest_t> nodes(input->u8() % kMostNodes);
    adp_list_link_t head = {&head, &head};
    for (adp_tx_dest_t &node : nodes) {
        node = {{&head, head.prev}, read_interface(input)};
        head.prev->next = &node.link;
        head.prev = &node.link;
    }
    *frame = read_frame(input);
    desc.frame = frame->data();
    desc.length = static_cast<uint32_t>(frame->size());
    return __adp_transmit_frame(&desc, has_list ? &head : nullptr, vid, number);
}

adp_status_t transmit_to_one(fuzz::Input *input, uint32_t number, Bytes *frame) {
    const uint32_t intf = read_interface(input);
    const uint32_t upper = input->u16();
    *frame = read_frame(input);
    return adp_transmit_frame(frame->data(), with_upper_half(upper, frame->size()), 0, intf, number);
}

void transmit(fuzz::Input *input, adp_status_t (*send)(fuzz::Input *, uint32_t, Bytes *)) {
    fake_system::Session session;
    expect(adp_pkt_init() > 0, "the shared socket");
    script_failures(input->u8(), session.system());
    for (uint32_t &manager : agg_manage_intf) {
        manager = input->u8() % (ADP_USER_PORTS + 1);
    }
    Bytes frame;
    const bool is_sent = send(input, input->u16(), &frame) == ADP_OK;
    const auto &sent = session.system().sent();
    expect(!is_sent || sent.size() == 1, "one frame");
    if (!sent.empty()) {
        const Bytes &bytes = sent.front().bytes;
        const auto rest = frame.begin() + kAddresses;
        expect(frame.size() >= kAddresses && bytes.size() == frame.size() + kTransmitTag, "ten bytes more");
        expect(std::equal(frame.begin(), rest, bytes.begin()) &&
                   std::equal(rest, frame.end(), bytes.begin() + kAddresses + kTransmitTag),
               "the frame around the tag");
    }
    expect(session.system().outstanding_allocations() == 0, "no memory is held");
    expect(session.system().open_descriptors() == 1, "no socket is held but the shared one");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::be_quiet();
    fuzz::Input input(data, size);
    const uint8_t call = input.u8();
    expect(library_test::fill_default_map(), "the map is filled");
    recording::driver().reset();
    recording::driver().record(false);
    const uint32_t row = input.u8() % (ADP_USER_PORTS + 1);
    intf_to_phy_port[row].phy = input.u8();
    switch (call % 5) {
        case 0:
            receive(&input);
            break;
        case 1:
            parse(&input);
            break;
        case 2:
            rewrite_tag(&input);
            break;
        case 3:
            transmit(&input, transmit_to_list);
            break;
        default:
            transmit(&input, transmit_to_one);
    }
    library_test::drop_map();
    return 0;
}
