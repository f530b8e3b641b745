// For tests: what the chip does, as plain as possible: sets, maps and whole frames, written from the rules and not from
// the chip's code.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "vdevice/chip/testing/frame_builder.h"

namespace vdevice::chip::test {

struct PlainModel {
    struct Member {
        std::set<int> members;
        std::set<int> untagged;
    };
    struct Station {
        int port;
        int64_t seen;
    };
    /** A frame without its tag. */
    struct Read {
        int vid;
        int priority;
        Octets rest;
    };

    std::map<int, Member> vlans;
    std::map<std::pair<int, Octets>, Station> stations;
    std::set<int> up;
    std::map<int, int> pvid;
    std::map<int, int> groups;                  // of VLANs that are not in the default group
    std::map<std::pair<int, int>, int> states;  // by group and port, where they are not 4, forwarding
    int64_t now = 0;

    PlainModel();

    int state(int vid, int port);
    std::set<Sent> from_port(int ingress, const Octets &frame);
    std::set<Sent> from_cpu(const Octets &frame);
    void age();

    static Octets part(const Octets &frame, size_t from, size_t to) {
        return {frame.begin() + static_cast<ptrdiff_t>(from), frame.begin() + static_cast<ptrdiff_t>(to)};
    }

  private:
    std::optional<Read> read(int ingress, const Octets &frame);
    bool let_in(int ingress, int vid, const Octets &source);
    Octets form(int port, int ingress, const Octets &addresses, const Read &frame);
    std::set<uint32_t> directed(const Octets &frame);
};

}  // namespace vdevice::chip::test
