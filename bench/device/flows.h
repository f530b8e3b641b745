// Stations with numbers, and the frames of flows between them.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <vector>

namespace bench {

/** Stations have consecutive numbers, which are the lower half of their MAC and IP addresses. */
using Station = uint32_t;
using Frame = std::vector<uint8_t>;

inline constexpr size_t kSmallestFrame = 60;
inline constexpr size_t kLargestFrame = 1514;

struct Flow {
    Station source;
    Station destination;
    uint16_t source_port;
    bool to_all = false; /**< to the broadcast MAC address */
};

/** An IPv4 packet with UDP inside, of this length with its Ethernet header. */
Frame frame_of(const Flow &flow, size_t size);

/**
 * That many frames of a flow, each of this length, as one that the kernel splits. It begins with the header for a
 * socket with PACKET_VNET_HDR.
 */
Frame train_of(const Flow &flow, size_t size, size_t frames);

/** That many flows from one station to that many others, spread evenly over the flows. */
std::vector<Flow> flows_to_stations(Station source, size_t flows, size_t stations, bool to_all);

}  // namespace bench
