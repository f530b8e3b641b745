// adp_receive_frame(): the frame without its tag, the ingress interface, no access beyond the frame.
//
// Input: a map row and the port it gets, how much shorter the frame is said to be than it is, the upper half of the
// length, and the frame.
#include <algorithm>

#include "tests/fuzz/fuzz.h"
#include "tests/support/library_state.h"

namespace {

using fuzz::Bytes;
using fuzz::expect;

constexpr size_t kTagStart = 12;
constexpr size_t kTagEnd = 18;
constexpr unsigned kUpperHalf = 16;
constexpr uint32_t kPortMask = 63;
constexpr uint8_t kUntouched = 0xA5;

uint32_t interface_of(uint32_t port) {
    for (uint32_t row = 0; row <= ADP_USER_PORTS; ++row) {
        if (intf_to_phy_port[row].phy == port) {
            return row;
        }
    }
    return UINT32_MAX;
}

struct Received {
    uint8_t *frame = nullptr;
    uint16_t length = kUntouched;
    uint8_t flag = kUntouched;
    adp_intf_t intf = kUntouched;
};

void expect_rejected(const Received &out, const Bytes &frame, const Bytes &before) {
    expect(frame == before, "a rejected frame is unchanged");
    expect(out.frame == nullptr && out.length == kUntouched && out.flag == kUntouched && out.intf == kUntouched,
           "a rejected frame does not change the outputs");
}

void expect_stripped(const Received &out, const Bytes &frame, const Bytes &before, size_t length) {
    Bytes expected = before;
    expected.erase(expected.begin() + kTagStart, expected.begin() + kTagEnd);
    const size_t left = length - (kTagEnd - kTagStart);
    expect(out.frame == frame.data() && out.length == left && out.flag == 0, "frame, length and flag");
    expect(std::equal(frame.begin(), frame.begin() + out.length, expected.begin()), "the frame without its tag");
    expect(std::equal(frame.begin() + static_cast<ptrdiff_t>(length), frame.end(),
                      before.begin() + static_cast<ptrdiff_t>(length)),
           "the bytes after the frame are unchanged");
    expect(out.intf == interface_of(before[kTagEnd - 1] & kPortMask), "the ingress port's interface");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input input(data, size);
    expect(library_test::fill_default_map(), "the map is filled");
    const uint32_t row = input.u8() % (ADP_USER_PORTS + 1);
    intf_to_phy_port[row].phy = input.u8();
    const size_t hidden = input.u8();
    const uint32_t upper = input.u16();
    Bytes frame = input.rest();
    frame.resize(std::min<size_t>(frame.size(), UINT16_MAX));
    const Bytes before = frame;
    const size_t length = frame.size() - std::min(frame.size(), hidden);
    Received out;
    const adp_status_t status =
        adp_receive_frame(frame.data(), &out.frame, static_cast<uint32_t>(upper << kUpperHalf | length), &out.length,
                          &out.flag, &out.intf);
    if (length < kTagEnd) {
        expect(status == ADP_FAIL, "a frame shorter than its tag is rejected");
        expect_rejected(out, frame, before);
    } else {
        expect(status == ADP_OK, "a frame with a tag is taken");
        expect_stripped(out, frame, before, length);
    }
    library_test::drop_map();
    return 0;
}
