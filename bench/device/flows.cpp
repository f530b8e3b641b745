#include "bench/device/flows.h"

#include <span>

namespace bench {
namespace {

constexpr std::size_t kMacBytes = 6;
constexpr std::size_t kTypeAt = 2 * kMacBytes;
constexpr std::size_t kIpAt = kTypeAt + 2;
constexpr std::size_t kIpHeaderBytes = 20;
constexpr std::size_t kUdpAt = kIpAt + kIpHeaderBytes;
constexpr std::uint16_t kTypeIpv4 = 0x0800;
constexpr std::uint16_t kVersionAndLength = 0x4500;
constexpr std::uint16_t kTimeToLiveAndUdp = 0x4011;
constexpr std::uint16_t kFirstPort = 10000;
constexpr std::uint16_t kMacPrefix = 0x02BE;
constexpr std::uint32_t kNetwork = 0x0A000000;

void put16(Frame &frame, std::size_t at, std::uint32_t value) {
    frame[at] = static_cast<std::uint8_t>(value >> 8);
    frame[at + 1] = static_cast<std::uint8_t>(value);
}

void put32(Frame &frame, std::size_t at, std::uint32_t value) {
    put16(frame, at, value >> 16);
    put16(frame, at + 2, value);
}

void put_mac(Frame &frame, std::size_t at, Station station) {
    put16(frame, at, kMacPrefix);
    put32(frame, at + 2, station);
}

/** The checksum of an IPv4 header (RFC 1071) whose own place is still 0. */
std::uint32_t checksum(std::span<const std::uint8_t> header) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < header.size(); i += 2) {
        sum += static_cast<std::uint32_t>(header[i] << 8 | header[i + 1]);
    }
    while (sum >> 16 != 0) {
        sum = (sum & 0xFFFF) + (sum >> 16);
    }
    return ~sum;
}

}  // namespace

Frame frame_of(const Flow &flow, std::size_t size) {
    Frame frame(size);
    put_mac(frame, 0, flow.destination);
    put_mac(frame, kMacBytes, flow.source);
    put16(frame, kTypeAt, kTypeIpv4);
    put16(frame, kIpAt, kVersionAndLength);
    put16(frame, kIpAt + 2, static_cast<std::uint32_t>(size - kIpAt));
    put16(frame, kIpAt + 8, kTimeToLiveAndUdp);
    put32(frame, kIpAt + 12, kNetwork | flow.source);
    put32(frame, kIpAt + 16, kNetwork | flow.destination);
    put16(frame, kIpAt + 10, checksum(std::span{frame}.subspan(kIpAt, kIpHeaderBytes)));
    put16(frame, kUdpAt, flow.source_port);
    put16(frame, kUdpAt + 2, kFirstPort);
    put16(frame, kUdpAt + 4, static_cast<std::uint32_t>(size - kUdpAt));
    return frame;
}

std::vector<Frame> frames_to_stations(Station source, std::size_t flows, std::size_t stations, std::size_t size) {
    std::vector<Frame> frames;
    for (std::size_t i = 0; i < flows; ++i) {
        const auto destination = static_cast<Station>(i * stations / flows);
        frames.push_back(frame_of({source, destination, static_cast<std::uint16_t>(kFirstPort + i)}, size));
    }
    return frames;
}

}  // namespace bench
