// Skips VLAN tags and reads what follows: an EtherType, LLC or SNAP (IEEE 802).
#include "vdevice/chip/frame/encapsulation.h"

#include <algorithm>
#include <array>

namespace vdevice::chip {
namespace {

constexpr uint16_t kServiceTpid = 0x88A8;
constexpr uint16_t kOldServiceTpid = 0x9100;
constexpr uint16_t kMaxLength = 1500;  // up to here the type of an IEEE 802.3 frame is its length
constexpr std::array<uint8_t, 3> kSnapStart = {0xAA, 0xAA, 0x03};
constexpr size_t kSnapBytes = 8;  // the start, three octets of an organisation, two of its protocol
constexpr size_t kSnapTypeAt = 6;

bool is_tag(uint16_t type) {
    return type == kVlanTpid || type == kServiceTpid || type == kOldServiceTpid;
}

void read_llc(Encapsulation &frame, Bytes llc) {
    frame.octets = {};
    frame.kind = FrameKind::kLlc;
    if (llc.size() < kSnapBytes || !std::equal(kSnapStart.begin(), kSnapStart.end(), llc.begin())) {
        return;
    }
    frame.kind = FrameKind::kSnap;
    const Bytes organisation = llc.subspan(kSnapStart.size(), kSnapTypeAt - kSnapStart.size());
    if (std::all_of(organisation.begin(), organisation.end(), [](uint8_t octet) { return octet == 0; })) {
        frame.type = read16(llc, kSnapTypeAt);
        frame.octets = llc.subspan(kSnapBytes);
    }
}

}  // namespace

Encapsulation read_encapsulation(const Header &header) {
    Encapsulation frame;
    if (header.tagged) {
        frame.inner_tci = header.tci;
    }
    Bytes rest = header.payload;
    while (rest.size() >= kVlanTagBytes + kTypeBytes && is_tag(read16(rest, 0))) {
        frame.inner_tci = read16(rest, kTypeBytes);
        rest = rest.subspan(kVlanTagBytes);
    }
    frame.octets = rest.subspan(kTypeBytes);
    if (const uint16_t type = read16(rest, 0); type > kMaxLength) {
        frame.type = type;
    } else {
        read_llc(frame, frame.octets);
    }
    return frame;
}

}  // namespace vdevice::chip
