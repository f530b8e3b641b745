// Reads and writes the slow protocols' frames: IEEE 802.1AX, LACPDU and marker PDU; IEEE 802.3, annex 57A.
#include "switchd/lacp/pdu.h"

#include <algorithm>
#include <optional>

namespace switchd::lacp {
namespace {

constexpr unsigned kByteBits = 8;
constexpr unsigned kHalfBits = 16;

constexpr Mac kSlowProtocols = {0x01, 0x80, 0xC2, 0x00, 0x00, 0x02};
constexpr uint16_t kSlowProtocolsType = 0x8809;
constexpr uint8_t kLacpSubtype = 1;
constexpr uint8_t kMarkerSubtype = 2;
constexpr uint8_t kLastSubtype = 10;
constexpr uint8_t kVersion = 1;

// Places in the frame.
constexpr size_t kDestination = 0;
constexpr size_t kSource = 6;
constexpr size_t kType = 12;
constexpr size_t kSubtype = 14;
constexpr size_t kVersionPlace = 15;
constexpr size_t kActor = 16;
constexpr size_t kPartner = 36;
constexpr size_t kCollector = 56;
constexpr size_t kMarker = 16;

// A part of a PDU begins with its type and its length. The last part, of type and length 0, is among the zeros.
constexpr uint8_t kActorType = 1;
constexpr uint8_t kPartnerType = 2;
constexpr uint8_t kCollectorType = 3;
constexpr uint8_t kMarkerType = 1;
constexpr uint8_t kResponseType = 2;
constexpr uint8_t kInfoLength = 20;
constexpr uint8_t kCollectorLength = 16;
constexpr uint8_t kMarkerLength = 16;

// Places in the information about an end.
constexpr size_t kSystemPriority = 2;
constexpr size_t kSystem = 4;
constexpr size_t kKey = 10;
constexpr size_t kPortPriority = 12;
constexpr size_t kPort = 14;
constexpr size_t kState = 16;

// Places in the marker's information.
constexpr size_t kMarkerPort = 2;
constexpr size_t kMarkerSystem = 4;
constexpr size_t kTransaction = 10;

using Octets = std::span<const uint8_t, kFrameSize>;

uint16_t u16_at(std::span<const uint8_t> octets, size_t place) {
    return static_cast<uint16_t>(octets[place] << kByteBits | octets[place + 1]);
}

uint32_t u32_at(std::span<const uint8_t> octets, size_t place) {
    return uint32_t{u16_at(octets, place)} << kHalfBits | u16_at(octets, place + 2);
}

Mac mac_at(std::span<const uint8_t> octets, size_t place) {
    Mac mac;
    std::copy_n(octets.begin() + static_cast<ptrdiff_t>(place), mac.size(), mac.begin());
    return mac;
}

void put_u16(Frame &frame, size_t place, uint16_t value) {
    frame[place] = static_cast<uint8_t>(value >> kByteBits);
    frame[place + 1] = static_cast<uint8_t>(value);
}

void put_mac(Frame &frame, size_t place, const Mac &mac) {
    std::copy(mac.begin(), mac.end(), frame.begin() + static_cast<ptrdiff_t>(place));
}

Info info_at(Octets frame, size_t place) {
    return {.system = {u16_at(frame, place + kSystemPriority), mac_at(frame, place + kSystem)},
            .key = u16_at(frame, place + kKey),
            .port_priority = u16_at(frame, place + kPortPriority),
            .port = u16_at(frame, place + kPort),
            .state = frame[place + kState]};
}

void put_info(Frame &frame, size_t place, uint8_t type, const Info &info) {
    frame[place] = type;
    frame[place + 1] = kInfoLength;
    put_u16(frame, place + kSystemPriority, info.system.priority);
    put_mac(frame, place + kSystem, info.system.mac);
    put_u16(frame, place + kKey, info.key);
    put_u16(frame, place + kPortPriority, info.port_priority);
    put_u16(frame, place + kPort, info.port);
    frame[place + kState] = info.state;
}

Frame frame_from(const Mac &source, uint8_t subtype) {
    Frame frame{};
    put_mac(frame, kDestination, kSlowProtocols);
    put_mac(frame, kSource, source);
    put_u16(frame, kType, kSlowProtocolsType);
    frame[kSubtype] = subtype;
    frame[kVersionPlace] = kVersion;
    return frame;
}

Pdu lacpdu_of(Octets frame) {
    if (frame[kActor + 1] != kInfoLength || frame[kPartner + 1] != kInfoLength ||
        frame[kCollector + 1] != kCollectorLength) {
        return Unusable::kIllegal;
    }
    return Lacpdu{info_at(frame, kActor), info_at(frame, kPartner)};
}

Pdu marker_of(Octets frame) {
    const uint8_t type = frame[kMarker];
    if (frame[kMarker + 1] != kMarkerLength || (type != kMarkerType && type != kResponseType)) {
        return Unusable::kIllegal;
    }
    return Marker{.is_response = type == kResponseType,
                  .port = u16_at(frame, kMarker + kMarkerPort),
                  .system = mac_at(frame, kMarker + kMarkerSystem),
                  .transaction = u32_at(frame, kMarker + kTransaction)};
}

/** What the frame cannot be because of its addresses, type and subtype. */
std::optional<Unusable> fault_of_header(std::span<const uint8_t> frame) {
    if (frame.size() < kSubtype || mac_at(frame, kDestination) != kSlowProtocols) {
        return Unusable::kNotSlowProtocol;
    }
    if (u16_at(frame, kType) != kSlowProtocolsType) {
        return Unusable::kUnknown;
    }
    if (frame.size() == kSubtype || frame[kSubtype] == 0 || frame[kSubtype] > kLastSubtype) {
        return Unusable::kIllegal;
    }
    if (frame[kSubtype] != kLacpSubtype && frame[kSubtype] != kMarkerSubtype) {
        return Unusable::kUnknown;
    }
    return std::nullopt;
}

}  // namespace

Pdu pdu_of(std::span<const uint8_t> frame) {
    if (const auto fault = fault_of_header(frame)) {
        return *fault;
    }
    if (frame.size() < kFrameSize) {
        return Unusable::kIllegal;
    }
    const Octets octets = frame.first<kFrameSize>();
    return octets[kSubtype] == kLacpSubtype ? lacpdu_of(octets) : marker_of(octets);
}

Frame frame_of(const Lacpdu &pdu, const Mac &source) {
    Frame frame = frame_from(source, kLacpSubtype);
    put_info(frame, kActor, kActorType, pdu.actor);
    put_info(frame, kPartner, kPartnerType, pdu.partner);
    frame[kCollector] = kCollectorType;
    frame[kCollector + 1] = kCollectorLength;
    return frame;
}

Frame frame_of(const Marker &marker, const Mac &source) {
    Frame frame = frame_from(source, kMarkerSubtype);
    frame[kMarker] = marker.is_response ? kResponseType : kMarkerType;
    frame[kMarker + 1] = kMarkerLength;
    put_u16(frame, kMarker + kMarkerPort, marker.port);
    put_mac(frame, kMarker + kMarkerSystem, marker.system);
    put_u16(frame, kMarker + kTransaction, static_cast<uint16_t>(marker.transaction >> kHalfBits));
    put_u16(frame, kMarker + kTransaction + 2, static_cast<uint16_t>(marker.transaction));
    return frame;
}

}  // namespace switchd::lacp
