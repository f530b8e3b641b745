// Both transmit calls: the frame that is sent is the given one with ten bytes of tag inserted, the tag is valid, and no
// memory or descriptor is left.
//
// Input: the call, mode, VLAN, source, what fails, the VLAN's members, the management interfaces, the list, and the
// frame.
#include <algorithm>
#include <cerrno>
#include <deque>

#include "tests/fuzz/fuzz.h"
#include "tests/support/fake_system.h"
#include "tests/support/library_state.h"

namespace {

using fuzz::Bytes;
using fuzz::expect;

constexpr size_t kAddresses = 12;
constexpr size_t kTagBytes = 10;
constexpr uint32_t kGroupFlag = 0x80;
constexpr uint32_t kOtherFlag = 0x40;
constexpr uint32_t kMostNodes = 8;

/** An interface in a byte: a user port; with the top bit an aggregation interface; with the next one an unknown type.
 */
uint32_t read_interface(fuzz::Input *input) {
    const uint32_t code = input->u8();
    if ((code & kGroupFlag) != 0) {
        return ADP_AGG_INTF(code & 15);
    }
    return (code & kOtherFlag) != 0 ? code << ADP_INTF_TYPE_SHIFT | 1 : code;
}

class List {
  public:
    explicit List(fuzz::Input *input) : is_given_(input->flag()) {
        adp_list_link_t *last = &head_;
        for (uint32_t count = input->u8() % kMostNodes; count > 0; --count) {
            nodes_.push_back({{nullptr, last}, read_interface(input)});
            last->next = &nodes_.back().link;
            last = last->next;
        }
        last->next = &head_;
        head_.prev = last;
    }
    List(const List &) = delete;
    List &operator=(const List &) = delete;

    [[nodiscard]] const adp_list_link_t *head() const { return is_given_ ? &head_ : nullptr; }

  private:
    bool is_given_;
    adp_list_link_t head_ = {};
    std::deque<adp_tx_dest_t> nodes_;
};

struct Failures {
    bool service = false;
    bool memory = false;
    bool sending = false;

    [[nodiscard]] bool none() const { return !service && !memory && !sending; }
};

Failures script_failures(fuzz::Input *input, fake_system::System &system) {
    constexpr uint8_t kService = 1;
    constexpr uint8_t kMemory = 2;
    constexpr uint8_t kSend = 4;
    constexpr uint8_t kSocket = 8;
    constexpr uint8_t kShort = 16;
    const uint8_t flags = input->u8();
    if ((flags & kService) != 0) {
        recording::driver().fail_every("get_vlan_info");
    }
    if ((flags & kMemory) != 0) {
        system.fail_allocation(0);
    }
    if ((flags & kSend) != 0) {
        system.fail("sendto", ENOBUFS);
    }
    if ((flags & kSocket) != 0) {
        system.fail("socket", EPERM);
    }
    if ((flags & kShort) != 0) {
        system.send_only(1);
    }
    return {(flags & kService) != 0, (flags & kMemory) != 0, (flags & (kSend | kSocket | kShort)) != 0};
}

void set_up(fuzz::Input *input) {
    expect(library_test::fill_default_map(), "the map is filled");
    recording::driver().reset();
    recording::driver().record(false);
    uint32_t record[16] = {};
    record[2] = input->u32();
    record[3] = input->u32();
    recording::driver().on("get_vlan_info").sets_object("record", record);
    for (uint32_t group = 0; group < ADP_AGG_GROUPS; ++group) {
        agg_manage_intf[group] = input->u8() % (ADP_USER_PORTS + 1);
    }
}

uint32_t word_at(const Bytes &bytes, size_t place) {
    return static_cast<uint32_t>(bytes[place] << 24 | bytes[place + 1] << 16 | bytes[place + 2] << 8 |
                                 bytes[place + 3]);
}

/** The frame that was sent, and the offset of its tag. */
void expect_tagged(const Bytes &sent, const Bytes &frame) {
    expect(sent.size() == frame.size() + kTagBytes, "ten bytes more");
    expect(std::equal(frame.begin(), frame.begin() + kAddresses, sent.begin()), "the addresses");
    expect(std::equal(frame.begin() + kAddresses, frame.end(), sent.begin() + kAddresses + kTagBytes),
           "what follows the addresses");
    expect(sent[kAddresses] == 0x88 && sent[kAddresses + 1] == 0x74, "the tag's type");
}

/** Word 1 without its destination, by mode; without list and VLAN the destination is all ports. */
void expect_tag_of_mode(const Bytes &sent, uint32_t mode, bool is_flood) {
    constexpr uint32_t kHeads[] = {0x98000000, 0x38000000, 0x78000000, 0xDA000000, 0x78000000};
    constexpr uint32_t kDestination = 0x01FFFFFF;
    const uint32_t word1 = word_at(sent, kAddresses + 2);
    const uint32_t word2 = word_at(sent, kAddresses + 6);
    expect((word1 & ~kDestination) == (is_flood ? 0xF8000000 : kHeads[mode]), "opcode and flags");
    expect(mode == 0 || word2 == 0, "a second word for bitmaps only");
    expect(mode != 1 || (word1 & kDestination) == 0, "no destination when the switch decides");
    expect(mode != 0 || (word1 & kDestination) != 0 || word2 != 0, "a bitmap names a port");
    // On the default board the user ports are 4 to 29.
    expect(mode != 0 || ((word1 & 0xF) == 0 && (word2 & ~0x1Fu) == 0), "ports that there are");
}

void transmit(fuzz::Input *input, fake_system::System &system) {
    adp_tx_frame_t desc = {};
    const uint32_t mode = input->u16();
    const uint32_t vid = input->flag() ? ADP_NO_VLAN : input->u16();
    desc.source = read_interface(input);
    const Failures failures = script_failures(input, system);
    const List list(input);
    const Bytes frame = input->rest();
    desc.frame = frame.data();
    desc.length = static_cast<uint32_t>(frame.size());
    const bool sent = __adp_transmit_frame(&desc, list.head(), vid, mode) == ADP_OK;
    expect(!sent || system.sent().size() == 1, "one frame");
    if (!system.sent().empty()) {
        expect(frame.size() >= kAddresses && mode < 5 && !failures.memory, "only what can be sent leaves");
        expect_tagged(system.sent().front().bytes, frame);
        expect_tag_of_mode(system.sent().front().bytes, mode,
                           mode == 0 && list.head() == nullptr && vid == ADP_NO_VLAN);
    }
    expect(sent || !failures.none() || mode != 1 || frame.size() < kAddresses, "the switch takes any frame");
}

void transmit_one(fuzz::Input *input, fake_system::System &system) {
    const uint32_t opcode = input->u8();
    const uint32_t intf = read_interface(input);
    const uint32_t upper = input->u16();
    const Failures failures = script_failures(input, system);
    Bytes frame = input->rest();
    frame.resize(std::min<size_t>(frame.size(), UINT16_MAX));
    const bool sent =
        adp_transmit_frame(frame.data(), static_cast<uint32_t>(upper << 16 | frame.size()), 0, intf, opcode) == ADP_OK;
    expect(!sent || (system.sent().size() == 1 && !failures.memory && !failures.sending), "one frame");
    if (!system.sent().empty()) {
        expect(frame.size() >= kAddresses, "only a frame with addresses leaves");
        expect_tagged(system.sent().front().bytes, frame);
        expect(word_at(system.sent().front().bytes, kAddresses + 2) >> 25 == (opcode & 7) << 4, "opcode, no flags");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::be_quiet();
    fuzz::Input input(data, size);
    const bool one = input.flag();
    set_up(&input);
    {
        fake_system::Session session;
        expect(adp_pkt_init() > 0, "the shared socket");
        if (one) {
            transmit_one(&input, session.system());
        } else {
            transmit(&input, session.system());
        }
        expect(session.system().outstanding_allocations() == 0, "no memory is held");
        expect(session.system().open_descriptors() == 1, "no socket is held but the shared one");
    }
    library_test::drop_map();
    return 0;
}
