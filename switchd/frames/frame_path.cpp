// The decisions in their order.
#include "switchd/frames/frame_path.h"

#include <algorithm>

namespace switchd {
namespace {

using vdevice::chip::Bytes;
using vdevice::chip::TokenBucket;

/** What may come at once: the frames of a tenth of a second. */
std::optional<TokenBucket> bucket_of(uint32_t rate, Time now) {
    constexpr uint32_t kLeast = 16;
    if (rate == 0) {
        return std::nullopt;
    }
    const uint32_t allowed = std::min(rate, TokenBucket::kMaxRate);
    const uint32_t depth = std::clamp(allowed / 10, kLeast, TokenBucket::kMaxDepth);
    return TokenBucket{vdevice::chip::Counting::kFrames, {allowed, depth}, now};
}

bool is_user_port(uint32_t intf) {
    return intf >= 1 && intf <= ADP_USER_PORTS;
}

/** A station gets what is for everybody, once one is admitted. */
bool may_be_sent_to_closed(const PathPort &port, const FrameHeader &header) {
    return is_eapol(header) || port.stations.contains(header.destination) ||
           (header.is_to_group() && !port.stations.empty());
}

}  // namespace

FramePath::FramePath(const HashKey &key, const PathLimits &limits, Time now) : key_{key} {
    set_limits(limits, now);
}

void FramePath::set_limits(const PathLimits &limits, Time now) {
    flooded_.fill(bucket_of(limits.flooded, now));
    trapped_.fill(bucket_of(limits.trapped, now));
}

void FramePath::set_table(const PathTable &table) {
    ports_.fill({});
    for (const auto &[intf, port] : table.ports) {
        if (const size_t slot = path_slot_of(intf); slot != 0) {
            ports_[slot] = port;
        }
    }
    interfaces_ = table.interfaces;
    own_addresses_ = table.own_addresses;
    has_unknown_ipv4_ = table.has_unknown_ipv4;
    has_unknown_ipv6_ = table.has_unknown_ipv6;
    groups_ = table.groups;
}

FramePath::FromChip FramePath::from_chip(uint32_t port, Bytes frame, Time now) {
    const FromChip decided = decide(port, frame, now);
    PathCounters &counters = counters_[path_slot_of(port)];
    if (const Drop *reason = std::get_if<Drop>(&decided)) {
        ++counters.of(*reason);
    } else {
        ++(std::holds_alternative<ToLacp>(decided) ? counters.to_lacp : counters.to_kernel);
    }
    return decided;
}

FramePath::FromChip FramePath::decide(uint32_t port, Bytes frame, Time now) {
    if (!is_user_port(port)) {
        return Drop::kUnknownPort;
    }
    const auto header = read_tagged(frame);
    if (!header) {
        return Drop::kMalformed;
    }
    const Kind kind = kind_of(*header);
    if (const auto reason = check(port, *header, kind, now)) {
        return *reason;
    }
    const FromChip destination = destination_of(port, *header);
    if (kind == Kind::kFlooded && std::holds_alternative<ToInterface>(destination)) {
        forwarded_.remember(hash_of(key_, *header->vid, header->frame), now);
    }
    return destination;
}

FramePath::Kind FramePath::kind_of(const FrameHeader &header) const {
    if (is_trapped(header)) {
        return Kind::kTrapped;
    }
    if (own_addresses_.contains(header.destination)) {
        return Kind::kToSwitch;
    }
    return is_unknown_group(header) ? Kind::kUnknownGroup : Kind::kFlooded;
}

bool FramePath::is_unknown_group(const FrameHeader &header) const {
    return ((has_unknown_ipv4_ && is_ipv4_group(header.destination)) ||
            (has_unknown_ipv6_ && is_ipv6_group(header.destination))) &&
           !groups_.contains({*header.vid, header.destination});
}

std::optional<Drop> FramePath::check(uint32_t port, const FrameHeader &header, Kind kind, Time now) {
    const PathPort &settings = port_of(port);
    if (settings.is_closed && !is_eapol(header) && !settings.stations.contains(header.source)) {
        return Drop::kClosed;
    }
    const bool is_for_many = kind == Kind::kFlooded || kind == Kind::kUnknownGroup;
    if (is_for_many && own_addresses_.contains(header.source)) {
        return Drop::kLooped;
    }
    const auto is_over = [&](Bucket &bucket) { return bucket && !bucket->charge(header.whole.size(), now); };
    if (is_for_many && is_over(flooded_[path_slot_of(port)])) {
        return Drop::kFloodLimit;
    }
    if (kind == Kind::kTrapped && is_over(trapped_[path_slot_of(port)])) {
        return Drop::kTrapLimit;
    }
    return std::nullopt;
}

// What neighbours say to each other is about the cable, so it is the member's own, not the group's.
FramePath::FromChip FramePath::destination_of(uint32_t port, const FrameHeader &header) const {
    const PathPort &settings = port_of(port);
    if (settings.runs_lacp && is_lacp(header)) {
        return ToLacp{port, header.frame};
    }
    const uint32_t owner = settings.group != 0 ? settings.group : port;
    const uint32_t intf = is_link_local(header.destination) ? port : owner;
    const PortName tagged{intf, *header.vid};
    const PortName untagged{intf, 0};
    if (*header.vid != port_of(owner).untagged_vid && interfaces_.contains(tagged)) {
        return ToInterface{tagged, header.frame};
    }
    if (!interfaces_.contains(untagged)) {
        return Drop::kNoInterface;
    }
    return ToInterface{untagged, *header.vid == port_of(owner).untagged_vid ? header.frame : header.whole};
}

FramePath::FromKernel FramePath::from_kernel(const PortName &interface, Bytes frame, Time now) {
    const FromKernel decided = decide(interface, frame, now);
    PathCounters &counters = counters_[path_slot_of(interface.intf)];
    if (const Drop *reason = std::get_if<Drop>(&decided)) {
        ++counters.of(*reason);
    } else {
        ++counters.from_kernel;
    }
    return decided;
}

FramePath::FromKernel FramePath::decide(const PortName &interface, Bytes frame, Time now) const {
    const auto header = read_frame(frame);
    if (!header) {
        return Drop::kMalformed;
    }
    if (frame.size() + (interface.vid == 0 ? 0 : vdevice::chip::kVlanTagBytes) > vdevice::chip::kMaxFrameBytes) {
        return Drop::kTooLong;
    }
    const PathPort &settings = port_of(interface.intf);
    if (settings.is_closed && !may_be_sent_to_closed(settings, *header)) {
        return Drop::kClosed;
    }
    // What the switch itself sends was never forwarded by the chip, and need not be looked up.
    if (!own_addresses_.contains(header->source) && is_forwarded(interface, *header, now)) {
        return Drop::kForwarded;
    }
    return ToPort{interface.intf, interface.vid};
}

// A tag can be the VLAN's, or a host's own that the chip has left inside.
bool FramePath::is_forwarded(const PortName &interface, const FrameHeader &header, Time now) const {
    const uint16_t group_vid = port_of(port_of(interface.intf).group).untagged_vid;
    const uint16_t port_vid = port_of(interface.intf).group != 0 ? group_vid : port_of(interface.intf).untagged_vid;
    const uint16_t vid = interface.vid != 0 ? interface.vid : port_vid;
    return forwarded_.has(hash_of(key_, vid, header.whole), now) ||
           (interface.vid == 0 && header.vid && forwarded_.has(hash_of(key_, *header.vid, header.frame), now));
}

}  // namespace switchd
