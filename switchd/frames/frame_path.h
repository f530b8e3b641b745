// Where frames go between the chip's CPU port and the interfaces. Decisions only: no descriptor is touched here.
#pragma once

#include <stdint.h>
#include <array>
#include <optional>
#include <set>
#include <variant>

#include "switchd/frames/forwarded_frames.h"
#include "switchd/frames/frame_header.h"
#include "switchd/frames/path_counters.h"
#include "switchd/frames/path_table.h"
#include "vdevice/chip/rates/token_bucket.h"

namespace switchd {

/** Frames a second that the CPU takes from each port; 0 for any number. What is sent to the switch itself has none. */
struct PathLimits {
    uint32_t flooded = 10'000;
    uint32_t trapped = 2'000;
};

/** The frame is for an interface. */
struct ToInterface {
    PortName interface;
    vdevice::chip::Frame frame;
};

/** The frame is for the daemon's own LACP. */
struct ToLacp {
    uint32_t port = 0;
    vdevice::chip::Frame frame;
};

/** The frame is for the chip, to be sent on a user port or a group. */
struct ToPort {
    uint32_t intf = 0;
    uint16_t vid = 0; /**< of a tag to be put in; 0 for none */
};

class FramePath {
  public:
    using FromChip = std::variant<Drop, ToInterface, ToLacp>;
    using FromKernel = std::variant<Drop, ToPort>;

    FramePath(const HashKey &key, const PathLimits &limits, Time now);

    void set_table(const PathTable &table);
    void set_limits(const PathLimits &limits, Time now);

    /** A frame that came in on a user port, with the tag that the chip has put in. It is counted, dropped or not. */
    FromChip from_chip(uint32_t port, vdevice::chip::Bytes frame, Time now);
    /** A frame that the kernel has sent on an interface. */
    FromKernel from_kernel(const PortName &interface, vdevice::chip::Bytes frame, Time now);

    /** What became of it later: it was lost after all. */
    void count_drop(uint32_t intf, Drop reason) { ++counters_[path_slot_of(intf)].of(reason); }
    /** Of a user port or a group; what came in on no known port is counted on 0. */
    const PathCounters &counters(uint32_t intf) const { return counters_[path_slot_of(intf)]; }

  private:
    /** How a frame has come to the CPU. */
    enum class Kind : uint8_t {
        kTrapped,      /**< the CPU alone has it */
        kFlooded,      /**< other ports may have it, too */
        kUnknownGroup, /**< the CPU alone has it, since the chip has no such group */
        kToSwitch
    };
    using Bucket = std::optional<vdevice::chip::TokenBucket>;

    Kind kind_of(const FrameHeader &header) const;
    bool is_unknown_group(const FrameHeader &header) const;
    std::optional<Drop> check(uint32_t port, const FrameHeader &header, Kind kind, Time now);
    FromChip destination_of(uint32_t port, const FrameHeader &header) const;
    FromKernel decide(const PortName &interface, vdevice::chip::Bytes frame, Time now) const;
    FromChip decide(uint32_t port, vdevice::chip::Bytes frame, Time now);
    bool is_forwarded(const PortName &interface, const FrameHeader &header, Time now) const;
    const PathPort &port_of(uint32_t intf) const { return ports_[path_slot_of(intf)]; }

    HashKey key_;
    std::array<PathPort, kPathSlots> ports_;
    std::set<PortName> interfaces_;
    std::set<Mac> own_addresses_;
    bool has_unknown_ipv4_ = false;
    bool has_unknown_ipv6_ = false;
    std::set<std::pair<uint16_t, Mac>> groups_;
    std::array<Bucket, kPathSlots> flooded_;
    std::array<Bucket, kPathSlots> trapped_;
    ForwardedFrames forwarded_;
    std::array<PathCounters, kPathSlots> counters_{};
};

}  // namespace switchd
