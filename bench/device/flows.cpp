// Frames and trains of frames of a flow.
#include "bench/device/flows.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace bench {
namespace {

constexpr size_t kMacBytes = 6;
constexpr size_t kTypeAt = 2 * kMacBytes;
constexpr size_t kIpAt = kTypeAt + 2;
constexpr size_t kIpHeaderBytes = 20;
constexpr size_t kUdpAt = kIpAt + kIpHeaderBytes;
constexpr size_t kUdpHeaderBytes = 8;
constexpr size_t kPayloadAt = kUdpAt + kUdpHeaderBytes;
constexpr size_t kIpAddressesAt = kIpAt + 12;
constexpr size_t kUdpChecksumAt = 6;
constexpr uint32_t kProtocolUdp = 17;
constexpr uint16_t kTypeIpv4 = 0x0800;
constexpr uint16_t kVersionAndLength = 0x4500;
constexpr uint16_t kTimeToLiveAndUdp = 0x4011;
constexpr uint16_t kFirstPort = 10000;
constexpr uint8_t kBroadcastOctet = 0xFF;
constexpr uint16_t kMacPrefix = 0x02BE;
constexpr uint32_t kNetwork = 0x0A000000;

void put16(Frame &frame, size_t at, uint32_t value) {
    frame[at] = static_cast<uint8_t>(value >> 8);
    frame[at + 1] = static_cast<uint8_t>(value);
}

void put32(Frame &frame, size_t at, uint32_t value) {
    put16(frame, at, value >> 16);
    put16(frame, at + 2, value);
}

void put_mac(Frame &frame, size_t at, Station station) {
    put16(frame, at, kMacPrefix);
    put32(frame, at + 2, station);
}

/** The sum that checksums are made of (RFC 1071). */
uint32_t folded_sum(std::span<const uint8_t> bytes, uint32_t sum = 0) {
    for (size_t i = 0; i < bytes.size(); i += 2) {
        sum += static_cast<uint32_t>(bytes[i] << 8 | bytes[i + 1]);
    }
    while (sum >> 16 != 0) {
        sum = (sum & 0xFFFF) + (sum >> 16);
    }
    return sum;
}

/** What a socket with PACKET_VNET_HDR reads in front of a frame. <linux/virtio_net.h> is not written for C++. */
struct VnetHeader {
    uint8_t flags;
    uint8_t kind;
    uint16_t header_bytes;
    uint16_t payload_bytes;
    uint16_t checksum_start;
    uint16_t checksum_offset;
};
constexpr uint8_t kNeedsChecksum = 1;
constexpr uint8_t kUdpSegments = 5;

}  // namespace

Frame frame_of(const Flow &flow, size_t size) {
    Frame frame(size);
    put_mac(frame, 0, flow.destination);
    if (flow.to_all) {
        std::fill_n(frame.begin(), kMacBytes, kBroadcastOctet);
    }
    put_mac(frame, kMacBytes, flow.source);
    put16(frame, kTypeAt, kTypeIpv4);
    put16(frame, kIpAt, kVersionAndLength);
    put16(frame, kIpAt + 2, static_cast<uint32_t>(size - kIpAt));
    put16(frame, kIpAt + 8, kTimeToLiveAndUdp);
    put32(frame, kIpAddressesAt, kNetwork | flow.source);
    put32(frame, kIpAddressesAt + 4, kNetwork | flow.destination);
    put16(frame, kIpAt + 10, ~folded_sum(std::span{frame}.subspan(kIpAt, kIpHeaderBytes)));
    put16(frame, kUdpAt, flow.source_port);
    put16(frame, kUdpAt + 2, kFirstPort);
    put16(frame, kUdpAt + 4, static_cast<uint32_t>(size - kUdpAt));
    return frame;
}

Frame train_of(const Flow &flow, size_t size, size_t frames) {
    const size_t payload = size - kPayloadAt;
    Frame whole = frame_of(flow, kPayloadAt + payload * frames);
    // The kernel completes each frame's checksum from that of the addresses, the protocol and the length.
    const auto udp_bytes = static_cast<uint32_t>(whole.size() - kUdpAt);
    const auto addresses = std::span{whole}.subspan(kIpAddressesAt, 2 * sizeof(Station));
    put16(whole, kUdpAt + kUdpChecksumAt, folded_sum(addresses, kProtocolUdp + udp_bytes));
    const VnetHeader header{kNeedsChecksum,   kUdpSegments,  kPayloadAt, static_cast<uint16_t>(payload),
                            uint16_t{kUdpAt}, kUdpChecksumAt};
    Frame train(sizeof(header) + whole.size());
    std::memcpy(train.data(), &header, sizeof(header));
    std::copy(whole.begin(), whole.end(), train.begin() + sizeof(header));
    return train;
}

std::vector<Flow> flows_to_stations(Station source, size_t flows, size_t stations, bool to_all) {
    std::vector<Flow> made;
    for (size_t i = 0; i < flows; ++i) {
        const auto destination = static_cast<Station>(i * stations / flows);
        made.push_back({source, destination, static_cast<uint16_t>(kFirstPort + i), to_all});
    }
    return made;
}

}  // namespace bench
