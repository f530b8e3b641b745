// For tests: a frame path with two ports and a group of two members, and what it decides as text.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "switchd/frames/frame_path.h"
#include "vdevice/chip/testing/frame_builder.h"

namespace switchd::path_test {

using namespace std::chrono_literals;
using vdevice::chip::test::kBroadcast;
using vdevice::chip::test::Octets;
using vdevice::chip::test::octets16;
using vdevice::chip::test::station;
using vdevice::chip::test::vlan_tag;
using vdevice::chip::test::operator+;

constexpr uint32_t kGroup = ADP_AGG_INTF(1);
constexpr uint16_t kOffice = 100;  // untagged on ports 1 and 2, and on group 1
constexpr uint16_t kVoice = 200;   // swp1.200 and swp2.200
constexpr uint16_t kOther = 300;   // no interface has its tag
constexpr uint8_t kSwitch = 99;    // the switch's own station number
constexpr uint8_t kHost = 7;

inline const Octets kOwn = station(kSwitch);
inline const Octets kText = octets16(0x88B5) + Octets(46, 0x11);
inline const Octets kEapol = octets16(0x888E) + Octets(46);
inline const Octets kNeighbours = {0x01, 0x80, 0xC2, 0, 0, 0x0E};
inline const Octets kSlow = {0x01, 0x80, 0xC2, 0, 0, 0x02};

inline Mac mac_of_station(uint8_t number) {
    return {2, 0, 0, 0, 0, number};
}

inline Octets bytes_of(const vdevice::chip::Frame &frame) {
    Octets octets(frame.size());
    frame.copy_to(octets.data());
    return octets;
}

/** What a decision is, as text. */
inline std::string text_of(const FramePath::FromChip &decided) {
    if (const auto *interface = std::get_if<ToInterface>(&decided)) {
        return name_of(interface->interface);
    }
    if (const auto *lacp = std::get_if<ToLacp>(&decided)) {
        return "lacp " + std::to_string(lacp->port);
    }
    return std::string{name_of(std::get<Drop>(decided))};
}

inline std::string text_of(const FramePath::FromKernel &decided) {
    if (const auto *port = std::get_if<ToPort>(&decided)) {
        return name_of({port->intf, port->vid});
    }
    return std::string{name_of(std::get<Drop>(decided))};
}

class FramePathTest : public testing::Test {
  protected:
    FramePathTest() {
        for (const uint32_t port : {1U, 2U}) {
            table_.ports[port].untagged_vid = kOffice;
            table_.interfaces.insert({{port, 0}, {port, kVoice}});
        }
        for (const uint32_t port : {5U, 6U}) {
            table_.ports[port].group = kGroup;
            table_.interfaces.insert({port, 0});
        }
        table_.ports[kGroup].untagged_vid = kOffice;
        table_.interfaces.insert({{kGroup, 0}, {kGroup, kVoice}});
        table_.own_addresses = {mac_of_station(kSwitch)};
        path_.set_table(table_);
    }

    /** From a host to somebody, in a VLAN, as the chip gives it to the CPU. */
    static Octets from_host(const Octets &destination, uint16_t vid, const Octets &rest = kText) {
        return destination + station(kHost) + vlan_tag(vid) + rest;
    }
    static Octets untagged(const Octets &destination, const Octets &rest = kText) {
        return destination + station(kHost) + rest;
    }
    std::string from_chip(uint32_t port, const Octets &frame, Time now = 1s) {
        const FramePath::FromChip decided = path_.from_chip(port, frame, now);
        const auto *interface = std::get_if<ToInterface>(&decided);
        delivered_ = interface == nullptr ? Octets{} : bytes_of(interface->frame);
        return text_of(decided);
    }
    std::string from_kernel(const PortName &interface, const Octets &frame, Time now = 1s) {
        return text_of(path_.from_kernel(interface, frame, now));
    }
    uint64_t drops(uint32_t intf, Drop reason) const { return path_.counters(intf).of(reason); }

    PathTable table_;
    FramePath path_{{1, 2}, {}, 0s};
    Octets delivered_;
};

}  // namespace switchd::path_test
