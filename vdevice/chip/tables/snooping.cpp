// Recognises the messages of IGMP and MLD, and the control groups.
#include "vdevice/chip/tables/snooping.h"

#include <algorithm>

#include "vdevice/chip/frame/ip_packet.h"

namespace vdevice::chip {
namespace {

constexpr uint8_t kIgmp = 2;
constexpr uint8_t kIcmpv6 = 58;
/** Query, report and done of version 1 (RFC 2710), report of version 2 (RFC 3810). */
constexpr uint8_t kMldTypes[] = {130, 131, 132, 143};
constexpr uint8_t kControlGroups[] = {224, 0, 0};

/** MLD always comes behind a hop-by-hop header, whose router alert is there for routers and snooping switches. */
bool is_mld(const IpPacket &packet) {
    return packet.is_version6() && packet.protocol == kIcmpv6 && packet.has_hop_by_hop && packet.fragment_offset == 0 &&
           !packet.payload.empty() &&
           std::find(std::begin(kMldTypes), std::end(kMldTypes), packet.payload[0]) != std::end(kMldTypes);
}

bool is_igmp(const IpPacket &packet) {
    return !packet.is_version6() && packet.protocol == kIgmp;
}

}  // namespace

bool is_igmp_or_mld(const Header &header, bool igmp, bool mld) {
    const std::optional<IpPacket> packet = read_ip_packet(header);
    return packet && ((igmp && is_igmp(*packet)) || (mld && is_mld(*packet)));
}

bool is_to_control_group(const Header &header) {
    const std::optional<IpPacket> packet = read_ip_packet(header);
    return packet && !packet->is_version6() &&
           std::equal(std::begin(kControlGroups), std::end(kControlGroups), packet->destination.begin());
}

}  // namespace vdevice::chip
