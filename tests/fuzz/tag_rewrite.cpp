// adp_bcmtag_dest_port_intf_2_phy(): the tag's bits against a model that maps them one by one.
//
// Input: the tag, then map rows and the ports they get.
#include "tests/fuzz/fuzz.h"
#include "tests/support/library_state.h"

namespace {

using fuzz::expect;

constexpr size_t kTagBytes = 8;
constexpr uint32_t kUserPorts = 60;  // more than the tag has bits
constexpr unsigned kByteBits = 8;
constexpr uint32_t kFieldBits = 25;
constexpr uint32_t kFieldMask = (1u << kFieldBits) - 1;
constexpr uint32_t kHighBits = 32;
constexpr uint32_t kOpcodeShift = 29;

struct Words {
    uint32_t first = 0;
    uint32_t second = 0;
};

Words words_of(const fuzz::Bytes &tag) {
    Words words;
    for (size_t i = 0; i < kTagBytes / 2; ++i) {
        words.first = words.first << kByteBits | tag[i];
        words.second = words.second << kByteBits | tag[i + kTagBytes / 2];
    }
    return words;
}

/** The port of an interface number, -1 for none. */
int64_t port_of(uint32_t intf) {
    return intf <= kUserPorts ? static_cast<int32_t>(intf_to_phy_port[intf].phy) : -1;
}

Words translated_bitmap(const Words &tag) {
    Words out{tag.first & ~kFieldMask, 0};
    for (uint32_t intf = 0; intf < kFieldBits + kHighBits; ++intf) {
        const bool is_high = intf >= kFieldBits;
        const bool is_set = ((is_high ? tag.second >> (intf - kFieldBits) : tag.first >> intf) & 1) != 0;
        const int64_t port = port_of(intf);
        if (!is_set || port < 0 || port >= kFieldBits + kHighBits) {
            continue;
        }
        if (port >= kFieldBits) {
            out.second |= 1u << (port - kFieldBits);
        } else if (!is_high) {
            out.first |= 1u << port;
        }
    }
    return out;
}

Words translated(const Words &tag) {
    switch (tag.first >> kOpcodeShift) {
        case 4:
            return translated_bitmap(tag);
        case 3:
        case 5:
        case 6:
            return {(tag.first & ~kFieldMask) | (static_cast<uint32_t>(port_of(tag.first & kFieldMask)) & kFieldMask),
                    tag.second};
        default:
            return tag;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input input(data, size);
    fuzz::Bytes tag = input.bytes(kTagBytes);
    tag.resize(kTagBytes);
    expect(library_test::fill_default_map(kUserPorts), "the map is filled");
    while (!input.is_empty()) {
        constexpr uint32_t kAllOnes = 0xFF;
        const uint32_t row = input.u8() % (kUserPorts + 1);
        const uint32_t port = input.u8();
        intf_to_phy_port[row].phy = port == kAllOnes ? UINT32_MAX : port;
    }
    const Words expected = translated(words_of(tag));
    adp_bcmtag_dest_port_intf_2_phy(tag.data());
    const Words found = words_of(tag);
    expect(found.first == expected.first, "the first word");
    expect(found.second == expected.second, "the second word");
    library_test::drop_map();
    return 0;
}
