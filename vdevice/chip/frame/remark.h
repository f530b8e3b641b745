// Reads and rewrites the DSCP (RFC 2474) of IP packets.
#pragma once

#include <stdint.h>
#include <optional>
#include <vector>

#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

/** The DSCP of an IPv4 or IPv6 packet. */
std::optional<uint8_t> dscp_of(const Header &header);

/**
 * The header's payload with another DSCP, in the memory of @p copy; the payload itself if it is no IPv4 or IPv6 packet.
 * The congestion bits beside the DSCP (RFC 3168) stay.
 */
Bytes with_dscp(const Header &header, uint8_t dscp, std::vector<uint8_t> &copy);

}  // namespace vdevice::chip
